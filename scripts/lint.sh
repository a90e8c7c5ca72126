#!/bin/sh
# Three static analysers over the library: clang-tidy, cppcheck and GCC's -fanalyzer. Any finding
# fails.
set -eu
cd "$(dirname "$0")/.."

build=build/lint
sources=$(ls link/*.cpp ATPreprocess/*.cpp AtCodec/*.cpp pb/*.cpp codec/*.cpp common/*.cpp)

# One file a run: its valist checker carries its state from one file to the next.
echo "== clang-tidy"
cmake --preset lint >/dev/null
# shellcheck disable=SC2086
echo $sources | xargs -n 1 -P "$(nproc)" clang-tidy-14 -p "$build" --quiet 2>"$build/tidy.log" ||
  { cat "$build/tidy.log" >&2; exit 1; }

# It does not know the logging macro's __VA_OPT__, nor the immediately called lambdas of one table.
# Not asked for: the interface is as it is (constParameter), loops are a matter of taste
# (useStlAlgorithm), a buffer is not cleared that is written anyway (uninitMemberVar,
# legacyUninitvar), and an array of pointers is not one of integers (CastIntegerToAddressAtReturn).
echo "== cppcheck"
# shellcheck disable=SC2086
cppcheck --quiet --error-exitcode=1 --std=c++20 --enable=warning,style,performance,portability \
  -j "$(nproc)" -I . -I include -DQALT_COMMON_LOG_H_ \
  '-DQALT_LOG_DEBUG(...)=syslog(7, __VA_ARGS__)' '-DQALT_LOG_ERROR(...)=syslog(3, __VA_ARGS__)' \
  --suppress=missingIncludeSystem --suppress=constParameter --suppress=useStlAlgorithm \
  --suppress=uninitMemberVar:AtCodec/parameter_line.cpp \
  --suppress=legacyUninitvar:AtCodec/PB_storage_commands.cpp \
  --suppress=CastIntegerToAddressAtReturn:pb/answer_processors.cpp \
  --suppress=syntaxError:codec/tables_alpha_identifier.cpp $sources

echo "== gcc -fanalyzer"
for source in $sources; do
  g++ -std=c++20 -O1 -fno-exceptions -fno-rtti -fanalyzer -Wall -Wextra -Werror -I . -I include \
    -c "$source" -o $build/analysed.o
done
echo "no findings"
