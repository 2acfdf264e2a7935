#!/usr/bin/env bash
# Installs what building, testing and the demo need, from Debian packages only.
set -euo pipefail
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO=sudo; fi
PACKAGES=(
  build-essential cmake ninja-build pkg-config clang clang-format libclang-rt-dev
  libgtest-dev libgmock-dev googletest libbenchmark-dev
  openjdk-17-jdk-headless
  libsdl2-dev libx11-dev xvfb xauth xdotool
  libgl-dev libegl-dev libgl1-mesa-dri mesa-utils
  zlib1g-dev libpng-dev libcairo2-dev
  libopenal-dev libvorbis-dev libogg-dev
  libfreetype-dev libfontconfig-dev fonts-dejavu-core fonts-wqy-microhei
)
# --webkit: also the web engine, so the build has inline web views.
for arg in "$@"; do
  case "$arg" in
    --webkit) PACKAGES+=(libwebkit2gtk-4.1-dev x11-utils) ;;
    *) echo "setup: unknown option $arg" >&2; exit 2 ;;
  esac
done
missing=()
for p in "${PACKAGES[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ "${#missing[@]}" -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  $SUDO apt-get update -q
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -q --no-install-recommends "${missing[@]}"
else
  echo "setup: all packages present"
fi
