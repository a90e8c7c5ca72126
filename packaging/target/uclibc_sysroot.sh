#!/bin/sh
# Builds uClibc for 32-bit little-endian ARM from the distribution's source package, with the
# distribution's cross compiler. usage: uclibc_sysroot.sh OUT; OUT/usr/include and OUT/lib result.
set -eu
out=$(realpath -m "$1")
triplet=arm-linux-gnueabi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$out" "$work/kernel"
tar xf /usr/src/uClibc-ng-*.tar.xz -C "$work" --strip-components=1

# The cross compiler's include folder mixes the kernel's headers with glibc's; these are the kernel's.
for folder in asm asm-generic linux; do
  cp -r "/usr/$triplet/include/$folder" "$work/kernel/"
done

cd "$work"
make -s ARCH=arm defconfig >/dev/null
set_option() {  # name, line
  sed -i "/^# $1 is not set\$/d; /^$1=/d" .config
  echo "$2" >>.config
}
text() { set_option "$1" "$1=\"$2\""; }
on() { for name; do set_option "$name" "$name=y"; done; }
off() { for name; do set_option "$name" "# $name is not set"; done; }

text KERNEL_HEADERS "$work/kernel"
text CROSS_COMPILER_PREFIX "$triplet-"
text RUNTIME_PREFIX /
text DEVEL_PREFIX /usr/
text UCLIBC_EXTRA_CFLAGS -w
on CONFIG_ARM_EABI ARCH_WANTS_LITTLE_ENDIAN UCLIBC_HAS_THREADS_NATIVE
off ARCH_WANTS_BIG_ENDIAN HAS_NO_THREADS UCLIBC_HAS_LINUXTHREADS UCLIBC_HAS_LOCALE
# What the library and its test program use.
on UCLIBC_HAS_NETWORK_SUPPORT UCLIBC_HAS_SOCKET UCLIBC_HAS_IPV4 UCLIBC_HAS_SYSLOG UCLIBC_HAS_LFS \
  UCLIBC_HAS_WCHAR UCLIBC_HAS_CTYPE_TABLES UCLIBC_HAS_REALTIME UCLIBC_HAS_ADVANCED_REALTIME \
  UCLIBC_SUSV3_LEGACY UCLIBC_SUSV4_LEGACY UCLIBC_LINUX_SPECIFIC LDSO_GNU_HASH_SUPPORT
# What the compiler's own defaults disturb; the cache of the host's loader, which the emulator would
# show to this one; and what nothing here uses.
off UCLIBC_BUILD_PIE UCLIBC_HAS_SSP DOSTRIP LDSO_CACHE_SUPPORT LDSO_PRELOAD_FILE_SUPPORT \
  LDSO_LDD_SUPPORT UCLIBC_HAS_CRYPT_IMPL UCLIBC_HAS_CRYPT_STUB UCLIBC_HAS_CRYPT UCLIBC_HAS_IPV6 \
  UCLIBC_HAS_RESOLVER_SUPPORT UCLIBC_HAS_PTY UCLIBC_HAS_LIBUTIL UCLIBC_HAS_REGEX \
  UCLIBC_HAS_FNMATCH UCLIBC_HAS_GLOB UCLIBC_HAS_XATTR UCLIBC_HAS_EPOLL UCLIBC_HAS_PROFILING
# The configuration asks for what is new; an empty answer takes the default.
( yes '' || true ) | make -s ARCH=arm oldconfig >/dev/null 2>&1

# objects_with_syms: the makefile would ask nm three times for each of a thousand objects whether it
# is empty, half of the build's time. Empty members of an archive do no harm.
make ARCH=arm -j "$(nproc)" 'objects_with_syms=$(2)' >"$out/build.log" 2>&1 ||
  { tail -n 30 "$out/build.log"; exit 1; }
make ARCH=arm PREFIX="$out" 'objects_with_syms=$(2)' install >>"$out/build.log" 2>&1
cp -r "$work"/kernel/* "$out/usr/include/"
# The linker's script names its parts by their paths on the target; here they are found by name.
sed -i 's|/usr/lib/||g; s|/lib/||g' "$out/usr/lib/libc.so"
ln -sf ../../lib/libc.so.1 ../../lib/ld-uClibc.so.1 "$out/usr/lib/"
rm -f "$out"/usr/lib/*_pic.a
