#!/bin/sh
# Builds the Debian packages into build/deb.
# usage: deb.sh            builds them
#        deb.sh --check    and installs, tries and removes them on this machine
set -eu
cd "$(dirname "$0")/.."
folder=build/deb
mkdir -p $folder
rm -f $folder/*.deb
{ cmake -S . -B $folder -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
    -DQALT_BUILD_TESTS=OFF &&
  cmake --build $folder -j "$(nproc)" && (cd $folder && cpack)
} >$folder/log 2>&1 || { tail -n 40 $folder/log; exit 1; }
ls $folder/*.deb
[ "${1:-}" = --check ] || exit 0

as_root=
[ "$(id -u)" -eq 0 ] || as_root=sudo
names=$(for package in $folder/*.deb; do dpkg-deb -f "$package" Package; done)
for name in $names; do
  ! dpkg-query -W "$name" >/dev/null 2>&1 || { echo "$name is installed here already"; exit 1; }
done
work=$(mktemp -d)
# shellcheck disable=SC2086
trap '$as_root dpkg -P $names >/dev/null 2>&1; rm -rf "$work"' EXIT
files=$(for package in $folder/*.deb; do dpkg-deb -c "$package" | awk '!/^d/ {print $6}'; done |
  sed 's/^\.//')

$as_root dpkg -i $folder/*.deb >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
version=$(dpkg-deb -f "$(ls $folder/libqalt-at1_*.deb)" Version)
for program in /usr/bin/qalt-* /usr/sbin/qalt-*; do
  [ -e "$program" ] || continue
  "$program" --version | grep -F "$version"
done
# shellcheck disable=SC2046
cc -std=c99 tests/consumer/project/client.c -o "$work/client" $(pkg-config --cflags --libs qalt_at)
"$work/client"
# shellcheck disable=SC2086
$as_root dpkg -P $names >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
for file in $files; do
  [ ! -e "$file" ] || { echo "FAILED: $file is left"; exit 1; }
done
echo "installed, tried and removed"
