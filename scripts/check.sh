#!/bin/sh
# The tests of the release build, warnings being errors: what `make check` runs. The last line has
# the counts; in front of it stands why a test was skipped.
set -eu
CDPATH='' cd "$(dirname "$0")/.."
build=build/check
# What would leave tests out.
unset GTEST_FILTER GTEST_TOTAL_SHARDS GTEST_SHARD_INDEX
mkdir -p $build

scripts/quietly.sh $build/configure.log cmake --preset check
echo "building (log: $build/build.log)"
scripts/quietly.sh $build/build.log cmake --build $build -j "$(nproc)"

failed=0
ctest --preset check -j "$(nproc)" >$build/tests.log 2>&1 ||
  failed=$?
cat $build/tests.log

# ctest lists the skipped ones as "	  3 - NAME (Skipped)"; what they said is in its own log.
sed -n 's/^[[:space:]]*[0-9]* - \(.*\) (Skipped)$/\1/p' $build/tests.log >$build/skipped
while read -r name; do
  awk -v wanted="$name" '
    $2 == "Test:" { here = substr($0, index($0, "Test: ") + 6) == wanted; reason = "for no reason"; next }
    !here { next }
    /: Skipped$/ { told = 1; next }
    /^(-+|Output:|\[.*|Command: .*|Directory: .*)?$/ || /^".*start time:/ { next }
    /^<end of output>/ { print "skipped: " wanted ": " reason; exit }
    told != 2 { reason = $0; if (told) told = 2 }' $build/Testing/Temporary/LastTest.log
done <$build/skipped

awk -v skipped="$(wc -l <$build/skipped)" '
  /^[0-9]+% tests passed, [0-9]+ tests? failed out of [0-9]+$/ { failed = $4; all = $NF }
  END { printf "check: %d passed, %d failed, %d skipped\n", all - failed - skipped, failed, skipped
    exit all - failed == skipped }' $build/tests.log || failed=1
exit $failed
