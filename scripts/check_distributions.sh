#!/bin/sh
# The README's two commands on minimal systems of Debian, as a newcomer has them: only make and git
# are added, and a copy of the tree.
# usage: scripts/check_distributions.sh [--compilers] [RELEASE]..., default bookworm trixie sid
#   --compilers  instead, each gcc from 12 and clang from 14 that the release has: all sources, as
#                C++20 and C++23, without a warning; COMPILERS="g++-15 clang-19" takes only these
#
# The systems, and the packages that were once downloaded, stay in build/distributions; after a week
# a system is made anew. Who is not root needs user namespaces and lines in /etc/subuid, /etc/subgid.
set -eu
CDPATH='' cd "$(dirname "$0")/.."
store=build/distributions

# The system as a tar file. What this machine's apt was told about its archive holds there too.
make_system() {  # release
  tar=$store/$1.tar
  [ -z "$(find "$tar" -mtime -7 2>/dev/null)" ] || return 0
  rm -rf "$store/$1.packages"
  apt-config dump | grep -E '^Acquire::(Check|http|https|Retries)' >"$store/apt.conf" || true
  mmdebstrap --format=tar --variant=minbase --include=make,git --aptopt="$store/apt.conf" "$1" "$tar.new" \
    "$(scripts/debian_archive.sh)"
  mv "$tar.new" "$tar"
}

# Runs a command as root of its own mount and process namespaces.
in_namespaces() {
  if [ "$(id -u)" -eq 0 ]; then
    unshare --mount --pid --fork --kill-child "$@"
  else
    mmdebstrap --unshare-helper unshare --mount --pid --fork --kill-child "$@"
  fi
}

# There: unpacks the system, with the tree in it, and goes on inside.
enter() {  # release, function
  root=$store/$1
  rm -rf "$root"
  mkdir -p "$root" "$root.packages"
  tar -C "$root" --exclude='./dev/*' -xf "$root.tar"
  mkdir -p "$root/src"
  tar -C "$root/src" -xf "$store/tree.tar"
  mount --make-rprivate /
  # A root that is a mount point, as any container has one: the tests make namespaces of their own.
  mount --bind "$root" "$root"
  mount --rbind /dev "$root/dev"
  mount -t proc proc "$root/proc"
  mount --bind "$root.packages" "$root/var/cache/apt/archives"
  cp -L /etc/resolv.conf "$root/etc/"
  exec chroot "$root" /usr/bin/env -i HOME=/root COMPILERS="${COMPILERS:-}" PATH=/usr/sbin:/usr/bin:/sbin:/bin \
    /src/scripts/check_distributions.sh --inside "$2"
}

fail() { echo "FAILED: $1"; exit 1; }

# Inside: what the report is to have stands in lines that begin with "==".
readme_commands() {
  # A user who may install nothing hears it before anything is built; and make alone installs nothing.
  said=$(setpriv --reuid=65534 --regid=65534 --clear-groups make demo 2>&1) && fail "make demo as a user"
  echo "$said" | grep -q 'as root: apt-get' && [ ! -e build ] || fail "make demo as a user said: $said"
  said=$(make 2>&1) && fail "make alone has all that it needs"
  echo "$said" | grep -q 'as root: apt-get' || fail "make alone said: $said"

  for goal in demo check; do
    began=$(date +%s) packages=$(installed | wc -l) size=$(megabytes)
    make $goal || fail "make $goal"
    echo "== make $goal: $(($(date +%s) - began)) s, $(($(installed | wc -l) - packages)) packages" \
      "of $(($(megabytes) - size)) MB"
  done
}
installed() { dpkg-query -W -f '${db:Status-Status} ${Installed-Size}\n' | grep '^installed '; }
megabytes() { installed | awk '{ kilobytes += $2 } END { print int(kilobytes / 1024) }'; }

# The names of a compiler's packages from a release on, such as g++-12.
releases_of() {  # name, least release
  apt-cache pkgnames "$1-" | grep -xE "$(echo "$1" | sed 's/+/\\+/g')-[0-9]+" |
    awk -F- -v least="$2" '$NF >= least' | sort -t- -k2n
}

every_compiler() {
  scripts/setup.sh tests
  compilers=${COMPILERS:-$(releases_of g++ 12) $(releases_of clang 14)}
  # shellcheck disable=SC2086
  DEBIAN_FRONTEND=noninteractive apt-get install -qq --no-install-recommends $compilers >/dev/null
  failed=0
  mkdir -p build
  for compiler in $compilers; do
    c=$(echo "$compiler" | sed 's/^g++/gcc/') cxx=$(echo "$compiler" | sed 's/^clang/clang++/')
    cmake -S . -B "build/$compiler" -DCMAKE_C_COMPILER="$c" -DCMAKE_CXX_COMPILER="$cxx" \
      -DBUILD_TESTING=ON -DQALT_WERROR=ON -DQALT_BUILD_SOAK=ON -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON \
      -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >build/log 2>&1 || { cat build/log; fail "$compiler"; }
    for standard in 20 23; do
      # Each command of the build, up to where code would be made.
      sed -n 's/^ *"command": "\(.*\)",*$/\1/p' "build/$compiler/compile_commands.json" |
        sed "s/\\\\\\(.\\)/\\1/g; s/ -o [^ ]* -c / -fsyntax-only /; s/ -std=[a-z+]*20 / -std=c++$standard /" |
        sort -u >"build/$compiler/commands"
      if xargs -P "$(nproc)" -d '\n' -n 1 sh -c <"build/$compiler/commands"; then
        echo "== $cxx, C++$standard: $(wc -l <"build/$compiler/commands") sources without a warning"
      else
        echo "== $cxx, C++$standard: FAILED"
        failed=1
      fi
    done
  done
  exit $failed
}

case ${1:-} in
  --release) make_system "$2"; in_namespaces scripts/check_distributions.sh --enter "$2" "$3"; exit ;;
  --enter) enter "$2" "$3" ;;
  --inside) "$2"; exit ;;
esac

work=readme_commands
[ "${1:-}" != --compilers ] || { work=every_compiler; shift; }
[ $# -ne 0 ] || set -- bookworm trixie sid
in_namespaces true 2>/dev/null || { echo "skipped: no mount namespaces here" >&2; exit 77; }
mkdir -p "$store"
# The tree as it stands, without what git ignores.
scripts/tree_files.sh | tar --null -T - -cf "$store/tree.tar"
failed=0
for release; do
  echo "== $release"
  log=$store/$release.$work.log
  if scripts/check_distributions.sh --release "$release" "$work" >"$log" 2>&1 </dev/null; then
    sed -n 's/^==/  /p' "$log"
  else
    tail -n 60 "$log"
    echo "FAILED: $release; all of it is in $log"
    failed=1
  fi
done
exit $failed
