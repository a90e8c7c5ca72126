#!/bin/sh
# What takes too long for every change: all texts up to LENGTH words, and more runs of the threaded
# and fault tests, where what goes wrong goes wrong rarely.
set -eu
CDPATH='' cd "$(dirname "$0")/.."

build=build/long
length=${LENGTH:-7}
repeat=${REPEAT:-100}

cmake --preset long >/dev/null
cmake --build --preset long -j "$(nproc)"

echo "== all texts of up to $length characters or words"
QALT_EXHAUSTIVE_LENGTH=$length "$build/tests/exhaustive/exhaustive_test" --gtest_brief=1

repeated() {  # program
  echo "== $1, $repeat times"
  scripts/quietly.sh build/long.log "$build/tests/$1" --gtest_brief=1 --gtest_repeat="$repeat" \
    --gtest_break_on_failure
  [ "$(grep -c 'PASSED' build/long.log)" -eq "$repeat" ] ||
    { echo "FAILED: not every run of $1 passed"; exit 1; }
}
repeated faults/faults_test
repeated parser/parser_threads_test
