#!/bin/sh
# Compares the binary interface with the baselines in packaging/abi/, for x86-64 and ARM.
# usage: check_abi.sh            fails when anything changed
#        check_abi.sh --accept   writes new baselines; CONTRIBUTING.md says when that is right
set -eu
CDPATH='' cd "$(dirname "$0")/.."
case ${1:-} in '' | --accept) ;; *) sed -n 's/^# //p' "$0" >&2; exit 2 ;; esac
failed=0
for architecture in x86_64 arm; do
  folder=build/abi-$architecture
  [ $architecture = x86_64 ] || packaging/target/toolchains.sh arm-glibc >/dev/null
  cmake --preset abi-$architecture >/dev/null
  cmake --build "$folder" -j "$(nproc)" >"$folder.log" 2>&1 || { tail -n 40 "$folder.log"; exit 1; }
  scripts/check_symbols.sh "$folder/libqalt_at.so" || failed=1
  baseline=packaging/abi/$architecture.abi
  if [ "${1:-}" = --accept ]; then
    abidw --exported-interfaces-only --no-show-locs --no-corpus-path --no-comp-dir-path \
      --type-id-style hash --out-file "$baseline" "$folder/libqalt_at.so"
  elif ! abidiff "$baseline" "$folder/libqalt_at.so" >"$folder.diff" 2>&1; then
    cat "$folder.diff"
    failed=1
  fi
done
[ $failed -eq 0 ] && echo "the binary interface is that of packaging/abi/"
exit $failed
