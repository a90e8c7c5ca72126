#!/bin/bash
# usage: gammu_test.sh QALT_SIMMODEM QALT_ATD QALT_PB
#
# The server's fixed socket path is private to the test: it runs in a mount namespace with a /tmp of
# its own. Where there are no namespaces it takes turns in the /tmp that there is.
set -eu
if [ -z "${GAMMU_TEST_INSIDE:-}" ]; then
  command -v gammu >/dev/null || { echo "gammu is not installed" >&2; exit 77; }
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  # Who is not root is root of a user namespace.
  for way in "unshare --mount" "unshare --user --map-root-user --mount" "flock /tmp/qalt_tests.lock"; do
    case $way in unshare*) $way mount --bind "$work" /tmp 2>/dev/null || continue ;; esac
    GAMMU_TEST_INSIDE=$work GAMMU_TEST_WAY=$way $way "$0" "$@"
    exit
  done
fi
# The build may stand below /tmp, which is about to be replaced: run copies.
library=$(ldd "$3" | awk '/libqalt_at/ {print $3}')
work=$GAMMU_TEST_INSIDE
cp "$1" "$2" "$3" "$library" "$work"
case $GAMMU_TEST_WAY in
  unshare*)
    mount --bind "$work" /tmp
    work=/tmp
    ;;
  *)
    ! "$3" at AT >/dev/null 2>&1 || { echo "/tmp is in use by another AT server" >&2; exit 77; }
    rm -f /tmp/AT_SERVER_MSG
    ;;
esac
cd "$work"
simmodem=$work/${1##*/} atd=$work/${2##*/} pb=$work/${3##*/}
export LC_ALL=C.UTF-8 LD_LIBRARY_PATH=$work

fail() { echo "FAILED: $1" >&2; exit 1; }
expect() {  # what, text, pattern
  grep -qE -- "$3" <<<"$2" || { echo "$2" >&2; fail "$1"; }
}

# Both programs say "ready" once they can be used.
start() {  # program, arguments...
  mkfifo "$work/ready"
  "$@" --ready-fd 3 3>"$work/ready" &
  pids="${pids:-} $!"
  read -r _ <"$work/ready" || fail "$1 did not start"
  rm "$work/ready"
}
trap 'kill ${pids:-} 2>/dev/null || true; wait' EXIT

start "$simmodem" --pty "$work/modem"
cat >"$work/gammurc" <<TXT
[gammu]
device = $work/modem
connection = at
TXT
gammu_do() { gammu -c "$work/gammurc" "$@" 2>&1; }

expect "identify" "$(gammu_do identify)" 'Manufacturer'
all=$(gammu_do getallmemory SM) || fail "gammu reads: $all"
for name in 'Anna Müller' 'Ελένη Παπαδάκη' 'Иван Петров' '李小龙' 'Smith, Mary; Ann'; do
  expect "gammu reads $name" "$all" "$name"
done

card() {  # name, number
  printf 'BEGIN:VCARD\nVERSION:3.0\nN:%s;;;;\nTEL;TYPE=CELL:%s\nEND:VCARD\n' "$1" "$2"
}
card 'Jörg Ñuñez' '+4930555' >"$work/accent.vcf"
card '王小明' '5550177' >"$work/chinese.vcf"
# It ends with a command for the modem's clock, which has none, and says so with status 121.
gammu_do addnew "$work/accent.vcf" -yes -memory SM >"$work/log" || [ $? -eq 121 ] || fail "add"
gammu_do addnew "$work/chinese.vcf" -yes -memory SM >>"$work/log" || [ $? -eq 121 ] || fail "add"

# The server takes the same modem over; the tool reads what gammu wrote and writes in its turn.
start "$atd" --modem "tty:$work/modem"
list=$("$pb" list)
expect "qalt-pb reads the accents" "$list" 'Jörg Ñuñez +\+4930555'
expect "qalt-pb reads the Chinese name" "$list" '王小明 +5550177'
place=$("$pb" --json find 'Ñuñez' | grep -oE '"index": ?[0-9]+' | grep -oE '[0-9]+')
"$pb" delete "$place" --yes >/dev/null
"$pb" add --name 'Zoë 東京' --number '+819012345678' >/dev/null
kill "${pids##* }" && wait "${pids##* }" 2>/dev/null || true

all=$(gammu_do getallmemory SM) || fail "gammu reads: $all"
expect "gammu reads what qalt-pb wrote" "$all" 'Zoë 東京'
expect "and its number" "$all" '\+819012345678'
grep -q 'Ñuñez' <<<"$all" && fail "qalt-pb deleted the contact, gammu still reads it"
place=$(grep -B3 'Zoë 東京' <<<"$all" | grep -oE 'Location [0-9]+' | grep -oE '[0-9]+' | head -n 1)
gammu_do deletememory SM "$place" >/dev/null || fail "gammu deletes"
gammu_do getmemory SM "$place" | grep -q 'Zoë' && fail "gammu deleted it and still reads it"
echo "gammu and qalt-pb read and write the same phonebook"
