#!/bin/sh
# Tests the packages that packaging/linux.sh has built.
#
#   linux_test.sh PACKAGES WORK [PART...]
#
# Parts, by default all:
#   sums         SHA256SUMS lists every file of the folder
#   contents     each package has the files that belong there
#   lintian      no errors and no warnings
#   archive      the unpacked archive runs from any folder
#   system       installed, upgraded, downgraded, removed and purged in a new system (needs root and what
#                debootstrap needs; where that is missing the part says so and is left out)
#   reproduce    a second build, in another folder at another time, gives the same bytes
#
# The new system is Debian's minimal one of this machine's release: that of make fresh if there is one, or
# else from the mirror of this machine's apt.
set -eu

tests=$(cd "$(dirname "$0")" && pwd)
sources=$(cd "$tests/../.." && pwd)
packages=$(cd "$1" && pwd)
mkdir -p "$2"
work=$(cd "$2" && pwd)
shift 2
. "$tests/rights.sh"
[ $# -gt 0 ] || set -- sums contents lintian archive system reproduce
version=$(cat "$sources/VERSION")
machine=$(uname -m)
triplet=$(dpkg-architecture -qDEB_HOST_MULTIARCH)
fails=0
fail() {
  echo "FAILED: $*"
  fails=1
}

# leave_out REASON: the part cannot be run on this machine.
leave_out() {
  reason=$*
}

# deb NAME: the file of a package.
deb() {
  echo "$packages/$1_${version}"_*.deb
}

test_sums() {
  (cd "$packages" && sha256sum --check --strict --quiet SHA256SUMS) || fail "a sum differs"
  listed=$(sed 's/^[0-9a-f]* .//' "$packages/SHA256SUMS" | LC_ALL=C sort)
  found=$(cd "$packages" && find . -type f ! -name SHA256SUMS | sed 's,^./,,' | LC_ALL=C sort)
  [ "$listed" = "$found" ] || fail "SHA256SUMS does not list what is there: $found"
  for name in libmirolta1 mirolta libmirolta-dev mirolta-doc; do
    [ -e "$(deb $name)" ] || fail "there is no package $name"
  done
}

# has PACKAGE PATH...: the package has these files; a path that starts with "!" it has not.
has() {
  package=$1
  files=$(dpkg-deb --fsys-tarfile "$(deb "$package")" | tar -t)
  shift
  for path; do
    case $path in
      !*) ! echo "$files" | grep -q "^\./${path#!}" || fail "$package has ${path#!}" ;;
      *) echo "$files" | grep -q "^\./$path\$" || fail "$package has no $path" ;;
    esac
  done
}

