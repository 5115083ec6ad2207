#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, skipping what is already there.
set -euo pipefail

packages=(
  # toolchain
  build-essential cmake ninja-build ccache pkg-config git
  # libraries
  qt6-base-dev libqt6opengl6-dev libpugixml-dev qt6-qpa-plugins libgl-dev libgl1-mesa-dri libegl-mesa0 libegl-dev libepoxy-dev libassimp-dev
  libavcodec-dev libavformat-dev libavutil-dev libswscale-dev
  # the tessellator that fills extruded text
  libglu1-mesa-dev
  # tests, benchmarks and the fuzzer
  libgtest-dev libgmock-dev libbenchmark-dev clang libclang-rt-14-dev heaptrack ffmpeg
  # headless display for window tests
  xvfb xauth xdotool x11-apps python3
  # fonts so text layout has real glyphs on a bare machine
  fonts-dejavu-core
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "install-deps: everything is present"
  exit 0
fi

echo "install-deps: installing ${missing[*]}"
sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then sudo_cmd=(sudo); fi
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
