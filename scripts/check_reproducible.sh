#!/bin/sh
# Whether what is installed is the same, byte by byte, wherever it was built and whoever installed it:
# the release build of this tree beside that of a copy with a longer path, installed with another umask.
set -eu
CDPATH='' cd "$(dirname "$0")/.."
work=$PWD/build/reproducible
copy=$work/a-copy-with-a-longer-path
installed="qalt_at qalt_at_static qalt-atd qalt-simmodem qalt-pb"

build() {  # name, cmake arguments...
  name=$1
  shift
  # shellcheck disable=SC2086
  { cmake --preset check "$@" &&
    cmake --build --preset check -j "$(nproc)" --target $installed &&
    DESTDIR="$work/$name" cmake --install build/check --prefix /usr
  } >"$work/$name.log" 2>&1 || { tail -n 40 "$work/$name.log"; exit 1; }
}

listed() { (cd "$work/$1" && find . -printf '%P %M %l\n' | sort) >"$work/$1.list"; }

rm -rf "$work"
mkdir -p "$copy"
tar -c --exclude=./build --exclude=./.git . | tar -x -C "$copy"
(umask 022; build here)
(cd "$copy" && umask 077 && build there -DBUILD_TESTING=OFF)

listed here
listed there
failed=0
diff "$work/here.list" "$work/there.list" || failed=1
diff -r "$work/here" "$work/there" || failed=1
[ $failed -eq 0 ] || { echo "FAILED: what is installed depends on where it is built"; exit 1; }
echo "the same from two folders: $(find "$work/here" -type f | wc -l) files"
rm -rf "$work"
