#!/bin/sh
# Prints the figures as Markdown, as they stand in docs/PERFORMANCE.md.
# usage: scripts/bench.sh BUILD_FOLDER [ROWS...]
#
# A row is a line of fields with tabs between them: work, ours, peer's name, peer's figure, floor,
# wanted; "-" where there is none. Wanted are bounds: "peer<=0.1 floor<=4", what ours may be of each,
# or "ours<=60". Files of further rows are added to the table.
set -eu
export LC_ALL=C
build=$1
shift
repetitions=${BENCH_REPETITIONS:-25}

# All sides of a program's works interleaved in one run. It ends when they do not agree, and so does
# this.
for program in septets_bench gsm_text_bench hex_bench link_bench parser_bench; do
  scripts/quietly.sh "$build/$program.log" "$build/bench/$program" \
    --benchmark_repetitions="$repetitions" --benchmark_min_time=0.02 \
    --benchmark_enable_random_interleaving=true --benchmark_report_aggregates_only=true \
    --benchmark_out="$build/$program.csv" --benchmark_out_format=csv
done

# The names of a program's benchmarks, then their medians.
measured() {
  "$build/bench/$1" --benchmark_list_tests
  sed -n '/_median",/ { s/_median"//; s/"//g; p }' "$build/$1.csv"
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
    { ns = 1e9 / $7; time[$1] = sprintf(ns < 100 ? "%.2f" : "%.0f", ns); wanted[$1] = $8 == "" ? "-" : $8 }
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
    { time[name[1], name[2]] = sprintf("%.0f", $4) }
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

# A row reaches what is wanted when it keeps every bound; a bound that is not understood is a "?".
table() {
  awk -F '\t' '
    function of(a, b) { return b == "-" || b == "" ? "-" : a / b }
    function shown(ratio) { return ratio == "-" ? "-" : sprintf("%.2f", ratio) }
    function verdict(bounds, part, n, i, worst) {
      n = split(bounds, part, " ")
      worst = bounds == "-" ? "-" : "yes"
      for (i = 1; i <= n && bounds != "-"; ++i) {
        if (!match(part[i], /^(peer|floor|ours)<=[0-9.]+$/)) return "?"
        split(part[i], bound, "<=")
        if (actual[bound[1]] == "-" || actual[bound[1]] > bound[2] + 0) worst = "no"
      }
      return worst
    }
    BEGIN { print "| work | ours | peer | floor | ours/peer | ours/floor | wanted | reached |"
            print "|---|---:|---|---:|---:|---:|---|---|" }
    { actual["peer"] = of($2, $4); actual["floor"] = of($2, $5); actual["ours"] = $2 + 0
      print "| " $1 " | " $2 " | " ($3 == "-" ? "-" : $3 ": " $4) " | " $5 " | " \
        shown(actual["peer"]) " | " shown(actual["floor"]) " | " $6 " | " verdict($6) " |" }'
}

library=$(ls "$build"/libqalt_at.so.*.*.* | head -n 1)
cmake --preset small >/dev/null
cmake --build --preset small -j "$(nproc)" >/dev/null

cat <<TEXT
# Speed

Printed by \`make bench\`, which also leaves it in build/bench/PERFORMANCE.md. Measured on
$(nproc) cores, $(. /etc/os-release && echo "$PRETTY_NAME"), $(g++ --version | head -n 1), release build.
Each figure is the median of $repetitions repetitions, and all sides of a work run in turns in one
process, on the same input; before that their results are compared. Times are processor time in ns
for one septet, character, byte or exchange (a whole answer for the parser). They depend on the
machine and on what else it does: the ratios are what counts.

TEXT
{
  for program in septets_bench gsm_text_bench hex_bench link_bench; do rows_of "$program"; done
  parser_rows
  for file; do cat "$file"; done
  size_rows "the library, stripped, bytes" "$library"
  size_rows "the library, stripped, -Os, bytes" "$(ls build/small/libqalt_at.so.*.*.* | head -n 1)"
} | table

cat <<'TEXT'

What the rows say:

- **septets**: eight septets pass through one 64-bit word. libosmogsm offers no unpacking alone: its
  figure includes the mapping to characters, and only libGammu's is a fair one. Floor: one store a
  byte; packing may fall below it, because compilers join the stores of a group.
- **GSM to UCS2**: messages of 160 characters with letters of the language and some escapes. libGammu
  knows the default alphabet alone; beside the other languages stands what it needs for that one.
  Floor: one look-up in a table for each character, escapes left out.
- **UCS2 to GSM**: one look-up gives the code and whether an escape goes in front of it.
- **hex**: appending searches the end of the text once. Lower-case digits are read by
  `CODE_String2Bytes` alone; `CODE_AscToHex` adds to what the bytes hold, so its time includes that
  they are cleared. Floor: a look-up in 16 entries for each digit.
- **exchange**: a connection, a frame of 10248 bytes there and one back, in elapsed time, which suffers
  most from a busy machine. Floor: the system calls alone.
- **+CPBR answer**: against the rules carried out as they are worded, each search from the start and
  each buffer cleared. ns for the whole answer.
- **qalt-pb list**: through qalt-atd, on the simulated modem on a pseudo-terminal; gammu on the same
  one, in turns. The server has answered one command before. Floor: a program that sends the same
  command lines and reads up to each final result. A pause is a gap of 10 ms or more between an answer
  and the next command. The memory is that of a client in C that has read all contacts, at its end,
  less an empty one's.
- **wrong answers**: to clients of the server, in simulated time. Every tenth answer comes up to 9 s
  behind its time-out or never; right are the command's own, and none for those.
- **longest wait**: of one client that asks 50 times a second, beside others that behave badly, on a
  simulated modem with 5 ms for a command. Wanted: a second and one command.
- **size**: libosmogsm holds protocols beside its texts. A tenth of it is not reached: the exported
  tables (12 KB of commands and end marks) and the names of all exported functions (17 KB with their
  relocations) are the interface.

Stack and sections:

```
TEXT
"$build/bench/stack_marks"
size "$library"
objdump -p "$library" | grep NEEDED
echo '```'
