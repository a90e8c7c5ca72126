#!/bin/sh
# All that a change must pass, stage by stage, with a table of their times at the end.
# usage: check_all.sh [STAGE...]   default: all, in the order of the table below
#
# A stage that passed is not run again while its files, the compiler and the system are the same;
# FRESH=1 runs it all the same. One whose tools cannot be had here is left out, and says so. Logs are
# in build/stages. Exit status 1 when a stage failed.
set -eu
cd "$(dirname "$0")/.."
store=build/stages
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
suite-arm      target         bench
interface      abi            tests bench
anywhere       tests          bench
reproducible   build          tests bench
distributions  distributions  bench
"

run_suite() {  # preset
  scripts/quietly.sh "build/$1.log" cmake --preset "$1"
  scripts/quietly.sh "build/$1.log" cmake --build "build/$1" -j "$(nproc)" -- --no-print-directory
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
    suite-arm) packaging/target/check_target.sh suite-build ;;
    interface) scripts/check_abi.sh ;;
    anywhere) scripts/check_anywhere.sh ;;
    reproducible) scripts/check_reproducible.sh ;;
    distributions) scripts/check_distributions.sh trixie ;;
  esac
}

# What decides a stage's result: the files it looks at, the compiler, the system. The documents at
# the top are read by people alone.
state_of() {  # folders that it does not look at
  excluded=':(exclude,glob)*.md'
  for folder; do excluded="$excluded :(exclude)$folder"; done
  # shellcheck disable=SC2086
  { set -f
    git ls-files -z -co --exclude-standard -- . $excluded | xargs -0 sha256sum
    "${CXX:-c++}" --version
    uname -m
    cat /etc/os-release; } 2>/dev/null | sha256sum
}

row() { printf '%-14s %-9s %5s s  %s\n' "$@" | sed 's/ *$//' >>$store/table; }

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
  began=$(date +%s) status=0
  # A process of its own: only there a command that fails ends the stage.
  { scripts/setup.sh "$goal" && scripts/check_all.sh --stage "$name"; } >$store/"$name".log 2>&1 </dev/null || status=$?
  took=$(($(date +%s) - began))
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
for wanted; do
  echo "$stages" | grep -q "^$wanted " ||
    { echo "check_all.sh: no stage $wanted; there are:" $(echo "$stages" | cut -d ' ' -f 1) >&2; exit 2; }
done
: >$store/table
began=$(date +%s)
while read -r name rest; do
  [ -n "$name" ] || continue
  [ $# -eq 0 ] || case " $* " in *" $name "*) ;; *) continue ;; esac
  # shellcheck disable=SC2086
  one_stage "$name" $rest
done <<STAGES
$stages
STAGES
echo
cat $store/table
row all '' $(($(date +%s) - began)) ''
tail -n 1 $store/table
! grep -q ' FAILED ' $store/table
