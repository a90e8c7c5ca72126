#!/bin/sh
# Makes gcc and g++ for another C library out of the distribution's, and a CMake toolchain file.
# usage: make_compiler.sh OUT TRIPLET INCLUDE LIB LOADER [EMULATOR...]
#   OUT       receives bin/cc, bin/c++, link.specs and toolchain.cmake
#   TRIPLET   of the distribution's compiler, such as arm-linux-gnueabi
#   INCLUDE   the C library's headers; LIB its start files, libc.so and libc.a
#   LOADER    path of the program loader on the target
#   EMULATOR  command that runs a target program here
set -eu
out=$(realpath -m "$1") triplet=$2 include=$3 lib=$4 loader=$5
shift 5
shim=$(realpath "$(dirname "$0")/shim")
mkdir -p "$out/bin"

# The library folder comes first of all: behind it the linker looks into the compiler's own.
cat >"$out/link.specs" <<SPECS
*link:
-L$lib %{static:-Bstatic} %{shared:-shared} %{rdynamic:-export-dynamic} %{!static:%{!shared:-dynamic-linker $loader}} --eh-frame-hdr --build-id --hash-style=both

*startfile:
%{!shared:%{static|no-pie:$lib/crt1.o;:$lib/Scrt1.o}} $lib/crti.o %{static:crtbeginT.o%s;shared|!no-pie:crtbeginS.o%s;:crtbegin.o%s}

*endfile:
%{static|no-pie:crtend.o%s;:crtendS.o%s} $lib/crtn.o

*lib:
-lc

*libgcc:
-lgcc
SPECS

gcc_headers=$("$triplet-gcc" -print-file-name=include)
cxx_headers=$(echo | "$triplet-g++" -x c++ -E -v - 2>&1 | grep -E '^ .*/c\+\+/[0-9]+' |
  sed 's/^ / -isystem /' | tr -d '\n')
for language in cc c++; do
  compiler=$triplet-gcc cxx=
  [ "$language" = cc ] || { compiler=$triplet-g++; cxx="-nostdinc++ -isystem $shim$cxx_headers"; }
  cat >"$out/bin/$language" <<WRAPPER
#!/bin/sh
exec $compiler -specs=$out/link.specs -nostdinc $cxx -isystem $include -isystem $gcc_headers "\$@"
WRAPPER
  chmod +x "$out/bin/$language"
done

processor=${triplet%%-*}
emulator=$(printf '%s;' "$@")
cat >"$out/toolchain.cmake" <<TOOLCHAIN
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR $processor)
set(CMAKE_C_COMPILER $out/bin/cc)
set(CMAKE_CXX_COMPILER $out/bin/c++)
set(CMAKE_CROSSCOMPILING_EMULATOR "${emulator%;}")
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
TOOLCHAIN
