#!/bin/sh
# What the library costs on each target, in docs/FOOTPRINT.md.
# usage: footprint.sh           builds, measures, writes the document: make footprint
#        footprint.sh --check   builds, measures, fails when a budget is exceeded or the document has
#                               not the rows that there are now
# The figures themselves are not compared: they vary with the compiler's release, and stacks with the
# processor, whose vector registers the dynamic linker saves on the caller's stack.
set -eu
export LC_ALL=C
CDPATH='' cd "$(dirname "$0")/.."
store=build/target
marked="glibc arm-glibc arm-uclibc musl arm-musl"
sized="glibc arm-glibc arm-uclibc"
most_text=$((48 * 1024))
most_stack=$((400 * 1024))

# shellcheck disable=SC2086
packaging/target/check_target.sh $marked >build/footprint.log 2>&1 || { cat build/footprint.log; exit 1; }

section() { size -A "$1" | awk -v name="$2" '$1 == name {print $2}'; }

# Lines "NAME BYTES" of a library's objects of data: every writable one of 8 bytes or more.
objects_of() { nm -C -S -t d "$1" | awk '$3 ~ /^[dDbB]$/ && $2 + 0 >= 8 {
    sub(/^[0-9]+ /, ""); bytes = $1 + 0; kind = $2; sub(/^[0-9]+ [a-zA-Z] /, "")
    gsub(/\(anonymous namespace\)::|qalt::/, ""); print $0, bytes, kind }'; }

marks_of() { sed -n 's/^1: mark //p' "$store/$1.log" | sort; }

# A table out of files of "NAME VALUE" lines, one column a file, in the order of the first column.
table() {  # files...
  awk '{ if (!($1 in seen)) { seen[$1] = 1; order[++n] = $1 } value[$1, FILENAME] = $2 }
    END { for (i = 1; i <= n; ++i) { line = "| `" order[i] "` |"
      for (f = 1; f < ARGC; ++f) line = line " " ((order[i], ARGV[f]) in value ? \
        value[order[i], ARGV[f]] : 0) " |"; print line } }' "$@"
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for target in $sized; do
  library=$store/small-$target/libqalt_at.so
  for name in .text .rodata .data.rel.ro .data .bss; do
    echo "$name $(section "$library" $name)"
  done >"$work/sections-$target"
  (cd "$store/small-$target/CMakeFiles/qalt_at.dir" && find . -name '*.o' | sort | xargs size |
    awk 'NR > 1 && $6 != "(TOTALS)" { sub(/^\.\//, "", $6); sub(/\.cpp\.o$/, "", $6)
      print $6, $1 "+" $2 "+" $3 }') >"$work/parts-$target"
  objects_of "$library" | sort -k2,2nr -k1,1 | awk '{print $1, $2}' >"$work/objects-$target"
done
for target in $marked; do marks_of "$target" >"$work/marks-$target"; done

columns() { for target; do echo "$work/$kind-$target"; done; }
rule() { printf '|---|'; for target; do printf -- '---:|'; done; echo; }
head_of() { printf '| %s |' "$1"; shift; for target; do printf ' %s |' "$target"; done; echo; rule "$@"; }

deepest=$(sort -k2,2nr "$work"/marks-* | head -n 1 | cut -d' ' -f2)
text=$(section $store/small-arm-glibc/libqalt_at.so .text)

# shellcheck disable=SC2046,SC2086
{
  cat <<TEXT
# What the library costs

Written by \`make footprint\`. All builds are at -Os; \`glibc\` and \`musl\` are x86-64, the others 32-bit
ARM. Bytes throughout. Of this page \`scripts/footprint.sh --check\` holds the budgets and the rows: the
figures vary with the compiler's release, and stacks by some hundred bytes with the processor.

| budget | limit | measured |
|---|---:|---:|
| \`.text\` on ARM with glibc | $most_text | $text |
| largest stack of a call, on any C library | $most_stack | $deepest |
| libraries needed at run time | the C library | the C library |

## Sections

TEXT
  kind=sections
  head_of section $sized
  table $(columns $sized)
  cat <<TEXT

## Writable data, object by object

Nearly all of \`.bss\` is \`g_buffer\`, the index buffer: a copy of every contact that the process has
seen, 704 bytes an index, for 1024 indices. It is that large by design: no call then allocates, and no
contact is asked for twice. A device whose SIM has at most 250 entries configures the library with
\`-DQALT_PBB_CAPACITY=251\` and saves 540 KB; no exported record changes. Pages that are never touched
cost address space only. Objects under 8 bytes are left out.

TEXT
  kind=objects
  head_of object $sized
  table $(columns $sized)
  cat <<TEXT

## Source files

text, data and bss of each source file's object, as \`size\` counts them (text holds constants too).

TEXT
  kind=parts
  head_of part $sized
  table $(columns $sized)
  cat <<TEXT

## Stack

High-water mark of each exported function, on a painted thread stack of 512 KB, a bare thread's own
use taken off. The steps of a call are counted with it. syslog is the test program's, which only
formats; the C library's own may go a few KB deeper. A thread that calls the phonebook needs 512 KB:
the default is 8 MB with glibc and 2 MB with uClibc, but 128 KB with musl, where
\`pthread_attr_setstacksize\` must be called.

TEXT
  kind=marks
  head_of function $marked
  table $(columns $marked) | sort -t'|' -k3,3nr -k2,2
} >"$work/FOOTPRINT.md"

failed=0
[ "$text" -lt $most_text ] || { echo "FAILED: .text has $text bytes"; failed=1; }
[ "$deepest" -lt $most_stack ] || { echo "FAILED: a call needs $deepest bytes of stack"; failed=1; }
# Each exported function has its mark.
for target in $marked; do
  nm -D --defined-only "$store/small-$target/libqalt_at.so" | awk '$2 == "T" {print $3}' |
    sed 's/@.*//' | sort >"$work/functions"
  cut -d' ' -f1 "$work/marks-$target" | sort | diff - "$work/functions" >"$work/difference" ||
    { echo "FAILED: measured (<) and exported (>) on $target"; cat "$work/difference"; failed=1; }
done

# Source files and functions; which constants become objects is the compiler's choice.
rows() { sed -n '/^## Source files/,$ s/^| \(`[^|]*`\) |.*/\1/p' "$1" | sort; }
if [ "${1:-}" = --check ]; then
  rows docs/FOOTPRINT.md >"$work/said"
  rows "$work/FOOTPRINT.md" | diff "$work/said" - ||
    { echo "FAILED: rows of docs/FOOTPRINT.md (<) and measured (>); make footprint writes it"; failed=1; }
else
  cp "$work/FOOTPRINT.md" docs/FOOTPRINT.md
fi
[ $failed -ne 0 ] || echo "within the budgets: .text $text of $most_text, stack $deepest of $most_stack"
exit $failed
