#!/bin/sh
# Downloads the 32-bit libraries that the tests link, with their dependencies, and unpacks them into
# FOLDER. The machine's packages are not changed, and root is not needed: apt uses the machine's
# sources, but its own lists and status.
#
#   i386-packages.sh FOLDER PACKAGE...
set -eu

mkdir -p "$1"
folder=$(cd "$1" && pwd)
shift
wanted=$*
[ "$(cat "$folder/unpacked" 2>/dev/null)" != "$wanted" ] || exit 0

apt_for_i386() {
  apt-get -qq -o APT::Architecture=i386 -o APT::Architectures=i386 -o Dir::State="$folder/state" \
    -o Dir::State::status="$folder/status" -o Dir::Cache="$folder/cache" \
    -o APT::Sandbox::User= -o APT::Install-Recommends=false -o Debug::NoLocking=1 "$@"
}

echo "Unpacking 32-bit packages: $wanted" >&2
rm -rf "$folder/root" "$folder/cache"
mkdir -p "$folder/state/lists/partial" "$folder/cache/archives/partial"
: >"$folder/status"
# A source that fails does not matter if another has the packages.
apt_for_i386 update || true
# shellcheck disable=SC2086  # one word a package
apt_for_i386 --download-only -y install $wanted >/dev/null
# Packages contain files in /lib or in /usr/lib, which must be the same folder.
mkdir -p "$folder/root/usr/lib" "$folder/root/usr/bin" "$folder/root/usr/sbin"
for name in bin sbin lib; do ln -s "usr/$name" "$folder/root/$name"; done
for package in "$folder"/cache/archives/*.deb; do
  dpkg-deb --fsys-tarfile "$package" | tar -x --keep-directory-symlink -C "$folder/root"
done
printf '%s' "$wanted" >"$folder/unpacked"
