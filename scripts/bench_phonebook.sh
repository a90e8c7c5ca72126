#!/bin/bash
# Reads a phonebook of 250 contacts from a simulated modem on a pseudo-terminal, with qalt-pb through
# qalt-atd and with gammu, in turns, and prints medians, one row a line, its columns between tabs:
# work, ours, peer's name, peer, floor, wanted.
# usage: scripts/bench_phonebook.sh BUILD_FOLDER [repetitions]
set -eu
repetitions=${2:-5}
if [ -z "${PHONEBOOK_BENCH_INSIDE:-}" ]; then
  command -v gammu >/dev/null || { echo "gammu is not installed" >&2; exit 77; }
  unshare --mount true 2>/dev/null || { echo "no mount namespaces here" >&2; exit 77; }
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  PHONEBOOK_BENCH_INSIDE=$work unshare --mount -- "$0" "$@"
  exit
fi

# qalt-atd's socket has a fixed path: a /tmp of its own keeps two runs apart. The build may stand
# below the old one: run copies.
work=$PHONEBOOK_BENCH_INSIDE
cp "$1"/sim/qalt-simmodem "$1"/server/qalt-atd "$1"/cli/qalt-pb "$1"/bench/phonebook_{run,floor,client} \
  "$1"/libqalt_at.so.* "$work"
mount --make-rprivate /
mkdir "$work/tmp"
mkdir -p /run/phonebook_bench.$$ && mount --bind "$work" /run/phonebook_bench.$$
mount --bind "$work/tmp" /tmp
work=/run/phonebook_bench.$$
cd "$work"
export LC_ALL=C.UTF-8 LD_LIBRARY_PATH=$work
pids=
trap 'kill $pids 2>/dev/null || true; wait; cd /; umount "$work"; rmdir "$work"' EXIT

start() {  # program, arguments...: says "ready" once it can be used
  mkfifo ready
  "$@" --ready-fd 3 3>ready &
  pids="$pids $!"
  read -r _ <ready
  rm ready
}

# Names of 15 characters, three fifths of them outside the GSM alphabet, and numbers of 11 digits.
awk 'BEGIN { split("Anna,Müller,Ελένη,Иван,李小龙", part, ",")
  printf "{\"SM\": ["
  for (i = 1; i <= 250; ++i) printf "%s{\"name\": \"%s Contact%03d\", \"number\": \"+4930%08d\"}",
    (i > 1 ? "," : ""), part[i % 5 + 1], i, i * 7919
  print "]}" }' >contacts
printf '[gammu]\ndevice = %s/modem\nconnection = at\n' "$work" >gammurc
start ./qalt-simmodem --pty "$work/modem" --sim-contacts contacts --log wire

# Runs a command and puts WALL CPU COMMANDS READ IDLE on a line of the file: the time from the
# first piece of the modem with an entry to the last, and how long the modem was left waiting between
# an answer and the next command, counting gaps of 10 ms and more. Times are in microseconds.
measure() {  # file, command...
  local file=$1 seen
  shift
  seen=$(wc -l <wire)
  ./phonebook_run "$@" >ran 2>errors || { cat errors >&2; echo "$* failed" >&2; exit 1; }
  tail -n "+$((seen + 1))" wire >"$file.wire"
  awk -v ran="$(cat ran)" '{ split(substr($1, 12), t, /[:Z]/); at = t[1] * 3600e6 + t[2] * 60e6 + t[3] * 1e6 }
    $2 == ">" { n += gsub(/\\r/, ""); if (answered && at - answered >= 10000) idle += at - answered; answered = 0 }
    $2 == "<" { answered = at; if (/\+CPBR: [0-9]+,"/) { if (!first) first = at; last = at } }
    END { print ran, n + 0, last - first, idle + 0 }' "$file.wire" >>"$file"
}

for ((i = 0; i < repetitions; ++i)); do
  measure gammu gammu -c gammurc getallmemory SM
  start ./qalt-atd --modem "tty:$work/modem"
  atd=${pids##* }
  ./qalt-pb at AT >/dev/null  # until then the server is still setting the line up
  measure pb --with "$atd" ./qalt-pb list
  [ -s memory_of_ours ] || ./phonebook_run --memory ./phonebook_client >memory_of_ours
  kill "$atd" && wait "$atd" || true
  pids=${pids% *}
  # The very commands that qalt-pb sent.
  sed -n 's/^[^ ]* > //p' pb.wire | tr -d '\n' | sed 's/\\r/\n/g' >commands
  measure floor ./phonebook_floor modem commands
done
median() { awk -v column="$2" '{ print $column }' "$1" | sort -n | sed -n "$((repetitions / 2 + 1))p"; }
ms() { awk -v us="$1" 'BEGIN { printf "%.1f ms", us / 1000 }'; }
row() { local IFS=$'\t'; echo "$*"; }

row "qalt-pb list, 250 contacts, whole command" "$(ms "$(median pb 1)")" "gammu getallmemory SM" \
  "$(ms "$(median gammu 1)"), of which it pauses $(ms "$(median gammu 5)")" \
  "$(ms "$(median floor 1)")" "peer<=0.05 floor<=2"
row "the same, from first to last entry" "$(ms "$(median pb 4)")" gammu "$(ms "$(median gammu 4)")" \
  "$(ms "$(median floor 4)")" "peer<=1"
row "the same, processor time with qalt-atd's" "$(ms "$(median pb 2)")" gammu "$(ms "$(median gammu 2)")" \
  "$(ms "$(median floor 2)")" "peer<=0.5"
row "the same, commands on the wire" "$(median pb 3)" gammu "$(median gammu 3)" "$(median floor 3)" \
  "ours<=60"
nothing=$(./phonebook_run --memory ./phonebook_client --empty)
theirs=$(./phonebook_run --memory gammu -c gammurc getallmemory SM 2>errors)
row "resident memory of a client after a full read, above an empty one" \
  "$(($(cat memory_of_ours) - nothing)) KB" gammu "$((theirs - nothing)) KB" - "peer<=0.1"
