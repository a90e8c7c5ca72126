#!/bin/sh
# Runs the programs of the documents on every kind of phonebook; qalt-pb is the witness.
# usage: run_programs.sh FOLDER PREFIX LIBRARY [own]   a folder with the programs, and, below it, where
#   the tools and the library are installed; "own": in a mount namespace, whose /tmp becomes its own
set -eu
cd "$1"
export LC_ALL=C.UTF-8 LD_LIBRARY_PATH="$3"
tools=$2
fail() { echo "FAILED: $1 (profile ${profile:-none}, platform ${platform:-0})"; exit 1; }
[ "${4:-}" != own ] || { mkdir tmp && mount --bind tmp /tmp; }
processes=
# shellcheck disable=SC2086
trap '[ -z "$processes" ] || kill $processes 2>/dev/null || true' EXIT
mkfifo ready said

# Without a server they say so at once.
! ./first_read 2>error && grep -q '^/tmp/AT_SERVER_MSG: ' error || fail "no server"

while read -r profile platform; do
  "$tools/sbin/qalt-atd" --modem sim --sim-profile "$profile" --sim-report '+CMTI: "SM",3' \
    --report-to pushed --ready-fd 3 3>ready &
  server=$! processes=$!
  read -r _ <ready || fail "no server"
  ./reports pushed >said &
  processes="$processes $!"
  exec 4<said
  read -r line <&4 && [ "$line" = ready ] || fail "no receiver"

  [ "$(./manual "$platform")" = '+4930901820 Anna Müller' ] || fail "the manual's example"
  index=$(./first_write 'Jörg Ωmega' +302105550199 "$platform") || fail "first_write"
  read -r line <&4 && [ "$line" = '+CMTI: "SM",3' ] || fail "the report"
  exec 4<&-
  [ "$platform" -ne 0 ] || ./manual_cpp | grep -qx '3 Ελένη Παπαδάκη' || fail "the C++ example"
  ./client | grep -q '^1: +4930901820' || fail "README's client"

  # What the tool reads, the page's program reads, the new contact included.
  "$tools/bin/qalt-pb" --platform "$platform" --json list |
    sed -n '/"index"/ {s/.*"index":\([0-9]*\),"name":"\(.*\)","number":"\([^"]*\)".*/\1 \3 \2/
      s/\\\(.\)/\1/g; p;}' >wanted
  grep -qx "$index +302105550199 Jörg Ωmega" wanted || fail "what was written"
  ./first_read "$platform" | diff - wanted || fail "first_read"
  kill "$server"
  wait
done <<END
standard 0
vendor 0
vendor 1
vendor-usim 0
scpbr 0
scpbr 4
END
