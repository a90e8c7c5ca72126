#!/bin/sh
# What a built library exports and needs, and whether each header stands alone.
# usage: check_library.sh LIBRARY SOURCE_FOLDER CC CXX BUILD_TYPE HARDENING
#   HARDENING  what a release build was given of: guarded-stacks checked-calls
set -eu
export LC_ALL=C
library=$1 source=$2 cc=$3 cxx=$4
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failed=0
fail() { echo "FAILED: $1"; failed=1; }

# What the headers declare, what the version script lists and what the library exports is the same.
for header in "$source"/include/qalt_at/*.h; do
  [ "$(basename "$header")" = export.h ] || grep -v '^#' "$header"
done | tr '\n' ' ' | grep -o 'QALT_API [^;]*;' |
  sed -E 's/\([^*].*//; s/\[.*//; s/;//; s/^.*[ *]//' | sort -u >"$folder/declared"
sed -n '/global:/,/local:/p' "$source/cmake/libqalt_at.map" | grep ';' | tr -d ' ;' |
  sort -u >"$folder/listed"
nm -D --defined-only "$library" | awk '{print $3}' | sed 's/@.*//' | grep -vE '^QALT_AT_[0-9]+$' |
  sort -u >"$folder/exported"
diff "$folder/declared" "$folder/listed" || fail "version script (>) against headers (<)"
diff "$folder/listed" "$folder/exported" || fail "exports (>) against the version script (<)"

# Nothing but the C library at run time; no heap but the pair for the digits' work copy.
needed=$(objdump -p "$library" | awk '/NEEDED/ {print $2}' | grep -v '^libc\.so' || true)
[ -z "$needed" ] || fail "needs $needed"
heap=$(nm -D --undefined-only "$library" | awk '{print $NF}' | sed 's/@.*//' |
  grep -xE 'malloc|free|calloc|realloc|strdup|_Zn.*|_Zd.*' | sort | tr '\n' ' ')
[ "$heap" = "free malloc " ] || fail "heap symbols: $heap"
unbounded=$(nm -D --undefined-only "$library" | awk '{print $NF}' | sed 's/@.*//' |
  grep -xE '(strcpy|strcat|sprintf|vsprintf|gets)(_chk)?|__(strcpy|strcat|sprintf|vsprintf)_chk' || true)
[ -z "$unbounded" ] || fail "unbounded: $unbounded"

# Nothing to overwrite once it is loaded; in a release build, guarded stacks and checked calls.
readelf -lW "$library" | grep -q GNU_RELRO && readelf -dW "$library" | grep -q BIND_NOW ||
  fail "not full RELRO"
if [ "$5" = Release ]; then
  nm -D --undefined-only "$library" >"$folder/asked"
  for way in $6; do
    case $way in
      guarded-stacks) grep -q __stack_chk_fail "$folder/asked" || fail "no stack protector" ;;
      checked-calls) grep -q '__.*_chk@' "$folder/asked" || fail "no checked calls" ;;
    esac
  done
  # The budget of the text section, as size counts it.
  text=$(size "$library" | awk 'NR == 2 {print $1}')
  [ "$text" -lt $((88 * 1024)) ] || fail "text of $text bytes"
fi

# Every public header compiles alone, as C99 and as C++.
for header in "$source"/include/qalt_at/*.h; do
  name=$(basename "$header")
  printf '#include <qalt_at/%s>\nextern int unused;\n' "$name" >"$folder/alone.c"
  "$cc" -std=c99 -pedantic -Wall -Wextra -Werror -I"$source/include" -fsyntax-only "$folder/alone.c" ||
    fail "$name as C99"
  "$cxx" -std=c++17 -pedantic -Wall -Wextra -Werror -I"$source/include" -x c++ -fsyntax-only \
    "$folder/alone.c" || fail "$name as C++"
done
exit $failed
