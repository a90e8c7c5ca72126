#!/bin/sh
# Fetches the distribution's musl for ARM (armel) in an apt state of its own, so that the machine's
# stays as it is. usage: musl_sysroot.sh OUT; OUT/usr/include and OUT/lib result.
set -eu
out=$(realpath -m "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/state/lists/partial" "$work/cache/archives/partial" "$out/lib" "$out/usr"
: >"$work/status"
archive=$("$(dirname "$0")/../../scripts/debian_archive.sh")
release=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
keys=/usr/share/keyrings/debian-archive-keyring.gpg
echo "deb [signed-by=$keys] $archive $release main" >"$work/sources.list"
apt() {
  apt-get -qq -o Dir::Etc::sourcelist="$work/sources.list" -o Dir::Etc::sourceparts=/dev/null \
    -o Dir::State="$work/state" -o Dir::State::status="$work/status" -o Dir::Cache="$work/cache" \
    -o APT::Architecture=armel -o APT::Architectures=armel -o APT::Sandbox::User=root "$@"
}
apt update && (cd "$work" && apt download musl musl-dev) ||
  { echo "no musl for armel from $archive, release $release" >&2; exit 1; }
for package in "$work"/*.deb; do dpkg -x "$package" "$work/unpacked"; done
cp -r "$work/unpacked/usr/include/arm-linux-musleabi" "$out/usr/include"
cp -r "$work/unpacked/usr/lib/arm-linux-musleabi" "$out/usr/lib"
cp "$work"/unpacked/lib/arm-linux-musleabi/libc.so "$out/lib/ld-musl-arm.so.1"
ln -sf ../../lib/ld-musl-arm.so.1 "$out/usr/lib/libc.so"
