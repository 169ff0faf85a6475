#!/usr/bin/env bash
# Builds the programs for Windows on Debian, with their tests, the installer and the zip. Takes the
# prefix of a Qt 5.15 for MinGW, or its archive; without one it uses VORAII_WINDOWS_QT, or the archive
# in ../shared/windows. docs/windows.md says where to get a Qt, and how to build on Windows itself.
set -euo pipefail
# Names in Chinese are read and packed as what they are.
export LC_ALL=C.UTF-8
given=${1:-${VORAII_WINDOWS_QT:-}}
[ -z "$given" ] || given=$(realpath -e "$given")
cd "$(dirname "$0")/../.."

archives=(../shared/windows/qt-5.15*-mingw64.tar.xz)
qt=${given:-${archives[0]}}
if [ ! -e "$qt" ]; then
  echo "build.sh: give the folder or the archive of a Qt for Windows. See docs/windows.md." >&2
  exit 1
fi
scripts/install-packages.sh --windows

libraries=build/windows-libraries
runtime=$libraries/runtime
compiler=x86_64-w64-mingw32
rm -rf $libraries
mkdir -p $libraries/cli11/include $libraries/cli11/share/cmake $libraries/fonts
mkdir -p $runtime/plugins/platforms $runtime/plugins/imageformats $runtime/translations $runtime/licences

# --- What the compiler finds

if [ -d "$qt" ]; then
  ln -s "$(realpath "$qt")" $libraries/qt
else
  mkdir $libraries/qt
  tar -xJf "$qt" -C $libraries/qt --strip-components=1
  mkdir -p $libraries/qt/translations
  cp /usr/share/qt5/translations/qtbase_zh_CN.qm $libraries/qt/translations
fi
# It is made of headers alone; beside the others of this system the compiler would take those, too.
cp -a /usr/include/CLI $libraries/cli11/include
cp -a /usr/share/cmake/CLI11 $libraries/cli11/share/cmake

# --- What the programs find: all that stands beside them in a package

copy_stripped() {
  $compiler-strip -o "$2/${1##*/}" "$1"
}
for library in Core Gui Widgets Concurrent SerialPort; do
  copy_stripped $libraries/qt/bin/Qt5$library.dll $runtime
done
for library in libstdc++-6 libgcc_s_seh-1 libwinpthread-1; do
  copy_stripped "$($compiler-g++-posix -print-file-name=$library.dll)" $runtime
done
# Of the platforms, "offscreen" is for tests.
copy_stripped $libraries/qt/plugins/platforms/qwindows.dll $runtime/plugins/platforms
for format in gif ico jpeg; do
  copy_stripped $libraries/qt/plugins/imageformats/q$format.dll $runtime/plugins/imageformats
done
cp /usr/share/qt5/translations/qtbase_zh_CN.qm $runtime/translations
printf '[Paths]\r\nPrefix=.\r\n' >$runtime/qt.conf

# Both licences of Qt are wanted: the lesser one refers to the other.
licence() {
  sed 's/$/\r/' "$2" >"$runtime/licences/$1.txt"
}
licence LGPL-3 /usr/share/common-licenses/LGPL-3
licence GPL-3 /usr/share/common-licenses/GPL-3
licence Qt /usr/share/doc/libqt5core5a/copyright
licence CLI11 /usr/share/doc/libcli11-dev/copyright
licence GCC-runtime /usr/share/doc/gcc-12-base/copyright
licence MinGW-runtime /usr/share/doc/mingw-w64-x86-64-dev/copyright

# Tests without a window draw with these, as they do on Debian.
for package in fonts-dejavu-core fonts-wqy-zenhei; do
  dpkg -L $package | grep -E '\.tt[fc]$' | xargs cp -t $libraries/fonts
done

cmake --preset windows >/dev/null
cmake --build --preset windows
rm -f build/windows/voraii-tool-*
(cd build/windows && cpack)
