#!/bin/sh
# Builds the Debian packages into build/deb.
# usage: deb.sh            builds them
#        deb.sh --check    and looks at them with lintian, installs, tries and removes them here
set -eu
CDPATH='' cd "$(dirname "$0")/.."
folder=build/deb
mkdir -p $folder
rm -f $folder/*.deb $folder/*.ddeb
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct 2>/dev/null || date +%s)}
export SOURCE_DATE_EPOCH
{ umask 022 && cmake --preset deb && cmake --build --preset deb -j "$(nproc)" &&
  (cd $folder && cpack) && packaging/debian/finish.sh $folder
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

# What is found but for what the file of exceptions names. Debian's own checker; elsewhere it is not.
if command -v lintian >/dev/null; then
  lintian --allow-root --display-info --tag-display-limit 0 \
    --suppress-tags-from-file packaging/debian/lintian_exceptions $folder/*.deb \
    >"$work/lintian" 2>&1 || true
  [ ! -s "$work/lintian" ] || { cat "$work/lintian"; echo "FAILED: lintian"; exit 1; }
else
  echo "lintian is not here, and left out"
fi

$as_root dpkg -i $folder/*.deb >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
version=$(dpkg-deb -f "$(ls $folder/libqalt-at-dev_*.deb)" Version)
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
