#!/usr/bin/env bash
# Sets up a fresh Debian 12 machine, builds the plug-in and renders the demo
# signal through the built VST3 bundle into out/flux-deck-demo.wav.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup-debian.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release
cmake --build build --target FluxDeck_VST3 flux-deck-render -j"$(nproc)"
mkdir -p out
./build/flux-deck-render -o out/flux-deck-demo.wav "$@"
