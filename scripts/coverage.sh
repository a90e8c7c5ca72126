#!/bin/sh
# Lines and branches of the library that the tests reach. The pages in build/coverage/ show each; what
# is not reached is listed on standard output. Calls that return by an exception there are none.
set -eu
CDPATH='' cd "$(dirname "$0")/.."

build=build/coverage
cmake --preset coverage >/dev/null
cmake --build $build -j "$(nproc)" >$build/log 2>&1 ||
  { tail -n 40 $build/log; exit 1; }
find $build -name '*.gcda' -delete
# The built library itself is looked at in a build of its own.
ctest --test-dir $build -E '^(library|consumer)[.]' -j "$(nproc)" --output-on-failure --no-tests=error >$build/tests.log ||
  { tail -n 60 $build/tests.log; exit 1; }

report() {
  gcovr --root . $build/CMakeFiles/qalt_at.dir --exclude-throw-branches \
    --filter 'ATPreprocess/|AtCodec/|codec/|common/|link/|pb/' "$@"
}
report --html-details $build/index.html
report --txt --print-summary
report --txt --branches
