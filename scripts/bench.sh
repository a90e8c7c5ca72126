#!/bin/sh
# Prints the figures as Markdown: one table of times and sizes, then stack marks.
# usage: scripts/bench.sh BUILD_FOLDER [ROWS...]
#
# A row is a line of fields with tabs between them: work, ours, peer's name, peer's figure, floor,
# wanted; "-" where there is none. Wanted are bounds such as "peer<=0.1 floor<=4": what ours may be
# of each. Files of further rows are added to the table.
set -eu
export LC_ALL=C
build=$1
shift
repetitions=${BENCH_REPETITIONS:-25}

# The names of a program's benchmarks, then their medians, all sides interleaved in one run.
measured() {
  "$build/bench/$1" --benchmark_list_tests
  "$build/bench/$1" --benchmark_repetitions="$repetitions" --benchmark_min_time=0.02 \
    --benchmark_enable_random_interleaving=true --benchmark_report_aggregates_only=true \
    --benchmark_format=csv 2>/dev/null | sed -n '/_median",/ { s/_median"//; s/"//g; p }'
}

# Rows of the benchmarks "WORK/ours", "WORK/NAME OF A PEER" and "WORK/floor", in this order; ns an
# item.
rows_of() {
  measured "$1" | awk -F, -v OFS='\t' '
    function or_none(name) { return name in time ? time[name] : "-" }
    function row(work, peer, figure) {
      print work, time[ours], peer, figure, or_none(work "/floor"), wanted[ours]
    }
    { sub(/\/real_time$/, "", $1) }
    NF == 1 { names[++n] = $1; next }
    { time[$1] = sprintf("%.2f", 1e9 / $7); wanted[$1] = $8 == "" ? "-" : $8 }
    END { for (i = 1; i <= n; ++i) { work = side = names[i]
      sub(/.*\//, "", side); work = substr(work, 1, length(work) - length(side) - 1)
      if (side == "ours") { ours = names[i]; peers = 0 }
      else if (side != "floor") { ++peers; row(work, side, time[names[i]]) }
      else if (!peers) row(work, "-", "-") } }'
}

parser_rows() {
  measured parser_bench | awk -F, -v OFS='\t' '
    { split($1, name, "/") }
    NF == 1 { if (name[1] == "library") entries[++n] = name[2]; next }
    { time[name[1], name[2]] = $4 }
    END { for (i = 1; i <= n; ++i) { e = entries[i]
      print "parse and read a +CPBR answer of " e (e == 1 ? " entry" : " entries"), \
        time["library", e], "literal version", time["literal_version", e], \
        ("floor", e) in time ? time["floor", e] : "-", "peer<=0.3333" } }'
}

size_rows() {
  work=$(mktemp)
  strip -o "$work" "$2"
  ours=$(stat -c %s "$work")
  rm "$work"
  ldd "$build/bench/septets_bench" | awk '/libGammu|libosmogsm/ {print $1, $3}' |
    while read -r peer path; do
      printf '%s\t%s\t%s\t%s\t-\tpeer<=0.1\n' "$1" "$ours" "${peer%%.*}" "$(stat -L -c %s "$path")"
    done
}

table() {
  awk -F '\t' '
    function ratio(a, b) { return b == "-" ? "-" : sprintf("%.2f", a / b) }
    function within(bound, part, value) {
      if (bound !~ "^" part "<=") return 1
      sub(/.*<=/, "", bound)
      return value != "-" && value + 0 <= bound + 0
    }
    BEGIN { print "| work | ours | peer | floor | ours/peer | ours/floor | wanted | reached |"
            print "|---|---:|---|---:|---:|---:|---|---|" }
    { p = ratio($2, $4); f = ratio($2, $5); reached = $6 == "-" ? "-" : "yes"
      n = split($6, bounds, " ")
      for (i = 1; i <= n; ++i) if (!within(bounds[i], "peer", $4 == "-" ? "-" : $2 / $4) ||
        !within(bounds[i], "floor", $5 == "-" ? "-" : $2 / $5)) reached = "no"
      print "| " $1 " | " $2 " | " ($3 == "-" ? "-" : $3 ": " $4) " | " $5 " | " p " | " f " | " \
        $6 " | " reached " |" }'
}

library=$(ls "$build"/libqalt_at.so.*.*.* | head -n 1)
cmake -S . -B "$build-Os" -DCMAKE_BUILD_TYPE=MinSizeRel -DQALT_BUILD_TESTS=OFF \
  -DQALT_BUILD_PROGRAMS=OFF >/dev/null
cmake --build "$build-Os" -j "$(nproc)" >/dev/null
{
  for program in septets_bench gsm_text_bench hex_bench link_bench; do rows_of "$program"; done
  parser_rows
  for file; do cat "$file"; done
  size_rows "the library, stripped, bytes" "$library"
  size_rows "the library, stripped, -Os, bytes" "$(ls "$build-Os"/libqalt_at.so.*.*.* | head -n 1)"
} | table

echo
echo '```'
"$build/bench/stack_marks"
size "$library"
objdump -p "$library" | grep NEEDED
echo '```'
