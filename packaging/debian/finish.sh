#!/bin/sh
# Gives the packages of CPack what Debian asks for and CPack does not know: a changelog, compressed
# manuals, the loader's cache by trigger, the list of symbols, several architectures side by side.
# usage: finish.sh FOLDER, where they are; SOURCE_DATE_EPOCH is the date in the changelog
set -eu
export LC_ALL=C
source=$(realpath "$(dirname "$0")/../..")
version=$(sed -n 's/^#define QALT_AT_VERSION_[A-Z]* //p' "$source/include/qalt_at/version.h" | paste -s -d .)
major=${version%%.*}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The newest section of the project's own.
changelog() {
  printf 'qalt-at (%s) unstable; urgency=medium\n\n' "$version"
  awk '/^## / { ++section } section != 1 { next }
    sub(/^- /, "") { text[++n] = $0 } /^  / { sub(/^ /, ""); text[n] = text[n] $0 }
    END { for (i = 1; i <= n; ++i) print text[i] }' "$source/CHANGELOG.md" | while read -r entry; do
    echo "$entry" | fold -s -w 74 | sed 's/ *$//; 1s/^/  * /; 2,$s/^/    /'
  done
  printf '\n -- the qalt_at developers <qalt@localhost>  %s\n' "$(date -uR -d "@$SOURCE_DATE_EPOCH")"
}

# Each name with the version it came with, as the version script has them.
symbols() {
  printf 'libqalt_at.so.%s libqalt-at%s #MINVER#\n' "$major" "$major"
  echo '* Build-Depends-Package: libqalt-at-dev'
  awk '/^QALT_AT_/ { node = $1; print " " node "@" node, "'"$major"'.0.0" }
    /# since / { since = $3 } /local:/ { exit }
    /;$/ { sub(/;/, "", $1); print " " $1 "@" node, since }' "$source/cmake/libqalt_at.map" | sort
}

finish() {  # package
  root=$work/$(basename "$1")
  dpkg-deb -R "$1" "$root"
  name=$(dpkg-deb -f "$1" Package)
  case $name in
    *-dbgsym)
      find "$root" -name '*.debug' -exec chmod 644 {} +
      mkdir -p "$root/usr/share/doc"
      ln -s "${name%-dbgsym}" "$root/usr/share/doc/$name"
      sed -i '/^Package-Type:/d' "$root/DEBIAN/control" ;;
    *)
      find "$root/usr/share/man" -type f -exec gzip -9n {} + 2>/dev/null || true
      mkdir -p "$root/usr/share/doc/$name"
      changelog | gzip -9n >"$root/usr/share/doc/$name/changelog.gz" ;;
  esac
  case $name in
    libqalt-at"$major")
      rm "$root/DEBIAN/postinst" "$root/DEBIAN/postrm"
      echo 'activate-noawait ldconfig' >"$root/DEBIAN/triggers"
      symbols >"$root/DEBIAN/symbols" ;;
  esac
  case $name in
    *-dbgsym) ;;
    *) find "$root/usr" -type f \( -name '*.a' -o -name '*.so.*' -o -path '*bin/*' \) \
      -exec strip --strip-debug --enable-deterministic-archives --remove-section=.comment {} + ;;
  esac
  # The programs and what belongs to them are one for the whole system.
  case $name in lib*) sed -i '/^Architecture:/a Multi-Arch: same' "$root/DEBIAN/control" ;; esac
  (cd "$root" && find usr -type f -exec md5sum {} + | sort -k 2) >"$root/DEBIAN/md5sums"
  sed -i "s/^Installed-Size:.*/Installed-Size: $(du -k --apparent-size -s "$root/usr" | cut -f 1)/" \
    "$root/DEBIAN/control"
  rm "$1"
  dpkg-deb --root-owner-group -b "$root" "${1%.*}.deb" >/dev/null
}

for package in "$1"/*.deb "$1"/*.ddeb; do
  [ ! -e "$package" ] || finish "$package"
done
