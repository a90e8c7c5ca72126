#!/bin/sh
# Makes what is needed to build for one target and prints the path of its CMake toolchain file.
# usage: toolchains.sh arm-glibc|arm-uclibc|arm-musl|musl
# A sysroot is kept under build/target, named after the script that makes it: a changed script makes
# a new one.
set -eu
here=$(realpath "$(dirname "$0")")
store=$here/../../build/target
mkdir -p "$store"
store=$(realpath "$store")
arm='arm-linux-gnueabi'

# Makes a sysroot unless it is there; its folder's name appears only when it is whole.
sysroot() {  # script
  folder=$store/$(basename "$1" _sysroot.sh)-$(sha256sum "$1" | cut -c 1-12)
  if [ ! -d "$folder" ]; then
    rm -rf "$folder.new"
    "$1" "$folder.new" >&2
    mv "$folder.new" "$folder"
  fi
  echo "$folder"
}

# The C library, its headers, libraries, loader and the program that runs the target's programs.
case ${1:-} in
  arm-glibc)
    out=$store/$1
    mkdir -p "$out"
    cat >"$out/toolchain.cmake" <<TOOLCHAIN
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER $arm-gcc)
set(CMAKE_CXX_COMPILER $arm-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR "qemu-arm;-L;/usr/$arm")
list(APPEND CMAKE_PREFIX_PATH $out/googletest)
TOOLCHAIN
    ;;
  arm-uclibc)
    out=$store/$1
    root=$(sysroot "$here/uclibc_sysroot.sh")
    "$here/make_compiler.sh" "$out" $arm "$root/usr/include" "$root/usr/lib" /lib/ld-uClibc.so.1 \
      qemu-arm -L "$root"
    ;;
  arm-musl)
    out=$store/$1
    root=$(sysroot "$here/musl_sysroot.sh")
    "$here/make_compiler.sh" "$out" $arm "$root/usr/include" "$root/usr/lib" /lib/ld-musl-arm.so.1 \
      qemu-arm -L "$root"
    ;;
  musl)
    out=$store/$1
    machine=$(uname -m)-linux-musl
    "$here/make_compiler.sh" "$out" "$(uname -m)-linux-gnu" "/usr/include/$machine" \
      "/usr/lib/$machine" "/lib/ld-musl-$(uname -m).so.1"
    ;;
  *)
    echo "usage: $0 arm-glibc|arm-uclibc|arm-musl|musl" >&2
    exit 2
    ;;
esac
echo "$out/toolchain.cmake"
