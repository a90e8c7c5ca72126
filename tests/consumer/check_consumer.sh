#!/bin/sh
# Installs the library into a staging folder, moves it, and builds clients against it, as find_package
# finds a tree anywhere and pkg-config one in a sysroot; and once more with the sources as a part of the
# client's own project. The programs of the documents are built, too, and run against a server.
# usage: check_consumer.sh BUILD_FOLDER SOURCE_FOLDER CMAKE CC CXX
set -eu
export LC_ALL=C
build=$1 source=$2 cmake=$3 cc=$4 cxx=$5
project=$(realpath "$(dirname "$0")")/project
# In a name without blanks: pkg-config loses them in a sysroot's.
folder=$(TMPDIR=/tmp mktemp -d)
trap 'rm -rf "$folder"' EXIT
fail() { echo "FAILED: $1"; exit 1; }

umask 077
for component in library development tools; do
  DESTDIR="$folder/stage" "$cmake" --install "$build" --prefix /opt/qalt --component $component
done >/dev/null
mv "$folder/stage" "$folder/sysroot"
root=$folder/sysroot/opt/qalt
! find "$root" ! -perm -004 | grep . || fail "not to be read by others"
description=$(find "$root" -name qalt_at.pc)
lib=${description%/pkgconfig/*}

# What the tree holds.
version=$(sed -n 's/^Version: //p' "$description")
[ "$(find "$root/include" -name config.h | wc -l)" -eq 1 ] || fail "headers"
if [ -e "$lib/libqalt_at.so" ]; then
  objdump -p "$lib/libqalt_at.so" >"$folder/dump"
  grep -q "SONAME *libqalt_at.so.${version%%.*}$" "$folder/dump" || fail "SONAME"
  ! grep -qE 'R(UN)?PATH' "$folder/dump" || fail "a run path"
fi
! grep -rlF "$build" "$root" || fail "the build folder's name in the installed tree"

says() {  # program
  [ "$(LD_LIBRARY_PATH=$lib "$1")" = "$version 416E6E61" ] || fail "$1"
}
needs_c_only() {
  ! objdump -p "$1" | grep NEEDED | grep -qE 'stdc|gcc_s' || fail "$1 needs the C++ runtime"
}

# C99 by pkg-config, shared and static.
export PKG_CONFIG_PATH="${description%/*}" PKG_CONFIG_SYSROOT_DIR="$folder/sysroot"
grep -qx 'prefix=/opt/qalt' "$description" || fail "the prefix in qalt_at.pc"
for way in shared static; do
  [ $way = static ] || [ -e "$lib/libqalt_at.so" ] || continue
  [ $way = shared ] || [ -e "$lib/libqalt_at.a" ] || continue
  option=$([ $way = static ] && echo --static || true)
  # shellcheck disable=SC2046,SC2086
  "$cc" -std=c99 -pedantic -Wall -Wextra -Werror $([ $way = static ] && echo -static) \
    "$project/client.c" -o "$folder/$way" $(pkg-config $option --cflags --libs qalt_at) ||
    fail "C, $way"
  says "$folder/$way"
done

# C and C++ by find_package, and with the sources.
project() {  # folder, cmake arguments...
  folder_of=$folder/$1
  shift
  "$cmake" -S "$project" -B "$folder_of" -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" "$@" \
    >"$folder/log" 2>&1 && "$cmake" --build "$folder_of" >>"$folder/log" 2>&1 ||
    { cat "$folder/log"; fail "project $*"; }
  for program in "$folder_of"/client_*; do says "$program"; done
}
project installed -DCMAKE_PREFIX_PATH="$root"
for program in "$folder"/installed/client_c*; do needs_c_only "$program"; done
project guest -DSOURCES="$source"
DESTDIR="$folder/nothing" "$cmake" --install "$folder/guest" >/dev/null
[ ! -e "$folder/nothing" ] || fail "the guest installs itself"

# Another major version is another library.
! "$cmake" -S "$project" -B "$folder/other" -DCMAKE_PREFIX_PATH="$root" \
  -DWANTED="$((${version%%.*} + 1)).0" >/dev/null 2>&1 || fail "a wrong version was accepted"

# The folder of the sources keeps its Makefile.
mkdir "$folder/sources"
cp -r "$source/cmake" "$source/CMakeLists.txt" "$source/Makefile" "$folder/sources"
! "$cmake" -S "$folder/sources" -B "$folder/sources" >"$folder/log" 2>&1 &&
  grep -q 'no build folder' "$folder/log" && cmp -s "$source/Makefile" "$folder/sources/Makefile" ||
  fail "built among the sources"

# The programs of the documents: the first line has the name; a manual's are called "manual".
programs=$folder/programs
mkdir "$programs"
awk -v to="$programs/" '/^```/ {file = ""; fenced = !fenced; first = fenced; next}
  first {first = 0; if (match($0, /^\/\* [a-z_]+\.[ch]/)) file = to substr($0, 4, RLENGTH - 3)}
  file {print >file}' "$source/README.md" "$source/docs/INTEGRATING.md"
awk -v to="$programs/manual" 'FNR == 1 {file = to (NR == 1 ? ".c" : "_cpp.cpp")}
  /^\.Sh/ {examples = /EXAMPLES/} /^\.Ed/ {code = 0}
  examples && code {gsub(/\\e/, "\\"); print >file} /^\.Bd/ {code = 1}' \
  "$source/packaging/man/qalt_at.3" "$source/packaging/man/qalt_at_phonebook.3"
[ -e "$lib/libqalt_at.so" ] && [ -e "$root/sbin/qalt-atd" ] || exit 0
for name in client first_read first_write reports manual manual_cpp; do
  compiler="$cc -std=c99 -pedantic" file=$programs/$name.c
  [ -e "$file" ] || compiler="$cxx -std=c++17" file=$programs/$name.cpp
  # shellcheck disable=SC2046,SC2086
  $compiler -Wall -Wextra -Werror "$file" -o "$programs/$name" \
    $(pkg-config --cflags --libs qalt_at) || fail "$name of the documents"
done

# Where there are no namespaces they take turns in the /tmp that there is.
mv "$folder/sysroot" "$programs/sysroot"
for way in "unshare --mount" "unshare --user --map-root-user --mount" "flock /tmp/qalt_tests.lock"; do
  case $way in unshare*) $way mount --bind "$programs" /tmp 2>/dev/null || continue ;; esac
  $way "$(dirname "$0")/run_programs.sh" "$programs" "sysroot${lib#"$folder/sysroot"}" "$way"
  exit
done
