#!/bin/sh
# Everything that CI asks of a change: format, static analysis, the tests, the same under the
# sanitizers and for the targets, the promises of footprint and binary interface.
# The release build comes last, so that its ctest summary closes the output.
set -eu
cd "$(dirname "$0")/.."

jobs=$(nproc)

stage() { printf '\n== %s (%s)\n' "$1" "$(date -u +%H:%M:%S)"; }

configure_and_build() {  # folder, cmake arguments...
  folder=$1
  shift
  cmake -S . -B "build/$folder" -DQALT_WERROR=ON "$@" >/dev/null
  cmake --build "build/$folder" -j "$jobs" -- --no-print-directory >"build/$folder.log" 2>&1 ||
    { tail -n 60 "build/$folder.log"; exit 1; }
}

run_tests() { ctest --test-dir "build/$1" --output-on-failure -j "$jobs" --no-tests=error; }

stage "format"
git ls-files '*.c' '*.cpp' '*.h' '*.hpp' | xargs clang-format-14 --dry-run -Werror

stage "static analysis"
scripts/lint.sh

stage "reference and manual pages"
scripts/docs.sh

# Plain char is signed on x86 and unsigned on ARM: the sanitizer build takes ARM's. Unoptimised it is
# built in half the time, and no check is optimised away.
stage "AddressSanitizer and UndefinedBehaviorSanitizer, unsigned char"
configure_and_build asan -DCMAKE_BUILD_TYPE=Debug -DQALT_SANITIZE=address,undefined \
  -DCMAKE_CXX_FLAGS_DEBUG=-g1 -DCMAKE_C_FLAGS=-funsigned-char -DCMAKE_CXX_FLAGS=-funsigned-char
ASAN_OPTIONS=abort_on_error=1:detect_stack_use_after_return=1 \
  UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 run_tests asan

# The library's threads; the programs' event loops have one.
stage "ThreadSanitizer"
configure_and_build tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQALT_SANITIZE=thread \
  -DQALT_BUILD_PROGRAMS=OFF
TSAN_OPTIONS=halt_on_error=1 run_tests tsan

# The C program that takes every function runs on five C libraries, and measures its stack there.
stage "targets: glibc, uClibc, musl; footprint"
scripts/footprint.sh --check

stage "the suite builds for ARM"
packaging/target/check_target.sh suite-build

stage "binary interface"
scripts/check_abi.sh

stage "release, signed char"
configure_and_build release -DCMAKE_BUILD_TYPE=Release -DCMAKE_C_FLAGS=-fsigned-char \
  -DCMAKE_CXX_FLAGS=-fsigned-char
run_tests release
