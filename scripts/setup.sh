#!/bin/sh
# Installs the Debian packages that goals need, and of those only the missing ones. Build folders that
# were made elsewhere are removed.
# usage: scripts/setup.sh [--only-check] GOAL...
#   GOAL          build demo tests format lint docs target abi matrix fuzz coverage bench deb
#                 distributions; or all
#   --only-check  installs nothing
# Status 0: all is there. 1: something is missing; the last line names it and says what to do.
# 77: a release of a tool that the goal is written for cannot be had here; a line names it. Of several
# goals such ones are named and left out, and the others count.
set -eu
export LC_ALL=C

build="g++ gcc make cmake libasio-dev libcli11-dev nlohmann-json3-dev"
tests="$build libgtest-dev binutils pkg-config gammu"
cross="g++ gcc make cmake binutils g++-arm-linux-gnueabi"

packages_of() {  # goal
  case $1 in
    build | demo) echo "$build" ;;
    tests) echo "$tests" ;;
    format) echo "git clang-format-14" ;;
    lint) echo "$build clang-14 clang-tidy-14 cppcheck shellcheck" ;;
    docs) echo "g++ gcc doxygen mandoc" ;;
    target) echo "$tests $cross qemu-user uclibc-source xz-utils musl-tools googletest" ;;
    abi) echo "$cross abigail-tools" ;;
    matrix) echo "$build binutils clang-14" ;;
    fuzz) echo "$build clang-14 libclang-rt-14-dev" ;;
    coverage) echo "$tests gcovr" ;;
    bench) echo "$tests libbenchmark-dev libgammu-dev libosmocore-dev" ;;
    deb) echo "$build binutils pkg-config dpkg-dev file lintian" ;;
    distributions) echo "git mmdebstrap" ;;
    *) return 2 ;;
  esac
}
all="tests format lint docs target abi matrix fuzz coverage bench deb distributions"

# A package whose tests say themselves that they are skipped without it.
optional=" gammu "

# How a package is known that was not installed as one, and what its authors call it.
known_by() {  # package
  case $1 in
    g++) echo "command:${CXX:-c++} a C++20 compiler" ;;
    gcc) echo "command:${CC:-cc} a C compiler" ;;
    cmake) echo "command:cmake CMake" ;;
    libasio-dev) echo "header:asio.hpp Asio (standalone)" ;;
    libcli11-dev) echo "header:CLI/CLI.hpp CLI11" ;;
    nlohmann-json3-dev) echo "header:nlohmann/json.hpp nlohmann-json" ;;
    libgtest-dev) echo "header:gtest/gtest.h GoogleTest" ;;
    libbenchmark-dev) echo "header:benchmark/benchmark.h Google Benchmark" ;;
    libgammu-dev) echo "header:gammu/gammu.h the library of gammu" ;;
    libosmocore-dev) echo "header:osmocom/gsm/gsm_utils.h libosmogsm" ;;
    binutils) echo "command:objdump binutils" ;;
    abigail-tools) echo "command:abidiff libabigail" ;;
    g++-arm-linux-gnueabi) echo "command:arm-linux-gnueabi-g++ GCC for arm-linux-gnueabi" ;;
    qemu-user) echo "command:qemu-arm QEMU's user-mode emulation of ARM" ;;
    xz-utils) echo "command:xz XZ Utils" ;;
    musl-tools) echo "command:musl-gcc musl" ;;
    googletest) echo "file:/usr/src/googletest GoogleTest's source code" ;;
    uclibc-source | dpkg-dev | libclang-rt-14-dev) echo "nothing: $1" ;;
    *) echo "command:$1 $1" ;;
  esac
}

stands() {  # what it is known by
  case $1 in
    command:*) command -v "${1#command:}" >/dev/null ;;
    file:*) [ -e "${1#file:}" ] ;;
    header:*)
      printf '#if !__has_include(<%s>)\n#error\n#endif\n' "${1#header:}" |
        CPATH=${CPATH:+$CPATH:}$(printf '%s' "${CMAKE_PREFIX_PATH:-}" | sed 's|:|/include:|g; s|$|/include|') \
          ${CXX:-c++} -E -x c++ - >/dev/null 2>&1 ;;
    *) false ;;
  esac
}

# What dpkg knows, a line "NAME STATE" for each package; nothing where there is no dpkg.
dpkg_states=$(dpkg-query -W -f '${Package} ${db:Status-Status}\n' 2>/dev/null || true)

state_of() {  # package: installed, broken or missing
  case "
$dpkg_states
" in
    *"
$1 installed
"* | *"
$1 triggers-"*) echo installed ;;
    *"
$1 half-"* | *"
$1 unpacked
"*) echo broken ;;
    *)
      known=$(known_by "$1")
      if stands "${known%% *}"; then echo installed; else echo missing; fi ;;
  esac
}

