#!/bin/sh
# Shows the library at work against qalt-atd with its simulated modem.
# usage: scripts/demo.sh BUILD_FOLDER [profile]
set -eu

build=$1
profile=${2:-standard}
folder=$(mktemp -d)
server=
clean_up() {
  [ -z "$server" ] || kill "$server" 2>/dev/null || true
  rm -rf "$folder"
}
trap clean_up EXIT
trap 'exit 130' INT TERM

# The server says "ready" through the pipe once it listens; it refuses to start where another AT
# server answers.
mkfifo "$folder/ready"
"$build/server/qalt-atd" --modem sim --sim-profile "$profile" --ready-fd 3 \
  --report-to "$folder/reports" --sim-report '+CMTI: "SM",3' 3>"$folder/ready" &
server=$!
read -r _ <"$folder/ready" || { echo "the AT server did not start" >&2; exit 1; }

"$build/demo/phonebook_demo" "$folder/reports"
