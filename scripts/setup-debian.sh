#!/usr/bin/env bash
# Installs, by Debian package name, everything the project needs to build, test and run on a
# fresh Debian 12 machine. Safe to run again: apt skips what is already there.
#   scripts/setup-debian.sh        what the build, the tests and CI need
#   scripts/setup-debian.sh fuzz   that, and clang with its fuzzer runtime (the fuzz preset)
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config ccache
  qtbase5-dev qttools5-dev libqt5svg5-dev
  libcminpack-dev libeigen3-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  xvfb xauth
  dpkg-dev file help2man lintian
)
if [ "${1:-}" = fuzz ]; then
  packages+=(clang libclang-rt-14-dev)
fi

sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then sudo_cmd=(sudo); fi

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  "${sudo_cmd[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
else
  echo "All build dependencies are installed."
fi
