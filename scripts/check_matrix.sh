#!/bin/sh
# The library and the C program that takes every exported function, in each way a firmware project
# may build them. usage: check_matrix.sh [ROW...], default all rows
set -eu
CDPATH='' cd "$(dirname "$0")/.."

# Row, C compiler, C++ compiler, compile options, further CMake arguments.
rows="
gcc-O0        gcc       g++         -O0,-fsigned-char
gcc-Os        gcc       g++         -Os,-funsigned-char
gcc-lto       gcc       g++         -O2,-funsigned-char  -DCMAKE_INTERPROCEDURAL_OPTIMIZATION=ON
gcc-archive   gcc       g++         -O2,-fsigned-char    -DBUILD_SHARED_LIBS=OFF -DQALT_PBB_CAPACITY=250
gcc-fortified gcc       g++         -O2,-D_FORTIFY_SOURCE=2,-fstack-protector-strong
clang-O0      clang-14  clang++-14  -O0,-funsigned-char
clang-O2      clang-14  clang++-14  -O2,-funsigned-char
clang-Os      clang-14  clang++-14  -Os,-fsigned-char
"

build_row() {  # row cc cxx options arguments...
  row=$1 cc=$2 cxx=$3 options=$(echo "$4" | tr , ' ')
  shift 4
  folder=build/matrix/$row
  mkdir -p "$folder"
  { cmake --preset matrix -B "$folder" -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" \
      -DCMAKE_C_FLAGS="$options" -DCMAKE_CXX_FLAGS="$options" "$@" &&
    cmake --build "$folder" -j "$(nproc)" &&
    ctest --test-dir "$folder" --output-on-failure --no-tests=error
  } >"$folder/log" 2>&1 || { grep -vE '^\[|^-- |: mark ' "$folder/log" | tail -n 60; return 1; }
  [ ! -e "$folder/libqalt_at.so" ] || scripts/check_symbols.sh "$folder/libqalt_at.so"
}

for wanted; do
  echo "$rows" | cut -d " " -f 1 | grep -qxF -- "$wanted" || { echo "check_matrix.sh: there is no row $wanted" >&2; exit 2; }
done
echo "$rows" | while read -r row arguments; do
  [ -n "$row" ] || continue
  [ $# -eq 0 ] || echo " $* " | grep -q " $row " || continue
  began=$(date +%s)
  # shellcheck disable=SC2086
  build_row "$row" $arguments || { echo "FAILED: $row"; exit 1; }
  printf '%-14s passed, %s s\n' "$row" "$(($(date +%s) - began))"
done
