#!/usr/bin/env bash
# Loads Flux Deck into a real DAW without a screen: Ardour's session interpreter
# (ardour7-lua, Dummy audio backend) puts the VST3 and the LV2 on a track behind a
# noise source, saves, reopens the session in a new process and exports both times.
# Usage: bash tools/run-ardour-check.sh [build folder]   (after building the plug-ins)
set -euo pipefail
cd "$(dirname "$0")/.."
build="${1:-build}"

for program in ardour7-lua sox; do
  command -v "$program" >/dev/null || { echo "missing $program: run tools/setup-debian.sh"; exit 1; }
done

# A home folder of its own: Ardour's settings and plug-in cache, and the per-user plug-in
# folders, stay out of the user's.
scratch="$(mktemp -d /tmp/flux-deck-ardour.XXXXXX)"
trap 'rm -rf "$scratch"' EXIT
export HOME="$scratch/home"
mkdir -p "$HOME"

cmake --install "$build" --component user-plugins >/dev/null
LD_LIBRARY_PATH=/usr/lib/ardour7 /usr/lib/ardour7/ardour-vst3-scanner -f -q "$HOME/.vst3/Flux Deck.vst3"

export FLUXDECK_SESSION="$scratch/session" FLUXDECK_EXPORT="$scratch/export"
mkdir -p "$FLUXDECK_EXPORT"
for step in create reopen; do
  log="$scratch/$step.log"
  FLUXDECK_STEP=$step timeout 300 ardour7-lua tools/ardour/flux-deck-session.lua >"$log" 2>&1 || true
  grep -E "^(plug-in on the track|Mix restored|exported|FAILED|OK)" "$log" || true
  grep -q "^OK $step" "$log" || { echo "Ardour step '$step' failed; its log:"; cat "$log"; exit 1; }
done

# Both exports hold sound: the effect passed audio in the fresh and in the reopened session.
for name in created reopened; do
  rms=$(sox "$FLUXDECK_EXPORT/$name.wav" -n stat 2>&1 | awk '/RMS +amplitude/ {print $3}')
  echo "$name.wav: RMS amplitude $rms"
  awk -v r="$rms" 'BEGIN { exit !(r > 0.001) }' || { echo "$name.wav is silent"; exit 1; }
done
echo "Ardour check passed: VST3 and LV2 loaded, saved, reopened and exported."
