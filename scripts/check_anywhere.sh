#!/bin/sh
# The tests of the release build again, in surroundings unlike the developer's; nothing is built anew
# but for path.
# usage: scripts/check_anywhere.sh [VARIATION...], default all of these but path
#   processor  without the vector registers that this one has, as far as the C library goes
#   one-core   on one core, with four busy loops beside
#   user       as an unprivileged user of a fresh namespace, without HOME, TMPDIR elsewhere, umask 077
#   container  without the right to make namespaces; only the tests that want them
#   locales    with LANG=C, C.UTF-8, and Turkish where there is one
#   path       a build of its own in a folder whose path has blanks and other letters than ASCII's
set -eu
CDPATH='' cd "$(dirname "$0")/.."
build=build/check
log=build/anywhere.log
[ -e $build/CTestTestfile.cmake ] || { echo "$build is not there: make check makes it" >&2; exit 1; }
work=$(mktemp -d)
busy=
trap '[ -z "$busy" ] || kill $busy 2>/dev/null; rm -rf "$work"' EXIT
trap 'exit 130' INT TERM
: >"$log"
failed=0
selected=

# Runs the tests by way of a command, without a terminal, and prints a line with their counts.
run_tests() {  # title, command...
  title=$1 began=$(date +%s) status=0
  shift
  # shellcheck disable=SC2086
  "$@" ctest --test-dir "$build" $selected --output-on-failure --no-tests=error -j $((2 * $(nproc))) \
    </dev/null >"$work/log" 2>&1 || status=$?
  cat "$work/log" >>"$log"
  if [ $status -ne 0 ]; then
    tail -n 60 "$work/log"
    echo "FAILED: $title; all of it is in $log"
    failed=1
    return 0
  fi
  sed -n 's/^[0-9]*% tests passed, .* out of //p' "$work/log" | {
    read -r count
    skipped=$(sed -n 's/^[[:space:]]*[0-9]* - \(.*\) (Skipped)$/\1/p' "$work/log" | tr '\n' ' ')
    echo "$title: $count tests, ${skipped:+skipped $skipped, }$(($(date +%s) - began)) s"
  }
}

skip() { echo "$1: skipped, $2"; }

in_processor() {
  case $(uname -m) in
    x86_64 | i?86) ;;
    *) skip processor "the C library has nothing to leave out on $(uname -m)"; return ;;
  esac
  features=$(sed -n 's/^flags.*: //p' /proc/cpuinfo | head -n 1 | tr ' ' '\n' |
    grep -xE 'avx|avx2|avx512.*|xsavec?' | tr 'a-z' 'A-Z' | sed 's/^/-/' | paste -s -d ,)
  [ -n "$features" ] || { skip processor "this one has no AVX"; return; }
  run_tests processor env GLIBC_TUNABLES="glibc.cpu.hwcaps=$features"
}

in_one_core() {
  core=$(taskset -cp $$ | sed 's/.*: \([0-9]*\).*/\1/')
  for _ in 1 2 3 4; do
    taskset -c "$core" sh -c 'while :; do :; done' &
    busy="$busy $!"
  done
  run_tests "one core" taskset -c "$core"
  kill $busy
  busy=
}

in_user() {
  # Another number inside than root's: no right is left.
  as_user="unshare --user --map-user=1000 --map-group=1000"
  $as_user true 2>/dev/null || { skip user "this system gives no user namespaces"; return; }
  mkdir "$work/else where"
  run_tests user env -u HOME TMPDIR="$work/else where" sh -c "umask 077; exec $as_user \"\$@\"" sh
}

in_container() {
  unshare --user --map-root-user true 2>/dev/null ||
    { skip container "this system gives no user namespaces, so the others saw it"; return; }
  selected="-R ^(pb_tool_test|gammu|consumer)[.]"
  run_tests container unshare --user --map-root-user sh -c 'echo 0 >/proc/sys/user/max_user_namespaces
    exec setpriv --bounding-set=-all --inh-caps=-all "$@"' sh
  selected=
}

in_locales() {
  bare="env -u LC_ALL -u LC_CTYPE -u LC_MESSAGES -u LANGUAGE"
  run_tests "LANG=C" $bare LANG=C
  run_tests "LC_ALL=C.UTF-8" env LC_ALL=C.UTF-8
  # Its i has two capitals. Where it was not generated, its source may be there.
  turkish=$(locale -a 2>/dev/null | grep -i '^tr_TR' | head -n 1)
  if [ -n "$turkish" ]; then
    run_tests "LC_ALL=$turkish" env LC_ALL="$turkish"
  elif localedef -i tr_TR -f UTF-8 "$work/tr_TR.UTF-8" >/dev/null 2>&1; then
    run_tests "LC_ALL=tr_TR.UTF-8" env LOCPATH="$work" LC_ALL=tr_TR.UTF-8
  else
    skip "LC_ALL=tr_TR.UTF-8" "neither it nor its source is here"
  fi
}

# The tests know their folder by the name that it had when they were built.
in_path() {
  place="$PWD/build/any where Ελλάς/tree"
  rm -rf "$place"
  mkdir -p "$place"
  scripts/tree_files.sh | tar --null -T - -cf - |
    tar -C "$place" -xf -
  scripts/quietly.sh "$place.log" cmake -S "$place" -B "$place/build/check" -DBUILD_TESTING=ON -DQALT_WERROR=ON \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE=-O1
  scripts/quietly.sh "$place.log" cmake --build "$place/build/check" -j "$(nproc)"
  build=$place/build/check
  run_tests path env
  build=build/check
}

[ $# -ne 0 ] || set -- processor one-core user container locales
for variation; do
  case $variation in
    processor) in_processor ;;
    one-core) in_one_core ;;
    user) in_user ;;
    container) in_container ;;
    locales) in_locales ;;
    path) in_path ;;
    *) sed -n 's/^# usage: /usage: /p; s/^#   /  /p' "$0" >&2; exit 2 ;;
  esac
done
exit $failed
