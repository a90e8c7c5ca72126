#!/bin/sh
# Prints the address of the Debian archive that this machine's apt uses.
set -eu
sources=$(apt-get indextargets --format '$(LABEL) $(REPO_URI)' 'Identifier: Packages' 2>/dev/null || true)
# Before the first apt-get update apt knows no labels.
archive=$(echo "$sources" | sed -n 's/^Debian //p' | head -n 1)
[ -n "$archive" ] || archive=$(echo "$sources" | grep -oE '[^ ]+/debian/?$' | head -n 1) || true
[ -n "$archive" ] || { echo "apt has no Debian archive here" >&2; exit 1; }
echo "${archive%/}"
