#!/bin/sh
# Installs the Debian packages that a goal needs, and only those that are missing.
# usage: scripts/setup.sh build|tests|check|bench|target|fuzz|lint|coverage
set -eu

build="g++ gcc make cmake libasio-dev libcli11-dev nlohmann-json3-dev"
tests="$build git gammu libgtest-dev clang-format-14 binutils pkg-config"
lint="g++ make cmake clang-14 clang-tidy-14 cppcheck"
target="$tests g++-arm-linux-gnueabi qemu-user uclibc-source musl-tools googletest abigail-tools clang-14
  pkg-config dpkg-dev doxygen mandoc"
check="$target $lint"
bench="$build gammu libbenchmark-dev pkg-config libgammu-dev libosmocore-dev"
fuzz="g++ make cmake clang-14 libclang-rt-14-dev"
coverage="$tests gcovr"

case "${1:-}" in
  build) wanted=$build ;;
  tests) wanted=$tests ;;
  check) wanted=$check ;;
  bench) wanted=$bench ;;
  target) wanted=$target ;;
  fuzz) wanted=$fuzz ;;
  lint) wanted=$lint ;;
  coverage) wanted=$coverage ;;
  *) echo "usage: $0 build|tests|check|bench|target|fuzz|lint|coverage" >&2; exit 2 ;;
esac

missing=
for package in $wanted; do
  dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q '^install ok installed$' ||
    missing="$missing $package"
done
[ -n "$missing" ] || exit 0

as_root=
[ "$(id -u)" -eq 0 ] || as_root=sudo
echo "installing:$missing"
export DEBIAN_FRONTEND=noninteractive
$as_root apt-get update -qq
# shellcheck disable=SC2086
$as_root apt-get install -y -qq --no-install-recommends $missing >/dev/null
