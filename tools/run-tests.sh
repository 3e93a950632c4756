#!/usr/bin/env bash
# Sets up a fresh Debian 12 machine, builds everything and runs every test:
# the state-chunk fuzzer for a bounded minute, the ThreadSanitizer and
# AddressSanitizer runs of the host-thread tests, then the whole ctest suite.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup-debian.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release
cmake --build build -j"$(nproc)"
bash tools/run-fuzz.sh 60
bash tools/run-tsan.sh
bash tools/run-asan.sh
ctest --test-dir build --output-on-failure -j"$(nproc)"
