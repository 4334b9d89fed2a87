# What tests of installations need beyond a user's rights; to be sourced.
#
#   why_no_chroot           prints why this process cannot change its root folder; nothing if it can
#   can_mount               succeeds if it may mount in a namespace of its own
# shellcheck shell=sh

why_no_chroot() {
  if [ "$(id -u)" != 0 ]; then
    echo "only root may change the root folder"
  elif ! chroot / true 2>/dev/null; then
    echo "root may not change the root folder here (a container without that right)"
  fi
}

# shellcheck disable=SC2016  # the inner shell expands it
can_mount() {
  unshare --mount --pid --fork sh -c 'mount -t tmpfs tmpfs "$1"' sh "${TMPDIR:-/tmp}" 2>/dev/null
}
