#!/bin/sh
# Static analysers: clang-tidy and cppcheck over the library and the programs, GCC's -fanalyzer over
# the library, shellcheck over the scripts. Any finding fails.
set -eu
CDPATH='' cd "$(dirname "$0")/.."

library=$(ls link/*.cpp ATPreprocess/*.cpp AtCodec/*.cpp pb/*.cpp codec/*.cpp common/*.cpp)
programs=$(ls sockets/*.cpp at/*.cpp sim/*.cpp server/*.cpp cli/*.cpp)

# clang-tidy over files, one a process and one process a core.
tidy() {  # files, arguments of clang-tidy...
  files=$1
  shift
  # shellcheck disable=SC2086
  printf '%s\n' $files | xargs -P "$(nproc)" -I '{}' clang-tidy-14 --quiet '{}' "$@" 2>build/lint/tidy.log ||
    { cat build/lint/tidy.log >&2; exit 1; }
}

# One file a run: its valist checker carries its state from one file to the next.
echo "== clang-tidy, library"
cmake --preset lint >/dev/null
tidy "$library" -p build/lint

# The programs' sources are a small part of what they include, so those of a folder are looked at as
# one. Not asked for: that a source is included (that is how), whether a message could be printed or
# a transcript be written (nothing depends on it), and what main lets through (it ends the program).
echo "== clang-tidy, programs"
for folder in sockets at sim server cli; do
  echo "$programs" | grep "^$folder/" | grep -v asio_impl | sed 's/.*/#include "&"/' >build/lint/$folder.cpp
done
tidy "build/lint/server.cpp build/lint/cli.cpp build/lint/sim.cpp build/lint/at.cpp \
  build/lint/sockets.cpp" \
  --checks=-bugprone-suspicious-include,-cert-err33-c,-bugprone-exception-escape -- -std=c++20 \
  -I . -I include -DASIO_STANDALONE '-DQALT_VERSION="x"'

# It does not know the logging macro's __VA_OPT__, nor the immediately called lambdas of one table.
# Not asked for: the interface is as it is (constParameter), loops are a matter of taste
# (useStlAlgorithm), a value is a result and so is an error (noExplicitConstructor), rows of tables are
# read through lambdas and bindings that it does not follow (unusedStructMember), a handler changes what
# it takes for constant (knownConditionTrueFalse), a part of a parameter is moved on (passedByValue), a
# buffer is not cleared that is written anyway (uninitMemberVar, legacyUninitvar), and an array of
# pointers is not one of integers (CastIntegerToAddressAtReturn).
echo "== cppcheck"
# shellcheck disable=SC2086
cppcheck --quiet --error-exitcode=1 --std=c++20 --enable=warning,style,performance,portability \
  -j "$(nproc)" -I . -I include -DQALT_COMMON_LOG_H_ \
  '-DQALT_LOG_DEBUG(...)=syslog(7, __VA_ARGS__)' '-DQALT_LOG_ERROR(...)=syslog(3, __VA_ARGS__)' \
  --suppress=missingIncludeSystem --suppress=constParameter --suppress=useStlAlgorithm \
  --suppress=noExplicitConstructor --suppress=unusedStructMember \
  --suppress=knownConditionTrueFalse:sim/player.cpp --suppress=passedByValue:sim/modem.cpp \
  --suppress=uninitMemberVar:AtCodec/parameter_line.cpp \
  --suppress=legacyUninitvar:AtCodec/PB_storage_commands.cpp \
  --suppress=CastIntegerToAddressAtReturn:pb/answer_processors.cpp \
  --suppress=syntaxError:codec/tables_alpha_identifier.cpp $library $programs

# Made for C, it follows the library, which is C in that respect. On the programs it takes minutes a
# folder, gets lost in the standard library and has found nothing but a leak that is none.
echo "== gcc -fanalyzer"
# Its output goes into the build folder: a compiler that is broken off removes what it writes to, were
# it /dev/null.
echo "$library" | tr ' ' '\n' | xargs -I '{}' -P "$(nproc)" sh -c 'g++ -std=c++20 -O1 -fno-exceptions \
  -fno-rtti -fanalyzer -Wall -Wextra -Werror -I . -I include -S "$1" -o "build/lint/${1##*/}.s"' - '{}'

# What it only remarks on is a matter of taste; lists of names are meant to be split (SC2046).
echo "== shellcheck"
# shellcheck disable=SC2046
shellcheck --severity=warning --exclude=SC2046 \
  $(find .ci docs packaging scripts tests -type f -exec grep -lE '^#!/bin/(ba)?sh' {} +)
shellcheck --severity=error --shell=bash packaging/completion/qalt-pb.bash
echo "no findings"