test_contents() {
  library=usr/lib/$triplet
  has libmirolta1 "$library/libMirolta.so.1" "$library/libmirolta-runtime.so.1" \
    '!usr/bin' '!usr/include' '!usr/share/man'
  has mirolta usr/bin/mirolta-host usr/share/man/man1/mirolta-host.1.gz \
    usr/share/doc/mirolta/examples/tour.js usr/share/doc/mirolta/CHANGELOG.md '!usr/lib' '!etc'
  has libmirolta-dev usr/include/mirolta.h "$library/libMirolta.so" "$library/pkgconfig/mirolta.pc" \
    "$library/cmake/Mirolta/MiroltaConfig.cmake" '!usr/bin'
  html=usr/share/doc/mirolta/html
  has mirolta-doc usr/share/doc/mirolta/docs/HashObject.md "$html/index.html" "$html/docs/HashObject.html" \
    "$html/search.html" "$html/searchindex.js" "$html/docs/README.html" \
    usr/share/doc-base/mirolta-doc.mirolta usr/share/man/man7/mirolta.7.gz \
    usr/share/man/man5/mirolta-registry.5.gz "!$html/.*\.gz\$" "!$html/.*\.md\$" '!usr/lib'
  # Scripts of others are those of their packages, or have their licence told.
  for file in $(dpkg-deb --fsys-tarfile "$(deb mirolta-doc)" | tar -tv | sed -n 's,^-.*/_static/\(.*/\)\?,,p'); do
    # Newer themes have the text of a licence, and a map for debuggers, beside a file.
    file=${file%.map}
    file=${file%.LICENSE.txt}
    [ "$file" = site.css ] || grep -q "\`$file\`" "$sources/THIRD-PARTY.md" ||
      fail "THIRD-PARTY.md does not list $file, which mirolta-doc contains"
  done
  dpkg-deb --fsys-tarfile "$(deb mirolta-doc)" | tar -tv | grep -q "^l.*/searchtools.js -> .*/javascript/" ||
    fail "mirolta-doc has a copy of the generator's scripts"
  [ ! -d "$sources/python/mirolta" ] || has python3-mirolta usr/lib/python3/dist-packages/mirolta/__init__.py
  control=$(dpkg-deb --ctrl-tarfile "$(deb libmirolta1)" | tar -xO ./symbols ./shlibs)
  for line in 'libMirolta 1 libmirolta1' 'libmirolta-runtime 1 libmirolta1' ' SysAllocString@Base'; do
    echo "$control" | grep -q "^$line" || fail "libmirolta1 does not say: $line"
  done
  for file in "$packages"/*mirolta*"$version"_*.deb; do
    [ "$(dpkg-deb -f "$file" Version)" = "$version" ] || fail "the version of $file"
    ! dpkg-deb --fsys-tarfile "$file" | tar -xO | grep -aqF "$sources" || fail "$file names this folder"
  done
}

test_lintian() {
  lintian --fail-on error,warning --info --tag-display-limit 0 "$packages"/*mirolta*"_${version}_"*.deb ||
    fail "lintian complains"
}

test_archive() {
  place="$work/another folder"
  rm -rf "$place" && mkdir -p "$place"
  tar -C "$place" -xzf "$packages/mirolta-$version-linux-$machine.tar.gz"
  root="$place/mirolta-$version-linux-$machine"
  [ "$("$root/bin/mirolta-host" --version | cut -d' ' -f2)" = "$version" ] || fail "--version"
  MIROLTA_REGISTRY="$work/none.reg" "$root/bin/mirolta-host" --verbose \
    "$root/share/doc/mirolta/examples/selftest.js" >"$work/selftest" 2>&1 || fail "the self-test fails"
  grep -q "HashObject: .*/another folder/.*/lib/libMirolta.so[.0-9]*, beside the host" "$work/selftest" ||
    fail "the archive's host uses another module: $(head -3 "$work/selftest")"
  mkdir "$place/source"
  tar -C "$place/source" -xzf "$packages/mirolta-$version.tar.gz"
  [ "$(cat "$place/source/mirolta-$version/VERSION")" = "$version" ] || fail "the source archive"
}

# Packages of another version with the same files.
repack() {
  mkdir -p "$work/repack"
  for file in "$packages"/*mirolta*"_${version}_"*.deb; do
    folder=$work/repack/$(basename "$file" .deb)
    dpkg-deb --raw-extract "$file" "$folder"
    sed -i -e "s/^Version: .*/Version: $1/" -e "s/= $version)/= $1)/" "$folder/DEBIAN/control"
    dpkg-deb --root-owner-group -Znone --build "$folder" "$system/debs/$1" >/dev/null
    rm -r "$folder"
  done
}

