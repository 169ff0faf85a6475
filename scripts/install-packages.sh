#!/usr/bin/env bash
# Installs the Debian packages that building, testing, packaging and running the tool need, where any
# is missing; with --windows also those that do the same for Windows, with --fuzz those of the fuzzers.
set -euo pipefail

packages=(
  g++ cmake ninja-build clang-format
  qtbase5-dev libqt5serialport5-dev libcli11-dev
  dpkg-dev file
  fonts-dejavu-core fonts-wqy-zenhei qttranslations5-l10n
)

if [ "${1:-}" = --windows ]; then
  packages+=(
    g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 nsis unzip
    wine wine64 fonts-wine xvfb xauth
  )
fi

if [ "${1:-}" = --fuzz ]; then
  packages+=(clang libclang-rt-14-dev)
fi

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

root=()
[ "$(id -u)" -eq 0 ] || root=(sudo)
"${root[@]}" apt-get update -qq
"${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
