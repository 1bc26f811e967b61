#!/usr/bin/env bash
# Installs every Debian package the engine, its tools and its tests need.
# Safe to run again: packages already present are skipped by apt-get.
set -euo pipefail

packages=(
  # toolchain
  build-essential cmake pkg-config clang clang-format libclang-rt-14-dev
  # packaging: dpkg-deb and dpkg-shlibdeps for the Debian package (cpack)
  dpkg-dev
  # engine libraries
  libxerces-c-dev freeglut3-dev libglu1-mesa-dev libgl-dev libx11-dev libdeflate-dev
  # image decoding (PNG, JPEG, TGA, BMP textures; gdk-pixbuf for run-length encoded BMPs)
  libpng-dev libjpeg62-turbo-dev libstb-dev libgdk-pixbuf-2.0-dev
  # tests and benchmarks
  googletest libgtest-dev libgmock-dev libbenchmark-dev valgrind
  xvfb xauth xdotool x11-utils imagemagick python3 python3-xlib
  libgl1-mesa-dri mesa-utils
  # peer importer for benchmarks
  libassimp-dev
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