say() { echo "scripts/setup.sh: $*" >&2; }
has_apt() { command -v apt-get >/dev/null; }
has_lists() { ls /var/lib/apt/lists/*Packages* >/dev/null 2>&1; }
contains() { case " $1 " in *" $2 "*) true ;; *) false ;; esac; }

# Those packages that cannot be had; none as long as nobody knows. Where there is no apt, those that
# stand for one release of a tool.
unobtainable_of() {  # packages...
  has_apt || { printf '%s\n' "$@" | grep -e '-14' || true; return 0; }
  has_lists || return 0
  known=$(apt-cache policy "$@" | awk '/^[^ ]/ { sub(/:$/, ""); name = $0 }
    /Candidate:/ && $2 != "(none)" { print " " name " " }')
  for package; do
    case $known in *" $package "*) continue ;; esac
    # Another package may stand in for it.
    apt-get install -qq --simulate "$package" >/dev/null 2>&1 || echo "$package"
  done
}

# Sets, for the goals that can be served: missing, what to install; broken, of these, what dpkg has
# not finished. Sets beyond, the other goals and what each lacks, a line for each.
look() {
  missing='' broken='' beyond='' served=
  for goal in $goals; do
    lacks=
    for package in $(packages_of "$goal"); do
      state=$(state_of "$package")
      [ "$state" != installed ] || continue
      lacks="$lacks $package"
      [ "$state" != broken ] || broken="$broken $package"
    done
    # shellcheck disable=SC2086
    without=$([ -z "$lacks" ] || unobtainable_of $lacks)
    needed=
    for package in $without; do contains "$optional" "$package" || needed="$needed $package"; done
    [ -z "$needed" ] || { beyond="$beyond$goal:$needed
"; continue; }
    served=yes
    for package in $lacks; do
      contains "$without" "$package" || contains "$missing" "$package" || missing="$missing $package"
    done
  done
}

# Ends with what is missing, in one line, unless it is only what its tests are skipped without.
stop_for_missing() {  # [what happened]
  required='' names=''
  for package in $missing; do
    contains "$optional" "$package" && continue
    known=$(known_by "$package")
    required=yes names="${names:+$names, }${known#* }"
  done
  [ -n "$required" ] || { say "missing:$missing; what needs it is skipped"; exit 0; }
  has_apt || { say "missing: $names"; exit 1; }
  [ -z "$broken" ] || say "dpkg has not finished$broken: dpkg --configure -a may do it"
  say "${1:-packages are missing}; as root: $install$missing"
  exit 1
}

"$(dirname "$0")/fresh_build_folders.sh"

only_check=
[ "${1:-}" != --only-check ] || { only_check=yes; shift; }
[ $# -ne 0 ] || set -- none
goals=$*
[ "$goals" != all ] || goals=$all
for goal in $goals; do
  packages_of "$goal" >/dev/null || { sed -n 's/^# usage: /usage: /p; s/^#   /  /p' "$0" >&2; exit 2; }
done

finish() {
  system=$(sed -n 's/^PRETTY_NAME="\(.*\)"$/\1/p' /etc/os-release 2>/dev/null || true)
  printf '%s' "$beyond" | while IFS= read -r line; do
    say "left out: ${line%%:*}, which needs${line#*:}: not to be had on ${system:-this system}"
  done
  [ -n "$served" ] || exit 77
  exit 0
}

look
[ -n "$missing$beyond" ] || exit 0
has_apt || { [ -z "$missing" ] || stop_for_missing; finish; }

install="apt-get install --no-install-recommends"
has_lists || install="apt-get update && $install"
if [ -n "$only_check" ]; then
  [ -z "$missing" ] || stop_for_missing
  finish
fi

# Who is not root asks sudo, which may ask in its turn only where somebody can answer.
may_use_sudo() {
  as_root=sudo
  [ -t 0 ] && [ -t 2 ] || as_root="sudo -n"
  command -v sudo >/dev/null && $as_root true 2>/dev/null
}
as_root=
if [ "$(id -u)" -ne 0 ] && ! may_use_sudo; then
  [ -z "$missing" ] || stop_for_missing
  finish
fi

log=$(mktemp)
trap 'rm -f "$log"' EXIT
apt() { $as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -o DPkg::Lock::Timeout=120 "$@" >>"$log" 2>&1; }

# One source that fails does not end it: what counts is whether the packages come.
updated=
update() { updated=yes; apt update || true; look; }
# shellcheck disable=SC2086
install_missing() {
  apt install -y --no-install-recommends --no-remove $missing
  dpkg_states=$(dpkg-query -W -f '${Package} ${db:Status-Status}\n')
  look
  [ -z "$missing" ]
}

{ has_lists && [ -z "$beyond" ]; } || update
[ -n "$missing" ] || finish
say "installing:$missing"
install_missing && finish
# The lists may name what the archive no longer has.
[ -n "$updated" ] || { update; install_missing && finish; }
if grep -qE '^(E|W|Err):' "$log"; then grep -E '^(E|W|Err):' "$log" | sort -u; else cat "$log"; fi |
  tail -n 12 >&2
stop_for_missing "apt-get could not install all"
