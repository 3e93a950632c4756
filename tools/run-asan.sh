#!/usr/bin/env bash
# Builds the concurrency tests with AddressSanitizer in a build folder of their own
# and runs them: the state-load and parameter races end in a use of freed memory,
# which this sees where ThreadSanitizer may only see the race.
# FLUXDECK_ASAN_BUILD_DIR picks the build folder (default: build-asan).
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup-debian.sh

build="${FLUXDECK_ASAN_BUILD_DIR:-build-asan}"
flags="-fsanitize=address -fno-omit-frame-pointer"
# Images drawn by the Release build are reused rather than drawn again here.
predrawn=()
[ -f build/drawn_assets/drawn.stamp ] && predrawn=(-DFLUXDECK_PREDRAWN_ASSETS="$PWD/build/drawn_assets")
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags" \
  -DCMAKE_EXE_LINKER_FLAGS="$flags" -DCMAKE_SHARED_LINKER_FLAGS="$flags" \
  -DCMAKE_MODULE_LINKER_FLAGS="$flags" \
  -DFLUXDECK_ASAN=ON -DFLUXDECK_TESTS=OFF -DFLUXDECK_BENCH=OFF -DFLUXDECK_TOOLS=OFF "${predrawn[@]}"
cmake --build "$build" --target fluxdeck_concurrency_tests -j"$(nproc)"
ctest --test-dir "$build" -L asan --output-on-failure
