#!/bin/sh
# Compares what a built library asks of the C library with the list that it may ask for.
# usage: check_symbols.sh LIBRARY...
set -eu
export LC_ALL=C
list=$(dirname "$0")/../packaging/abi/undefined_symbols.txt
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
wanted=$work/wanted
grep -v '^#' "$list" | sort >"$wanted"

for library; do
  nm -D --undefined-only "$library" >"$wanted.symbols"
  objdump -p "$library" >"$wanted.headers"
  # A C library's own spelling of a function counts as the function: __isoc99_sscanf, __memcpy_chk.
  extra=$(awk '{print $NF}' "$wanted.symbols" |
    sed -E 's/@.*//; s/^__isoc[0-9]+_//; s/^__(.*)_chk$/\1/' | sort -u | comm -23 - "$wanted")
  [ -z "$extra" ] || { echo "$library asks for" $extra; exit 1; }
  needed=$(awk '/NEEDED/ {print $2}' "$wanted.headers" | grep -v '^libc\.so' || true)
  [ -z "$needed" ] || { echo "$library needs $needed"; exit 1; }
done
