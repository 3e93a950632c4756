#!/usr/bin/env bash
# Builds the concurrency tests with ThreadSanitizer in a build folder of their
# own and runs them. FLUXDECK_TSAN_BUILD_DIR picks the folder (default: build-tsan).
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup-debian.sh
build=$(bash tools/configure-sanitizer-build.sh thread "${FLUXDECK_TSAN_BUILD_DIR:-build-tsan}")
cmake --build "$build" --target fluxdeck_concurrency_tests -j"$(nproc)"
ctest --test-dir "$build" -L tsan --output-on-failure
