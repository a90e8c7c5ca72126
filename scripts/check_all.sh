#!/bin/sh
# All that a change must pass, stage by stage, with a table of their times at the end.
# usage: check_all.sh [STAGE...]         default: all, in the order of the table below
#        check_all.sh --but [STAGE...]   all but these
#
# A stage that passed is not run again while its files, the compiler and the system are the same;
# FRESH=1 runs it all the same. One whose tools cannot be had here is left out, and says so. Logs are
# in build/stages. Exit status 1 when a stage failed.
set -eu
CDPATH='' cd "$(dirname "$0")/.."
store=build/stages
# What would leave tests out.
unset GTEST_FILTER GTEST_TOTAL_SHARDS GTEST_SHARD_INDEX
mkdir -p $store

# Stage, the set-up it needs, and the folders that it does not look at.
stages="
release        tests          bench
format         format
lint           lint           bench
docs           docs           tests bench
asan           tests          bench
tsan           tests          bench
targets        target         bench
build-arm      target         bench
interface      abi            bench
anywhere       tests          bench
reproducible   tests          bench
distributions  distributions  bench
"

build() {  # preset
  scripts/quietly.sh "build/$1.log" cmake --preset "$1"
  scripts/quietly.sh "build/$1.log" cmake --build "build/$1" -j "$(nproc)"
}

run_suite() {  # preset
  build "$1"
  ctest --preset "$1" -j "$(nproc)"
}

run_stage() {
  case $1 in
    release) scripts/check.sh ;;
    format) scripts/format.sh --check ;;
    lint) scripts/lint.sh ;;
    docs) scripts/docs.sh ;;
    # Plain char is signed on x86 and unsigned on ARM: this build takes ARM's. Unoptimised it is
    # built in half the time, and no check is optimised away.
    asan) run_suite asan ;;
    # The library's threads; the programs' event loops have one.
    tsan) run_suite tsan ;;
    # The C program that calls every exported function runs on five C libraries, and measures its
    # stack there.
    targets) scripts/footprint.sh --check ;;
    # It runs under make check-target.
    build-arm) packaging/target/check_target.sh suite-build ;;
    interface) scripts/check_abi.sh ;;
    anywhere)
      build check
      scripts/check_anywhere.sh
      ;;
    reproducible) scripts/check_reproducible.sh ;;
    distributions) scripts/check_distributions.sh trixie ;;
    *) echo "check_all.sh: no stage $1" >&2; exit 2 ;;
  esac
}

# What decides a stage's result: the files it looks at, the compiler, the system. The documents at
# the top are read by people alone.
state_of() {  # folders that it does not look at
  excluded=':(exclude,glob)*.md'
  for folder; do excluded="$excluded :(exclude)$folder"; done
  # shellcheck disable=SC2086
  { set -f
    scripts/tree_files.sh . $excluded | xargs -0 sh -c 'sha256sum "$@"; stat -c "%a %n" "$@"' -
    "${CXX:-c++}" --version
    uname -m
    cat /etc/os-release; } 2>/dev/null | sha256sum
}

row() { printf '%-14s %-9s %5s s  %s\n' "$@" | sed 's/ *$//' >>"$table"; }

one_stage() {  # name, set-up, folders that it does not look at
  name=$1 goal=$2
  shift 2
  passed=$store/$name.passed
  state=$(state_of "$@")
  if [ -z "${FRESH:-}" ] && [ "$(cat "$passed" 2>/dev/null)" = "$state" ]; then
    row "$name" unchanged 0 "passed on $(date -r "$passed" '+%F at %H:%M')"
    return 0
  fi
  rm -f "$passed"
  echo "== $name, from $(date +%H:%M:%S), log: $store/$name.log"
  stage_began=$(date +%s) status=0
  # A process of its own: only there a command that fails ends the stage.
  { scripts/setup.sh "$goal" && scripts/check_all.sh --stage "$name"; } >$store/"$name".log 2>&1 </dev/null || status=$?
  took=$(($(date +%s) - stage_began))
  case $status in
    0)
      echo "$state" >"$passed"
      row "$name" passed $took ''
      ;;
    77) row "$name" 'left out' $took "$(tail -n 1 $store/"$name".log)" ;;
    *)
      tail -n 60 $store/"$name".log
      echo "FAILED: $name"
      row "$name" FAILED $took ''
      ;;
  esac
}

[ "${1:-}" != --stage ] || { run_stage "$2"; exit; }
but=
[ "${1:-}" != --but ] || { but=yes; shift; }
for wanted; do
  echo "$stages" | cut -d ' ' -f 1 | grep -qxF -- "$wanted" ||
    { echo "check_all.sh: no stage $wanted; there are:" $(echo "$stages" | cut -d ' ' -f 1) >&2; exit 2; }
done
# Another run may go on beside this one.
table=$(mktemp)
trap 'rm -f "$table"' EXIT
began=$(date +%s)
while read -r name rest; do
  [ -n "$name" ] || continue
  case " $* " in
    *" $name "*) [ -z "$but" ] || continue ;;
    *) [ -n "$but" ] || [ $# -eq 0 ] || continue ;;
  esac
  # shellcheck disable=SC2086
  one_stage "$name" $rest
done <<STAGES
$stages
STAGES
echo
cat "$table"
row all '' $(($(date +%s) - began)) ''
tail -n 1 "$table"
! grep -q ' FAILED ' "$table"
