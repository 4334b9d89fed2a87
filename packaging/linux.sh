#!/bin/sh
# Builds the packages for Linux of the committed sources: the source archive, the .deb packages and an
# archive of the installed tree.
#
#   linux.sh [OUTPUT [WORK]]
#
# OUTPUT is build/package by default, WORK, which is emptied, build/package-work. The bytes depend on the
# commit, the compiler and the libraries only, neither on the folders nor on the time.
set -eu

cd "$(dirname "$0")/.."
sources=$(pwd)
absolute() {
  mkdir -p "$1" && (cd "$1" && pwd)
}
rm -rf "${2:-build/package-work}"
output=$(absolute "${1:-build/package}")
work=$(absolute "${2:-build/package-work}")
git() {
  command git -c safe.directory='*' -c tar.umask=0022 -C "$sources" "$@"
}
git rev-parse --verify -q HEAD >/dev/null || {
  echo "linux.sh packs what is committed: it needs the git repository of the sources" >&2
  exit 1
}
[ -z "$(git status --porcelain)" ] || echo "Changes that are not committed are left out."

umask 022
export LC_ALL=C.UTF-8 TZ=UTC
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH
# The compiler cache must not rewrite names of files: messages contain them.
export CCACHE_BASEDIR=
version=$(git show HEAD:VERSION)
name=mirolta-$version

# pack FOLDER: a reproducible archive of a folder of $work, on standard output.
pack() {
  tar -C "$work" --sort=name --mtime="@$SOURCE_DATE_EPOCH" --owner=0 --group=0 --numeric-owner \
    --format=gnu -c "$1" | gzip -n9
}

rm -f "$output"/mirolta[-_]"$version"*.tar.gz "$output"/*mirolta*_"$version"_*.deb
git archive --format=tar --prefix="$name/" HEAD | gzip -n9 >"$output/$name.tar.gz"

# The tree of Debian's source package.
tar -C "$work" -xzf "$output/$name.tar.gz"
tree=$work/$name
cp -a "$tree/packaging/debian" "$tree/debian"
cat >"$tree/debian/changelog" <<CHANGELOG
mirolta ($version) unstable; urgency=medium

  * Version $version.

 -- The Mirolta authors <mirolta@localhost>  $(date -R -d "@$SOURCE_DATE_EPOCH")
CHANGELOG
[ -d "$tree/python/mirolta" ] || export DEB_BUILD_PROFILES=nopython

# Debug information would double the time.
log=$work/build.log
(
  cd "$tree"
  DEB_BUILD_OPTIONS="noautodbgsym parallel=${JOBS:-$(nproc)}" DEB_CXXFLAGS_STRIP=-g \
    dpkg-buildpackage --build=binary --unsigned-changes --no-pre-clean
) >"$log" 2>&1 || {
  tail -50 "$log" >&2
  echo "linux.sh: dpkg-buildpackage failed, see $log" >&2
  exit 1
}
mv "$work"/*.deb "$output"

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
