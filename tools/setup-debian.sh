#!/usr/bin/env bash
# Installs every Debian package the build, the tests, the benchmarks and the package need.
# Idempotent: when everything is present it only asks dpkg and returns.
set -euo pipefail

packages=(
  juce-modules-source
  cmake ninja-build g++ pkg-config
  libtinyxml2-dev libboost-dev zlib1g-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  clang libclang-rt-14-dev
  fonts-lato
  xvfb xauth
  # LV2 checks (lv2ls, lv2info), WAV checks, the Debian package (dpkg-shlibdeps, file)
  # and a real DAW for the session check (ardour7-lua; about 70 s to install)
  lilv-utils sox dpkg-dev file ardour
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
