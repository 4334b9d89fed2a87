#!/bin/sh
# Downloads the libraries of another processor or release of Debian that a build links, with their
# dependencies, and unpacks them into FOLDER/root. The machine's packages are not changed, and root is not
# needed: apt uses the machine's sources, but its own lists and status.
#
#   target-packages.sh [--release NAME] ARCHITECTURE FOLDER PACKAGE...
#
# ARCHITECTURE is Debian's name: amd64, i386, armel, armhf, arm64. NAME is a release's, such as trixie; its
# packages come from the mirror that the machine uses, without the C library's headers: the compiler has its own.
set -eu

release=
if [ "$1" = --release ]; then
  release=$2
  shift 2
fi
architecture=$1
mkdir -p "$2"
folder=$(cd "$2" && pwd)
shift 2
wanted=$*
[ "$(cat "$folder/unpacked" 2>/dev/null)" != "$wanted" ] || exit 0

apt_for_target() {
  apt-get -qq -o APT::Architecture="$architecture" -o APT::Architectures="$architecture" \
    -o Dir::State="$folder/state" -o Dir::State::status="$folder/status" -o Dir::Cache="$folder/cache" \
    -o APT::Sandbox::User= -o APT::Install-Recommends=false -o Debug::NoLocking=1 \
    ${release:+-o Dir::Etc::sourcelist="$folder/sources.list" -o Dir::Etc::sourceparts=-} "$@"
}

echo "Unpacking packages for $architecture${release:+ of $release}: $wanted" >&2
rm -rf "$folder/root" "$folder/cache"
mkdir -p "$folder/state/lists/partial" "$folder/cache/archives/partial"
: >"$folder/status"
if [ -n "$release" ]; then
  mirror=$("$(dirname "$0")/mirror.sh")
  echo "deb [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $mirror $release main" >"$folder/sources.list"
  cat >"$folder/status" <<END
Package: libc6-dev
Status: install ok installed
Architecture: $architecture
Version: 99
Maintainer: none
Description: headers of the C library, which the compiler has
END
fi
# A source that fails does not matter if another has the packages.
apt_for_target update || true
# shellcheck disable=SC2086  # one word a package
apt_for_target --download-only -y install $wanted >/dev/null
# Packages contain files in /lib or in /usr/lib, which must be the same folder.
mkdir -p "$folder/root/usr/lib" "$folder/root/usr/bin" "$folder/root/usr/sbin"
for name in bin sbin lib; do ln -s "usr/$name" "$folder/root/$name"; done
for package in "$folder"/cache/archives/*.deb; do
  dpkg-deb --fsys-tarfile "$package" | tar -x --keep-directory-symlink -C "$folder/root"
done
printf '%s' "$wanted" >"$folder/unpacked"
