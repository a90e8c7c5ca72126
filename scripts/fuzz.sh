#!/bin/sh
# Runs each fuzz target for FUZZ_SECONDS, from the kept corpus. What is found new goes to the build
# folder; an input that breaks a property is kept there too, and ends the run.
# usage: scripts/fuzz.sh [TARGET...], default all
set -eu
CDPATH='' cd "$(dirname "$0")/.."

build=build/fuzz
seconds=${FUZZ_SECONDS:-60}

cmake --preset fuzz >/dev/null
cmake --build $build -j "$(nproc)"

# shellcheck disable=SC2046
[ $# -ne 0 ] || set -- $(ls tests/fuzz/corpus)
for target; do
  found=$build/found/$target
  mkdir -p "$found"
  log=$build/$target.log
  if ! "$build/tests/fuzz/fuzz_$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=1024 \
    -max_len=16384 -print_final_stats=1 -verbosity=1 -artifact_prefix="$found." \
    "$found" "tests/fuzz/corpus/$target" >"$log" 2>&1; then
    tail -n 40 "$log"
    echo "$target: a property does not hold; the input is $found.crash-* or alike" >&2
    exit 1
  fi
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")
  cover=$(sed -n 's/.* cov: \([0-9]*\) .*/\1/p' "$log" | tail -n 1)
  printf '%-15s %10s runs %7s per second %6s edges\n' "$target" "$runs" "$rate" "$cover"
done
