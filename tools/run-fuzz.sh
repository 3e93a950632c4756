#!/usr/bin/env bash
# Builds the state-chunk fuzzer (clang, AddressSanitizer) and runs it for a
# bounded time over a copy of the seed corpus.
# Usage: tools/run-fuzz.sh [seconds] [build folder, default build-asan]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
build=$(bash tools/configure-sanitizer-build.sh address "${2:-build-asan}")
cmake --build "$build" --target fluxdeck_state_fuzzer -j"$(nproc)"

corpus="$build/fuzz-corpus"
mkdir -p "$corpus" "$build/fuzz-artifacts"
cp -n tests/fuzz/corpus/* "$corpus"/ 2>/dev/null || true

# JUCE's process-wide singletons outlive the run; leaks at exit are not findings.
export ASAN_OPTIONS="detect_leaks=0:${ASAN_OPTIONS:-}"
"$build/fluxdeck_state_fuzzer" "$corpus" -max_total_time="$seconds" -max_len=65536 -timeout=10 \
  -rss_limit_mb=4096 -artifact_prefix="$build/fuzz-artifacts/" -print_final_stats=1
