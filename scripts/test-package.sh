#!/usr/bin/env bash
# Builds the packages and checks what they say, what they hold, and that the programs run from where
# they install them. Nothing is installed on the system but what building needs.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-packages.sh

build=build/release
work=$(mktemp -d)
root=$work/root
home=$work/home

finish() {
  local status=$?
  chmod -R u+w "$work"
  rm -rf "$work"
  if [ "$status" -eq 0 ]; then
    echo "Package test passed."
  else
    echo "Package test FAILED."
  fi
}
trap finish EXIT

fail() {
  echo "test-package: $*" >&2
  exit 1
}

# Says whether a checker is there; without it its check is left out.
has() {
  command -v "$1" >/dev/null || { echo "test-package: no $1, its check is left out"; return 1; }
}

# --- Build

cmake --preset release >/dev/null
cmake --build --preset release
# Packages of other versions would be taken for the new ones.
rm -f $build/*.deb $build/*.tar.gz
(cd $build && cpack)
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' $build/CMakeCache.txt)
deb=$(echo $build/*.deb)
archive=$(echo $build/*.tar.gz)

# --- Control fields

expect() {
  local value
  value=$(dpkg-deb -f "$deb" "$1")
  grep -qE -- "$2" <<<"$value" || fail "the field $1 is \"$value\", which lacks \"$2\""
}
expect Package '^voraii-tool$'
expect Version "^${version//./\\.}\$"
expect Architecture "^$(dpkg --print-architecture)\$"
expect Maintainer '^.+ <.+@.+>$'
expect Section '^electronics$'
expect Priority '^optional$'
expect Recommends '^fonts-wqy-zenhei \| fonts-noto-cjk, qttranslations5-l10n$'
expect Description dialout
for library in libc6 libstdc++6 libqt5core5a libqt5gui5 libqt5widgets5 libqt5serialport5; do
  expect Depends "(^|[ ,])${library//+/\\+} \("
done

# --- Files

# What is unpacked from here on must be readable for the user who runs it.
umask 022

# Without the folder that either package puts around them.
files() {
  (cd "$1" && find . -type f | sed 's,^\./,,' | LC_ALL=C sort)
}
{
  cat <<'END'
bin/VORAII_Tool
bin/k7
bin/k7-simulator
share/applications/voraii-tool.desktop
share/bash-completion/completions/k7
share/doc/voraii-tool/ARCHITECTURE.md
share/doc/voraii-tool/CHANGELOG.md
share/doc/voraii-tool/LICENSE
share/doc/voraii-tool/README.md
share/doc/voraii-tool/copyright
share/icons/hicolor/128x128/apps/voraii-tool.png
share/icons/hicolor/scalable/apps/voraii-tool.svg
share/man/man1/VORAII_Tool.1
share/man/man1/k7-simulator.1
share/man/man1/k7.1
share/fish/vendor_completions.d/k7.fish
share/metainfo/local.voraii.tool.metainfo.xml
share/zsh/vendor-completions/_k7
END
  find docs -type f | sed 's,^,share/doc/voraii-tool/,'
} | LC_ALL=C sort >"$work/expected"

dpkg-deb -x "$deb" "$root"
mkdir "$work/archive"
tar -xzf "$archive" -C "$work/archive" --strip-components=1
diff "$work/expected" <(files "$root/usr") || fail "the .deb holds other files than it should"
diff "$work/expected" <(files "$work/archive") || fail "the .tar.gz holds other files than it should"
[ "$(ls "$root")" = usr ] || fail "the .deb holds more than /usr"
wrong=$(dpkg-deb -c "$deb" | grep -vE '^(drwxr-xr-x|-rwxr-xr-x|-rw-r--r--) root/root ' || true)
[ -z "$wrong" ] || fail "wrong permissions: $wrong"

# --- Descriptions

if has desktop-file-validate; then
  desktop-file-validate "$root/usr/share/applications/voraii-tool.desktop"
fi
if has appstreamcli; then
  appstreamcli validate-tree --no-net "$root"
fi
# Not man: where manuals are left out to save space, it is a script that only says so.
if has groff; then
  for page in "$root"/usr/share/man/man1/*.1; do
    warnings=$(groff -man -Tutf8 -ww -z "$page" 2>&1)
    [ -z "$warnings" ] || fail "$warnings"
  done
fi

# --- Programs

# Users cannot write where the tool is installed, so that it keeps its files in their own folder. Root
# can write anywhere: the programs run as somebody else then.
mkdir -m 700 "$home"
chmod 755 "$work"
user=()
if [ "$(id -u)" -eq 0 ]; then
  user=(setpriv --reuid=nobody --regid=nogroup --clear-groups)
  chown nobody:nogroup "$home"
  "${user[@]}" test -w "$home" || fail "cannot run the programs as the user nobody"
else
  chmod -R a-w "$root"
fi

run() {
  "${user[@]}" env HOME="$home" XDG_DATA_HOME="$home/data" XDG_CONFIG_HOME="$home/config" \
    XDG_CACHE_HOME="$home/cache" XDG_RUNTIME_DIR="$home" QT_QPA_PLATFORM=offscreen \
    timeout 300 "$@"
}
tool=$root/usr/bin/VORAII_Tool

for program in VORAII_Tool k7 k7-simulator; do
  for folder in "$root/usr/bin" "$work/archive/bin"; do
    said=$(run "$folder/$program" --version)
    [ "$said" = "$program $version" ] || fail "$program --version says \"$said\""
  done
  page=$(sed 's/\\-/-/g' "$root/usr/share/man/man1/$program.1")
  options=$(run "$root/usr/bin/$program" --help | grep -oE -- '--[a-z][a-z0-9-]*')
  for option in $options; do
    grep -qwF -- "$option" <<<"$page" || fail "the manual of $program lacks $option"
  done
done

run "$tool" --simulate --screenshots "$home/pictures"
[ -n "$(ls "$home/pictures")" ] || fail "--screenshots made no pictures"
[ -s "$home/data/VORAII_Tool/SystemConfig.ini" ] || fail "the settings are not in the user's folder"

said=$(run "$root/usr/bin/k7" --simulate page)
[ "$said" = 0 ] || fail "k7 says that the simulated module shows page \"$said\""

help=$(run "$tool" --help)
if grep -q -- --tour <<<"$help"; then
  run "$tool" --simulate --tour "$home/tour"
fi
diff "$work/expected" <(files "$root/usr") || fail "the programs changed what is installed"
