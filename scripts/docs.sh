#!/bin/sh
# The reference of the public headers as HTML, in build/docs/html, and the manual pages' check. A
# warning is an error, and so is a public function without a comment.
set -eu
CDPATH='' cd "$(dirname "$0")/.."
folder=build/docs
mkdir -p $folder
version=$(sed -n 's/^#define QALT_AT_VERSION_[A-Z]* //p' include/qalt_at/version.h | paste -s -d .)
{ cat docs/Doxyfile; echo "PROJECT_NUMBER = $version"; echo "OUTPUT_DIRECTORY = $folder"; } |
  doxygen -

# Declarations follow a comment, or one another below a comment.
failed=0
for header in include/qalt_at/*.h; do
  awk '/^QALT_API|^extern QALT_API/ && !described { print FILENAME ": " $0; bad = 1 }
    { described = /\*\/ *$/ || (described && (/^(extern )?QALT_API/ || /^ +/)) } END { exit bad }' \
    "$header" || failed=1
done

mandoc -T lint packaging/man/*.[138] 2>&1 | grep -vE 'manual not found|mandoc\.db' && failed=1
# Their examples compile.
example() {  # manual page
  sed -n '/^\.Sh EXAMPLES/,$p' "$1" | sed -n '/^\.Bd/,/^\.Ed/p' | grep -v '^\.' | sed 's/\\e/\\/g'
}
example packaging/man/qalt_at.3 >$folder/example.c
cc -std=c99 -pedantic -Wall -Wextra -Werror -Iinclude -fsyntax-only $folder/example.c || failed=1
example packaging/man/qalt_at_phonebook.3 >$folder/example.cpp
c++ -std=c++17 -pedantic -Wall -Wextra -Werror -fno-exceptions -fno-rtti -Iinclude -fsyntax-only \
  $folder/example.cpp || failed=1
# The manual page names every function and datum that a client calls first: those with a QL_ name.
for name in $(sed -n 's/^ *\(QL_[A-Za-z0-9]*\|Client[A-Za-z]*\|SetClient[A-Za-z]*\|QALT_AT_Version\);$/\1/p' \
    cmake/libqalt_at.map); do
  grep -q "$name" packaging/man/qalt_at.3 || { echo "packaging/man/qalt_at.3 does not name $name"; failed=1; }
done
[ $failed -ne 0 ] || echo "reference: $folder/html/index.html"
exit $failed