# A new system with what the packages depend on, in $base.
make_base() {
  . /etc/os-release
  wanted=$(for file in "$packages"/*mirolta*"_${version}_"*.deb; do dpkg-deb -f "$file" Depends; done |
    tr ',' '\n' | sed 's/(.*//; s/|.*//; s/ //g' | grep -v mirolta | sort -u | tr '\n' ' ')
  base=$work/base-$VERSION_ID
  [ ! -d "$base" ] || [ "$(cat "$base.packages" 2>/dev/null)" != "$wanted" ] || return 0
  rm -rf --one-file-system "$base" "$base.new"
  eval "$(apt-config shell http_proxy Acquire::http::Proxy https_proxy Acquire::https::Proxy)"
  bare=$sources/build/fresh/bare-$VERSION_ID
  if [ -d "$bare" ]; then
    cp -a "$bare" "$base.new"
  else
    command -v debootstrap >/dev/null || {
      reason="debootstrap is not installed"
      return 1
    }
    # shellcheck disable=SC2016  # apt-get expands them
    mirror=$(apt-get indextargets --format '$(REPO_URI) $(LABEL) $(COMPONENT)' 'Created-By: Packages' |
      awk '$2 == "Debian" && $3 == "main" { print $1; exit }')
    [ -n "$mirror" ] || {
      reason="the apt sources of this machine name no mirror of Debian"
      return 1
    }
    env ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
      debootstrap --variant=minbase "$VERSION_CODENAME" "$base.new" "$mirror" >"$work/debootstrap.log" 2>&1 || {
      reason="debootstrap makes no system: $(tail -1 "$work/debootstrap.log")"
      return 1
    }
    apt-config dump Acquire::http::Proxy Acquire::https::Proxy >"$base.new/etc/apt/apt.conf.d/90proxy"
  fi
  inside "$base.new" "apt-get -qq update && DEBIAN_FRONTEND=noninteractive apt-get -qq install -y \
    --no-install-recommends $wanted && apt-get clean" >"$work/base.log" 2>&1 || {
    reason="apt-get installs nothing there: $(tail -1 "$work/base.log")"
    return 1
  }
  mv "$base.new" "$base"
  echo "$wanted" >"$base.packages"
}

# inside ROOT COMMAND: in the system; its mounts and processes end with it. A container may permit none.
# shellcheck disable=SC2016  # the inner shell expands them
inside() {
  if ! can_mount; then
    env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin TRIPLET="$triplet" MOUNTS=no chroot "$1" \
      sh -c "$2" </dev/null
    return
  fi
  unshare --mount --pid --fork --kill-child sh -euc '
    mount -t proc proc "$1/proc"
    mount -t tmpfs tmpfs "$1/dev/shm"
    exec env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin TRIPLET="$3" MOUNTS=yes chroot "$1" sh -c "$2"' \
    inside "$1" "$2" "$triplet" </dev/null
}

test_system() {
  why=$(why_no_chroot)
  if [ -n "$why" ]; then
    leave_out "$why"
    return
  fi
  if ! make_base; then
    leave_out "$reason"
    return
  fi
  system=$work/system
  rm -rf --one-file-system "$system"
  cp -a "$base" "$system"
  mkdir -p "$system/debs/$version" "$system/debs/0.9" "$system/debs/99.0"
  cp "$packages"/*mirolta*"_${version}_"*.deb "$system/debs/$version"
  repack 0.9
  repack 99.0
  cp "$tests/in_system.sh" "$system/debs"
  printf abc >"$system/debs/abc"
  # A program against the development package, built here and run there.
  mkdir -p "$work/development"
  for name in libmirolta1 libmirolta-dev; do dpkg-deb --extract "$(deb $name)" "$work/development"; done
  c++ -std=c++17 -Wall -Wextra -Werror -I "$work/development/usr/include" "$tests/consumer.cpp" \
    -L "$work/development/usr/lib/$triplet" -lMirolta -lmirolta-runtime -o "$system/debs/consumer" ||
    fail "a program does not build with libmirolta-dev"
  inside "$system" "sh /debs/in_system.sh $version" || fail "the installation"
}

test_reproduce() {
  # Another folder, time, language, mask and user's settings.
  second=$work/a-second-folder-of-another-length
  rm -rf "$second" && mkdir -p "$second"
  (umask 077 && CCACHE_DISABLE=1 HOME=$second LANG=C TZ=Asia/Kathmandu \
    "$sources/packaging/linux.sh" "$second/out" "$second/work") || {
    fail "the second build"
    return
  }
  compared=0
  for file in "$second/out"/*; do
    compared=$((compared + 1))
    cmp "$file" "$packages/${file##*/}" || fail "${file##*/} differs"
  done
  [ $compared -ge 6 ] || fail "only $compared files were compared"
}

status=0
for part; do
  fails=0
  reason=
  began=$(date +%s)
  case $part in
    sums) test_sums ;;
    contents) test_contents ;;
    lintian) test_lintian ;;
    archive) test_archive ;;
    system) test_system ;;
    reproduce) test_reproduce ;;
    *) fail "there is no part $part" ;;
  esac
  [ "$fails" = 0 ] || status=1
  if [ -n "$reason" ]; then
    echo "$part: NOT RUN: $reason"
  elif [ "$fails" = 0 ]; then
    echo "$part: passed, $(($(date +%s) - began)) s"
  fi
done
exit "$status"
