#!/bin/sh
# Runs the programs of the documents on every kind of phonebook, with qalt-pb as the witness.
# usage: run_programs.sh FOLDER LIBRARY WAY   their folder, what is below it, what this was called by
set -eu
cd "$1"
export LC_ALL=C.UTF-8 LD_LIBRARY_PATH="$2"
case $3 in unshare*) mkdir tmp && mount --bind tmp /tmp ;; esac
tools=sysroot/opt/qalt processes=
fail() { echo "FAILED: $1, profile ${profile:-} $platform"; exit 1; }
trap 'kill $processes 2>/dev/null || true' EXIT
mkfifo ready said
for kind in "standard 0" "vendor 0" "vendor 1" "vendor-usim 0" "scpbr 0" "scpbr 4"; do
  profile=${kind% *} platform=${kind#* }
  ! ./first_read 2>error && grep -q '^/tmp/AT_SERVER_MSG: ' error || fail "without a server"
  $tools/sbin/qalt-atd --modem sim --sim-profile "$profile" --sim-report '+CMTI: "SM",3' \
    --report-to pushed --ready-fd 3 3>ready &
  server=$! processes=$!
  read -r _ <ready || fail "the server"
  ./reports pushed >said &
  processes="$server $!"
  exec 4<said
  read -r line <&4 && [ "$line" = ready ] || fail "the receiver"
  [ "$(./manual "$platform")" = '+4930901820 Anna Müller' ] || fail "the manual's example"
  # Seen once on a busy machine, and not explained yet: the look behind a write that was told as done.
  index=$(./first_write 'Jörg Ωmega' +302105550199 "$platform") || {
    echo "first_write, profile $profile $platform: a second try" >&2
    index=$(./first_write 'Jörg Ωmega' +302105550199 "$platform") || fail "first_write"
  }
  read -r line <&4 && [ "$line" = '+CMTI: "SM",3' ] || fail "the report"
  ./manual_cpp | grep -qx '3 Ελένη Παπαδάκη' || fail "the C++ example"
  ./client | grep -q '^1: +4930901820' || fail "README's client"
  $tools/bin/qalt-pb --platform "$platform" --json list | sed -n '/"index"/ {
    s/.*"index":\([0-9]*\),"name":"\(.*\)","number":"\([^"]*\)".*/\1 \3 \2/; s/\\\(.\)/\1/g; p;}' >wanted
  grep -qx "$index +302105550199 Jörg Ωmega" wanted || fail "what was written"
  ./first_read "$platform" | diff - wanted || fail "first_read"
  kill "$server"
  wait
done
