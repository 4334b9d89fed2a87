#!/bin/sh
# registry_disk.sh HOST MODULE FAKE FOLDER: registrations on a full and on a read-only file system, which
# are mounted in a namespace of their own. Exits with 77 where that is not allowed.
host=$1 module=$2 fake=$3 folder=$4
tests=$(cd "$(dirname "$0")" && pwd)
if [ "$5" != mounted ]; then
  rm -rf "$folder" && mkdir -p "$folder/disk" || exit 1
  for rights in '' --map-root-user; do
    # shellcheck disable=SC2086  # no word if empty
    if unshare --mount $rights mount -t tmpfs tmpfs "$folder/disk" 2>/dev/null; then
      # shellcheck disable=SC2086
      exec unshare --mount $rights sh "$0" "$1" "$2" "$3" "$4" mounted
    fi
  done
  echo "skipped: this process may not mount file systems, not even in a user namespace of its own"
  exit 77
fi
cd "$folder" || exit 1
umask 022
mount -t tmpfs -o size=64k tmpfs disk || exit 1
unset MIROLTA_REGISTRY XDG_DATA_HOME
export HOME="$folder/disk/home" XDG_DATA_DIRS="$folder/data"
export MIROLTA_SYSTEM_REGISTRY="$folder/disk/etc/registry.reg"
. "$tests/registration_support.sh"
user=$HOME/.local/share/mirolta/registry.reg
hash='new ActiveXObject("Vardeko.crypt.HashObject")'

# try_all MESSAGE: each command fails with it, and the registries stay as they are, without what a
# failed writer might leave.
try_all() {
  for scope in '' --system; do
    registry=$user
    [ -z "$scope" ] || registry=$MIROLTA_SYSTEM_REGISTRY
    cp "$registry" before.reg
    # shellcheck disable=SC2086
    {
      expect 1 "the registry file $registry cannot be written: $1\$" --register $scope "$fake"
      expect 1 "the registry file $registry cannot be written: $1\$" --unregister $scope "$module"
    }
    cmp before.reg "$registry" || fails=1
    [ ! -e "$registry.new" ] || { echo "$registry.new is left" && fails=1; }
  done
  expect 0 "registered in $user\$" --verbose -e "$hash"
  expect 0 "registered in $user\$" --list
}

expect 0 ': registered$' --register --system "$module"
expect 0 ': registered$' --register "$module"
dd if=/dev/zero of=disk/filler bs=4096 2>/dev/null
try_all 'Disk full (0x80070070)'
rm disk/filler
mount -o remount,ro disk || exit 1
try_all 'Read-only file system (0x80070013)'
mount -o remount,rw disk || exit 1
registry=$user
expect 0 ': registered$' --register "$fake"
holds 13 'InprocServer32\]'

# A system-wide registry that does not exist yet and cannot be created.
export MIROLTA_SYSTEM_REGISTRY="$folder/disk/new/registry.reg"
mount -o remount,ro disk || exit 1
expect 1 "the registry file $MIROLTA_SYSTEM_REGISTRY cannot be written: Read-only file system" \
  --register --system "$module"
umount disk
exit $fails
