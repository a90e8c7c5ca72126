#!/bin/sh
# Builds the library for its targets at -Os and runs its tests there, in an emulator where it must.
# usage: check_target.sh [STAGE...], default: arm-uclibc arm-musl musl suite
#   glibc arm-glibc arm-uclibc arm-musl musl   the C program that takes every exported function
#   suite-build                                everything for ARM with glibc, the test suite included
#   suite                                      the same, and runs the suite
set -eu
CDPATH='' cd "$(dirname "$0")/../.."
jobs=$(nproc)
store=build/target

# Runs the commands of a step; their output is shown only when one fails.
quietly() {  # log, command...
  log=$1
  shift
  "$@" >>"$log" 2>&1 || { grep -vE '^\[|^-- |: mark |: Entering|: Leaving' "$log" | tail -n 80; exit 1; }
}

configure_and_build() {  # preset, target, folder
  folder=$store/$3
  [ "$2" = glibc ] || packaging/target/toolchains.sh "$2" >/dev/null
  mkdir -p "$folder"
  : >"$folder/log"
  quietly "$folder/log" cmake --preset "$1"
  quietly "$folder/log" cmake --build "$folder" -j "$jobs"
  scripts/check_symbols.sh "$folder/libqalt_at.so"
}

# GoogleTest from the distribution's sources, once.
build_googletest() {
  out=$store/arm-glibc
  toolchain=$(packaging/target/toolchains.sh arm-glibc)
  [ ! -d $out/googletest ] || return 0
  quietly $out/log cmake -S /usr/src/googletest -B $out/build -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
    -DBUILD_GMOCK=OFF -DCMAKE_INSTALL_PREFIX="$PWD/$out/googletest.new"
  quietly $out/log cmake --build $out/build -j "$jobs"
  quietly $out/log cmake --install $out/build
  mv $out/googletest.new $out/googletest
}

# The tests start the programs as the user would. The kernel cannot run ARM's: a script that can
# takes the place of each.
wrap_programs() {  # folder
  for program in "$1"/server/qalt-* "$1"/sim/qalt-* "$1"/cli/qalt-*; do
    [ -x "$program" ] && [ -f "$program" ] && [ "${program%.arm}" = "$program" ] || continue
    head -c 4 "$program" | grep -q ELF || continue
    mv "$program" "$program.arm"
    printf '#!/bin/sh\nexec qemu-arm -L /usr/arm-linux-gnueabi %s.arm "$@"\n' "$PWD/$program" \
      >"$program"
    chmod +x "$program"
  done
}

stage() {
  case $1 in
    glibc | arm-glibc | arm-uclibc | arm-musl | musl)
      configure_and_build "$1" "$1" "small-$1"
      log=$store/$1.log
      : >"$log"
      quietly "$log" ctest --test-dir "$store/small-$1" --output-on-failure --no-tests=error -V
      sed -n 's/^1: \(.* calls .*\)/   \1/p' "$log"
      ;;
    suite-build)
      build_googletest
      configure_and_build arm-suite arm-glibc suite
      wrap_programs $store/suite
      ;;
    suite)
      stage suite-build
      : >$store/suite.log
      # The emulator is ten times as slow: texts one word shorter.
      quietly $store/suite.log env QALT_EXHAUSTIVE_LENGTH=5 ctest --test-dir $store/suite --output-on-failure -j "$jobs" \
        --no-tests=error
      grep '% tests passed' $store/suite.log
      ;;
    *) sed -n 's/^# //p' "$0" >&2; exit 2 ;;
  esac
}

[ $# -ne 0 ] || set -- arm-uclibc arm-musl musl suite
for name in "$@"; do
  began=$(date +%s)
  printf '== target %s\n' "$name"
  stage "$name"
  printf '   %s s\n' "$(($(date +%s) - began))"
done
