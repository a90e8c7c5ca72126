#!/bin/sh
# Runs a command with its output in a log; the end of it is shown when the command fails.
# usage: quietly.sh LOG COMMAND...
set -eu
log=$1
shift
"$@" >"$log" 2>&1 && exit 0
status=$?
grep -vE '^\[ *[0-9]+%\]|^-- ' "$log" | tail -n 60
# What failed for want of space could not be written down either.
folder=$(dirname "$log")
[ "$(df -Pk "$folder" | awk 'END { print $4 }')" -ge 1024 ] || echo "no space is left in $folder" >&2
echo "FAILED with status $status: $*" >&2
exit $status
