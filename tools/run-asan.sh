#!/usr/bin/env bash
# Builds the concurrency tests with AddressSanitizer and runs them: the state-load
# and parameter races end in a use of freed memory, which this sees where
# ThreadSanitizer may only see the race. Shares its folder with the fuzzer
# (FLUXDECK_ASAN_BUILD_DIR, default build-asan).
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup-debian.sh
build=$(bash tools/configure-sanitizer-build.sh address "${FLUXDECK_ASAN_BUILD_DIR:-build-asan}")
cmake --build "$build" --target fluxdeck_concurrency_tests -j"$(nproc)"
ctest --test-dir "$build" -L asan --output-on-failure
