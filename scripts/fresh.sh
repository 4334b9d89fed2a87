#!/bin/sh
# Runs commands in a new Debian with git and make: `make run` and `make test`, or the one given.
#
#   fresh.sh 12|13 [COMMAND...]
#
# The system is created in build/fresh from the machine's own apt sources, the committed sources are
# cloned into an empty folder of it, and the caller's environment is not passed on. Downloads and the
# bare system are kept for the next run. Needs root for chroot.
#
# Fails if a command does, or if it prints a warning. The output is kept in build/fresh/RELEASE.log, the
# result of each test in RELEASE.tests, the system in RELEASE until the next run.
set -eu

release=${1:-}
case $release in
  12) name=bookworm ;;
  13) name=trixie ;;
  *)
    echo "usage: fresh.sh 12|13 [COMMAND...]" >&2
    exit 2
    ;;
esac
shift
cd "$(dirname "$0")/.."
sources=$(pwd)
if [ "$(id -u)" != 0 ]; then
  if command -v sudo >/dev/null 2>&1 && sudo -n true 2>/dev/null; then
    exec sudo -n "$sources/scripts/fresh.sh" "$release" "$@"
  fi
  echo "fresh.sh must be run by root: it changes the root folder" >&2
  exit 1
fi
for program in debootstrap unshare flock; do
  command -v "$program" >/dev/null || {
    echo "fresh.sh needs $program: make fresh installs it" >&2
    exit 1
  }
done

folder=$sources/build/fresh
archives=$folder/archives-$release
bare=$folder/bare-$release
system=$folder/$release
mkdir -p "$archives/partial"
exec 9>"$folder/$release.lock"
flock 9

if [ ! -d "$bare" ]; then
  # The mirror and proxy of this machine's apt.
  mirror=$(scripts/mirror.sh)
  rm -rf "$bare.new"
  eval "$(apt-config shell http_proxy Acquire::http::Proxy https_proxy Acquire::https::Proxy)"
  env ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
    debootstrap --variant=minbase --include=git,make --cache-dir="$archives" \
    "$name" "$bare.new" "$mirror" >"$folder/$release.debootstrap" 2>&1 || {
    cat "$folder/$release.debootstrap" >&2
    exit 1
  }
  apt-config dump Acquire::http::Proxy Acquire::https::Proxy >"$bare.new/etc/apt/apt.conf.d/90proxy"
  mv "$bare.new" "$bare"
fi

# Tools that take "/c" for an option must not take the project's files for it.
place=/check/mirolta
rm -rf --one-file-system "$system"
cp -a "$bare" "$system"
mkdir "$system/check"
git -c safe.directory='*' clone -q "file://$sources" "$system$place"
commit=$(git -C "$system$place" log -1 --format='%h %s')
[ -z "$(git -c safe.directory='*' status --porcelain)" ] ||
  echo "Changes that are not committed are left out."

# run COMMAND: in the system; its mounts and processes end with it.
# shellcheck disable=SC2016  # the inner shell expands them
run() {
  unshare --mount --pid --fork --kill-child sh -euc '
    mount -t proc proc "$1/proc"
    mount -t tmpfs tmpfs "$1/dev/shm"
    mount -t devpts -o newinstance,ptmxmode=0666 devpts "$1/dev/pts"
    mount --bind "$2" "$1/var/cache/apt/archives"
    exec env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin \
      chroot "$1" sh -c "cd $4 && $3"' fresh "$system" "$archives" "$1" "$place" 9>&- </dev/null
}

log=$folder/$release.log
: >"$log"
failed=
# try COMMAND
try() {
  began=$(date +%s)
  : >"$folder/$release.status"
  echo "== Debian $release, $commit: $1" | tee -a "$log"
  { run "$1" 2>&1 && echo 0 >"$folder/$release.status" || echo $? >"$folder/$release.status"; } |
    tee -a "$log" "$folder/$release.output.new"
  status=$(cat "$folder/$release.status")
  warnings=$(grep -c -i 'warning:' "$folder/$release.output.new" || true)
  rm -f "$folder/$release.output.new"
  result="== Debian $release: $1: exit $status, $warnings warnings, $(($(date +%s) - began)) s"
  echo "$result" | tee -a "$log"
  [ "$status" = 0 ] && [ "$warnings" = 0 ] || failed=yes
}

if [ $# -gt 0 ]; then
  try "$*"
else
  try "make run"
  try "make test"
  # The result of each test, and of each part that a test may skip.
  for results in "$system$place"/build/*/Testing/Temporary/LastTest.log; do
    build=${results%/Testing/*}
    sed -n -e 's/^[0-9]*\/[0-9]* Test: \(.*\)/test \1/p' \
      -e 's/^\[  SKIPPED \] \([A-Za-z].*\)/skipped \1/p' -e 's/ ([0-9]* ms)$//p' "$results" |
      grep '^test \|^skipped ' | sed "s,^,${build##*/}: ,; s/ ([0-9]* ms)$//"
  done | LC_ALL=C sort -u >"$folder/$release.tests"
fi
[ -z "$failed" ]
