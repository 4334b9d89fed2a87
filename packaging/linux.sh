#!/bin/sh
# Builds the packages for Linux of the committed sources, or of an unpacked source archive: the source
# archive, the .deb packages and an archive of the installed tree.
#
#   linux.sh [--cross ARCHITECTURE] [OUTPUT [WORK]]
#
# With --cross, only the .deb packages for that architecture of Debian's (armel, armhf, arm64).
#
# OUTPUT is build/package by default, WORK, which is emptied, build/package-work. The bytes depend on the
# commit, the compiler and the libraries only, neither on the folders nor on the time.
set -eu

cross=
if [ "${1:-}" = --cross ]; then
  cross=$2
  shift 2
fi
cd "$(dirname "$0")/.."
sources=$(pwd)
absolute() {
  mkdir -p "$1" && (cd "$1" && pwd)
}
rm -rf "${2:-build/package-work}"
output=$(absolute "${1:-build/package}")
work=$(absolute "${2:-build/package-work}")
missing=
for program in dpkg-buildpackage dh cmake ninja gzip $([ ! -e .git ] || echo git); do
  command -v "$program" >/dev/null || missing="$missing $program"
done
[ -z "$missing" ] || {
  echo "linux.sh: missing:$missing (scripts/packages-package.txt)" >&2
  exit 1
}
log=$work/build.log
case $work in
  *[!A-Za-z0-9_./+-]*)
    # Debian's tools do not build in a folder whose name has blanks.
    work=$(mktemp -d "${TMPDIR:-/tmp}/mirolta-package.XXXXXX")
    trap 'rm -rf "$work"' EXIT
    ;;
esac

umask 022
export LC_ALL=C.UTF-8 TZ=UTC
# The compiler cache must not rewrite names of files: messages contain them.
export CCACHE_BASEDIR=
if [ -e .git ]; then
  git() {
    command git -c safe.directory='*' -c tar.umask=0022 -C "$sources" "$@"
  }
  git rev-parse --verify -q HEAD >/dev/null || {
    echo "linux.sh packs what is committed, and nothing is" >&2
    exit 1
  }
  [ -z "$(git status --porcelain)" ] || echo "Changes that are not committed are left out."
  version=$(git show HEAD:VERSION)
else
  read -r version <VERSION
fi
# That of the sources, whatever the caller's is.
unset SOURCE_DATE_EPOCH
root=$sources
. "$root/packaging/source_date.sh"
name=mirolta-$version

# The archive of the sources, not compressed.
archive_sources() {
  if [ -e .git ]; then
    git archive --format=tar --prefix="$name/" HEAD
  else
    tar --exclude=./build --sort=name --mtime="@$SOURCE_DATE_EPOCH" --owner=0 --group=0 --numeric-owner \
      --format=gnu --mode=u=rwX,go=rX --transform="s,^\.,$name," -c .
  fi
}

# pack FOLDER: a reproducible archive of a folder of $work, on standard output.
pack() {
  tar -C "$work" --sort=name --mtime="@$SOURCE_DATE_EPOCH" --owner=0 --group=0 --numeric-owner \
    --format=gnu -c "$1" | gzip -n9
}

if [ -z "$cross" ]; then
  rm -f "$output"/mirolta[-_]"$version"*.tar.gz "$output"/*mirolta*_"$version"_*.deb
  archive_sources | gzip -n9 >"$output/$name.tar.gz"
fi

# The tree of Debian's source package.
archive_sources | tar -C "$work" -x
tree=$work/$name
cp -a "$tree/packaging/debian" "$tree/debian"
cat >"$tree/debian/changelog" <<CHANGELOG
mirolta ($version) unstable; urgency=medium

  * Version $version.

 -- The Mirolta authors <mirolta@localhost>  $(date -R -d "@$SOURCE_DATE_EPOCH")
CHANGELOG
[ -d "$tree/python/mirolta" ] || export DEB_BUILD_PROFILES=nopython

# unpack_libraries: prints the options by which dpkg-shlibdeps finds the libraries of the other
# processor, with what their packages say of their versions.
unpack_libraries() {
  for package in "$libraries"/cache/archives/*.deb; do
    dpkg-deb --ctrl-tarfile "$package" | tar -t | grep -q -x -e ./shlibs || continue
    folder=$work/libraries/$(basename "$package" .deb)
    mkdir -p "$folder"
    dpkg-deb -R "$package" "$folder"
    printf ' -S%s' "$folder"
  done
}

set -- --build=binary
if [ -n "$cross" ]; then
  case $cross in
    armel) toolchain=arm-linux-gnueabi ;;
    armhf) toolchain=arm-linux-gnueabihf ;;
    arm64) toolchain=aarch64-linux-gnu ;;
    *)
      echo "linux.sh: no toolchain for $cross" >&2
      exit 1
      ;;
  esac
  libraries=$sources/build/packages/$cross
  scripts/arm-packages.sh "$cross"
  MIROLTA_CROSS_LIBRARIES=$(unpack_libraries)
  MIROLTA_CROSS_CMAKE="-DCMAKE_TOOLCHAIN_FILE=cmake/$toolchain.cmake -DMIROLTA_TARGET_PACKAGES=$libraries"
  export MIROLTA_CROSS_CMAKE MIROLTA_CROSS_LIBRARIES
  # What the build needs is unpacked, not installed.
  set -- --build=any --host-arch="$cross" --no-check-builddeps
fi

# Debug information would double the time.
(
  cd "$tree"
  DEB_BUILD_OPTIONS="noautodbgsym parallel=${JOBS:-$(nproc)}" DEB_CXXFLAGS_STRIP=-g \
    dpkg-buildpackage "$@" --unsigned-changes --no-pre-clean
) >"$log" 2>&1 || {
  tail -50 "$log" >&2
  echo "linux.sh: dpkg-buildpackage failed, see $log" >&2
  exit 1
}
mv "$work"/*.deb "$output"
[ -z "$cross" ] || exit 0

# The installed tree may be unpacked anywhere: its programs and libraries find each other by relative paths.
build=$(echo "$tree"/obj-*)
installed=mirolta-$version-linux-$(uname -m)
(
  # Programs that the build runs have no run path.
  export LD_LIBRARY_PATH="$build/lib"
  cmake -S "$tree" -B "$build" -DCMAKE_INSTALL_PREFIX=/usr/local -DCMAKE_INSTALL_LIBDIR=lib \
    -DCMAKE_SKIP_RPATH=OFF -DCMAKE_BUILD_WITH_INSTALL_RPATH=ON &&
    cmake --build "$build" -j"${JOBS:-$(nproc)}" &&
    cmake --install "$build" --strip --prefix "$work/$installed"
) >>"$log" 2>&1 || {
  tail -50 "$log" >&2
  echo "linux.sh: the installed tree cannot be built, see $log" >&2
  exit 1
}
pack "$installed" >"$output/$installed.tar.gz"
