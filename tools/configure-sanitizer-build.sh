#!/usr/bin/env bash
# Configures an instrumented build folder. Usage:
#   tools/configure-sanitizer-build.sh thread  [folder]   (gcc, ThreadSanitizer)
#   tools/configure-sanitizer-build.sh address [folder]   (clang, AddressSanitizer + libFuzzer)
# The AddressSanitizer folder holds both the state-chunk fuzzer and the thread
# tests, so the instrumented JUCE is compiled once for the two of them.
# The flags go on everything, JUCE's module sources included: an uninstrumented
# half of a race or of a bad access is one the sanitizer never sees.
# -O1 -g1 keeps the instrumented builds quick to compile while reports still
# carry file and line.
set -euo pipefail
cd "$(dirname "$0")/.."
kind="${1:?thread or address}"
case "$kind" in
  thread)  build="${2:-build-tsan}"; flags="-fsanitize=thread"
           compilers=(-DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++); options=(-DFLUXDECK_TSAN=ON) ;;
  address) build="${2:-build-asan}"; flags="-fsanitize=address -fno-omit-frame-pointer"
           compilers=(-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++); options=(-DFLUXDECK_ASAN=ON -DFLUXDECK_FUZZ=ON) ;;
  *) echo "configure-sanitizer-build.sh: unknown sanitizer '$kind' (thread or address)" >&2; exit 2 ;;
esac

# Images drawn by the Release build are reused rather than drawn again here.
predrawn=()
[ -f build/drawn_assets/drawn.stamp ] && predrawn=(-DFLUXDECK_PREDRAWN_ASSETS="$PWD/build/drawn_assets")

cmake -S . -B "$build" "${compilers[@]}" -G Ninja -DCMAKE_BUILD_TYPE=None \
  -DCMAKE_C_FLAGS="-O1 -g1 $flags" -DCMAKE_CXX_FLAGS="-O1 -g1 $flags" \
  -DCMAKE_EXE_LINKER_FLAGS="$flags" -DCMAKE_SHARED_LINKER_FLAGS="$flags" \
  -DCMAKE_MODULE_LINKER_FLAGS="$flags" \
  -DFLUXDECK_TESTS=OFF -DFLUXDECK_BENCH=OFF -DFLUXDECK_TOOLS=OFF \
  "${options[@]}" "${predrawn[@]}" >&2
echo "$build"
