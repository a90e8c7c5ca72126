#!/bin/sh
# Prints the figures: exchange, parser, stack, size. usage: scripts/bench.sh BUILD_FOLDER
set -eu
build=$1

# Medians of interleaved repetitions, both sides in one run.
run() {
  "$build/bench/$1" --benchmark_repetitions=25 --benchmark_min_time=0.05 \
    --benchmark_enable_random_interleaving=true --benchmark_report_aggregates_only=true \
    --benchmark_format=csv 2>/dev/null | grep _median
}

echo "one exchange, ns: ClientSendCmd and the bare system calls"
run link_bench | awk -F, '{ gsub(/"/, "", $1); t[$1] = $3; print "  " $1, $3 }
  END { for (k in t) if (k ~ /^client/) a = t[k]; else b = t[k]; printf "  ratio %.3f\n", a / b }'

echo "parse and read a +CPBR answer, ns by entries: library and literal version"
run parser_bench | awk -F, '{ gsub(/"/, "", $1); sub(/_median$/, "", $1); t[$1] = $3 }
  END { n = split("1 10 50 100", c, " "); for (i = 1; i <= n; ++i) {
    ours = t["library/" c[i]]; other = t["literal_version/" c[i]]
    printf "  %3d entries: %9.0f %9.0f  ratio %.1f, %.0f ns an entry\n", c[i], ours, other,
      other / ours, ours / c[i] } }'

"$build/bench/stack_marks"

library=$(ls "$build"/libqalt_at.so.*.*.* | head -n 1)
echo "the library as size counts it, release and -Os"
size "$library" | tail -n 1
cmake -S . -B "$build-Os" -DCMAKE_BUILD_TYPE=MinSizeRel -DQALT_BUILD_TESTS=OFF \
  -DQALT_BUILD_PROGRAMS=OFF >/dev/null
cmake --build "$build-Os" -j "$(nproc)" >/dev/null
size "$(ls "$build-Os"/libqalt_at.so.*.*.* | head -n 1)" | tail -n 1
objdump -p "$library" | grep NEEDED
