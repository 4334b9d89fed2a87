#!/bin/sh
# Downloads the libraries of another processor that a cross build links, with their dependencies, and
# unpacks them into FOLDER/root. The machine's packages are not changed, and root is not needed: apt uses
# the machine's sources, but its own lists and status.
#
#   target-packages.sh ARCHITECTURE FOLDER PACKAGE...
#
# ARCHITECTURE is Debian's name: i386, armel, armhf, arm64.
set -eu

architecture=$1
mkdir -p "$2"
folder=$(cd "$2" && pwd)
shift 2
wanted=$*
[ "$(cat "$folder/unpacked" 2>/dev/null)" != "$wanted" ] || exit 0

apt_for_target() {
  apt-get -qq -o APT::Architecture="$architecture" -o APT::Architectures="$architecture" \
    -o Dir::State="$folder/state" -o Dir::State::status="$folder/status" -o Dir::Cache="$folder/cache" \
    -o APT::Sandbox::User= -o APT::Install-Recommends=false -o Debug::NoLocking=1 "$@"
}

echo "Unpacking packages for $architecture: $wanted" >&2
rm -rf "$folder/root" "$folder/cache"
mkdir -p "$folder/state/lists/partial" "$folder/cache/archives/partial"
: >"$folder/status"
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
