#!/usr/bin/env bash
# Builds for Windows and runs what was built under wine: the installer, the installed tool with its tour,
# the zip, a port with a high number, and the tests. Where no Qt for Windows is at hand it says so, and
# that is all.
set -euo pipefail
[ $# -eq 0 ] || set -- "$(realpath -e "$1")"
cd "$(dirname "$0")/.."

if [ $# -eq 0 ] && [ -z "${VORAII_WINDOWS_QT:-}" ] &&
  ! compgen -G '../shared/windows/qt-5.15*-mingw64.tar.xz' >/dev/null; then
  echo "test-windows: left out, because no Qt for Windows is at hand."
  exit 0
fi
packaging/windows/build.sh "$@"
# The module that a port leads to.
cmake --preset release >/dev/null
cmake --build --preset release --target k7-simulator

build=$PWD/build/windows
work=$(mktemp -d)
home=$work/home
prefix=$home/wine

finish() {
  local status=$?
  # The servers would write into folders that go, and stay.
  run wineserver -k || true
  WINEPREFIX=$PWD/build/wine wineserver -k || true
  [ -z "${simulator:-}" ] || kill "$simulator" || true
  chmod -R u+w "$work"
  rm -rf "$work"
  [ "$status" -eq 0 ] || echo "Windows test FAILED."
}
trap finish EXIT

fail() {
  echo "test-windows: $*" >&2
  exit 1
}

# Root can write anywhere, which users cannot: the programs run as somebody else then.
mkdir -m 700 "$home"
chmod 755 "$work"
user=()
if [ "$(id -u)" -eq 0 ]; then
  user=(setpriv --reuid=nobody --regid=nogroup --clear-groups)
  chown nobody:nogroup "$home"
  # Only root can make the folder in which their screens are found.
  mkdir -p -m 1777 /tmp/.X11-unix
fi
run() {
  # What wine says about the root of the file system is not for us.
  (cd "$home" && "${user[@]}" env -u DISPLAY LC_ALL=C.UTF-8 HOME="$home" WINEPREFIX="$prefix" WINEARCH=win64 WINEDEBUG=-all \
    timeout 900 "$@" 2> >(grep -v 'FS volume label' >&2)) | tr -d '\r'
}
# The same on a screen of its own, with the windows that users see.
on_screen() {
  # A program without a screen leaves its desktop behind for a second, on which nobody can make a window.
  run wineserver -w
  run xvfb-run -a -s '-screen 0 1600x1000x24 -noreset' wine "$@"
}

umask 022
run wineboot -i >/dev/null 2>&1
# The font that the zero font begins with, and that Chinese Windows has.
for name in SimSun 宋体; do
  run wine reg add 'HKCU\Software\Wine\Fonts\Replacements' /v "$name" /d 'WenQuanYi Zen Hei' /f >/dev/null
done
run wineserver -k || true
profile=$(find "$prefix/drive_c/users" -mindepth 1 -maxdepth 1 ! -name Public)
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
archive=$build/voraii-tool-$version-windows-x86_64.zip
installer=$work/installer.exe
cp "$build/voraii-tool-$version-windows-x86_64.exe" "$installer"

# --- What is in the packages

megabytes=$(($(stat -c %s "$archive") / 1000000))
[ $megabytes -lt 15 ] || fail "the zip has $megabytes MB"
unzip -q "$archive" -d "$work"
unpacked=$work/$(basename "$archive" .zip)
for file in "$unpacked"/*.exe "$unpacked"/*.dll "$unpacked"/plugins/*/*.dll; do
  # Each DLL is there, or belongs to Windows, and none is there in vain.
  x86_64-w64-mingw32-objdump -p "$file" | sed -n 's/.*DLL Name: //p'
done | sort -u >"$work/needed"
for library in $(grep -E '^(Qt5|lib)' "$work/needed"); do
  [ -e "$unpacked/$library" ] || fail "the zip lacks $library"
done
for library in "$unpacked"/*.dll; do
  grep -qx "${library##*/}" "$work/needed" || fail "nobody needs ${library##*/}"
done
subsystem() {
  x86_64-w64-mingw32-objdump -p "$unpacked/$1.exe" | sed -n 's/^Subsystem.*(\(.*\))$/\1/p'
}
[ "$(subsystem VORAII_Tool)" = "Windows GUI" ] || fail "the tool opens a console"
[ "$(subsystem k7)" = "Windows CUI" ] || fail "k7 is no console program"

# --- The zip, from a folder whose name no code page has, and where the user cannot write

folder=$work/工具-ünï
mv "$unpacked" "$folder"
[ "$(id -u)" -eq 0 ] || chmod -R a-w "$folder"
files() {
  (cd "$1" && find . -type f ! -name uninstall.exe | LC_ALL=C sort)
}
files "$folder" >"$work/files"
[ "$(run wine "$folder/k7.exe" --version)" = "k7 $version" ] || fail "k7 does not start"
[ "$(run wine "$folder/k7.exe" --simulate page)" = 0 ] || fail "k7 finds no page"
printf '[Module]\nlayout=K7UID1\nbaudRate=115200\n' >"$work/配置.ini"
run wine "$folder/k7.exe" make cfg "Z:$work/配置.ini" -o 图.CFG >/dev/null
[ -s "$home/图.CFG" ] || fail "k7 does not find files with Chinese names"
on_screen "$folder/VORAII_Tool.exe" --screenshots "Z:$home/图"
[ "$(find "$home/图" -name '*.png' | wc -l)" -gt 10 ] || fail "--screenshots made no pictures"
[ -s "$profile/AppData/Local/VORAII_Tool/SystemConfig.ini" ] || fail "the settings are not in the user's folder"
diff "$work/files" <(files "$folder") || fail "the programs changed their folder"

# A session with the module: what a file has line by line, and what it comes to.
mkdir "$work/project"
printf '[project]\nsize=8x4\n' >"$work/project/k7.ini"
head -c 8192 /dev/urandom >"$work/project/7_字.bin"
printf 'sync Z:%s\nsync Z:%s\npage\n' "$work/project" "$work/project" >"$work/session"
said=$(run wine "$folder/k7.exe" --simulate --json run "Z:$work/session")
for expected in '"sent":1' '"unchanged":1' 7_字.bin '"page":0'; do
  grep -qF "$expected" <<<"$said" || fail "k7 does not say $expected: $said"
done
code=0
run wine "$folder/k7.exe" --no-such-option 2>/dev/null || code=$?
[ $code -eq 2 ] || fail "k7 ends with $code on a wrong option"

# --- The installer, and the tour of the installed tool

installed=$profile/AppData/Local/Programs/VORAII_Tool
menu="$profile/AppData/Roaming/Microsoft/Windows/Start Menu/Programs/VORAII_Tool"
# Twice: what is there is taken away first.
on_screen "$installer" /S
on_screen "$installer" /S
diff "$work/files" <(files "$installed") || fail "the installer and the zip differ"
for entry in VORAII_Tool "VORAII_Tool with simulated module" "Uninstall VORAII_Tool"; do
  [ -e "$menu/$entry.lnk" ] || fail "the start menu lacks \"$entry\""
done
# All that it opens and saves is in a folder with Chinese names, and with more than 260 characters.
deep=$prefix/drive_c/临时/$(printf '文件夹%.0s' {1..25})/$(printf 'x%.0s' {1..160})
"${user[@]}" mkdir -p "$deep"
export WINETEMP="C:${deep#*drive_c}" WINETMP="C:${deep#*drive_c}"
on_screen "$installed/VORAII_Tool.exe" --simulate --tour "Z:$home/tour"
unset WINETEMP WINETMP
[ -s "$installed/SystemConfig.ini" ] || fail "the settings are not beside the tool"
key='HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\VORAII_Tool'
said=$(run wine reg query "$key" /v QuietUninstallString)
grep -qF uninstall.exe <<<"$said" || fail "Windows does not know of the uninstaller"
# It goes on as a copy of itself, which takes its own file away last.
on_screen "$installed/uninstall.exe" /S
for _ in {1..1800}; do
  [ -e "$installed/uninstall.exe" ] || break
  sleep 0.1
done
left=$(cd "$installed" && find . -mindepth 1 | LC_ALL=C sort | xargs)
[ "$left" = "./0_ZOLT_ASC.HZK ./SystemConfig.ini" ] || fail "the uninstaller leaves $left"
[ ! -e "$menu" ] || fail "the uninstaller leaves the start menu"
! run wine reg query "$key" >/dev/null 2>&1 || fail "the uninstaller leaves its key"

# --- Ports. Those of wine send, and do not tell that bytes arrived.

build/release/simulator/k7-simulator >"$work/trace" &
simulator=$!
until grep -q '^ED2' "$work/trace"; do
  kill -0 "$simulator" || fail "no module"
  sleep 0.1
done
terminal=$(sed -n 's,^UART2 \(/.*\),\1,p' "$work/trace")
chmod a+rw "$terminal"
ln -s "$terminal" "$prefix/dosdevices/com12"
for port in COM12:5 COM13:4; do
  code=0
  run wine "$folder/k7.exe" --uart2 "${port%:*}" page 2>/dev/null || code=$?
  [ $code -eq "${port#*:}" ] || fail "k7 ends with $code on ${port%:*}"
done
grep -q 'read' "$work/trace" || fail "nothing is sent on COM12"
echo "Windows packages: the zip, the installer and the ports passed."

# --- The tests; the tour has been taken

export WINEPREFIX=$PWD/build/wine WINEDEBUG=-all
mkdir -p "$WINEPREFIX"
# A server that stays saves every test the start of one, and the wait for its end.
wineserver -p
packaging/windows/run-in-wine wineboot -i >/dev/null 2>&1
ctest --preset windows -E '^tour$' --parallel "$(nproc)"
