#!/bin/sh
# Ensures that the packages of the given lists are installed, by default those of packages.txt.
#
#   setup.sh [LIST...]
#
# With apt-get, and root or sudo, missing packages are installed. Otherwise the programs, headers and
# modules themselves are searched for. If one is missing, one message lists the packages of several
# systems, and nothing is changed.
#
# A line of a list is one requirement: its package on Debian or Ubuntu, Fedora, Arch and Alpine ("-" for
# none; of names separated by "/" the first that the system has), and how it is detected without a
# package manager: program:NAME, header:NAME, file:PATH, python:MODULE, or clang:FLAG, a flag with which
# clang can link.
#
# A list that was complete is checked again only after it, this file or the installed packages change.
# build/setup/changed is newer than a build folder's configuration that may not have found what a list has.
set -eu

cd "$(dirname "$0")"
[ $# -gt 0 ] || set -- packages.txt
stamps=../build/setup
dpkg_status=/var/lib/dpkg/status

up_to_date() {
  for list; do
    [ "$stamps/$list" -nt "$list" ] && [ "$stamps/$list" -nt setup.sh ] || return 1
    [ ! -e "$dpkg_status" ] || [ "$stamps/$list" -nt "$dpkg_status" ] || return 1
  done
}

remember() {
  mkdir -p "$stamps"
  for list; do
    [ -e "$stamps/$list" ] || : >"$stamps/changed"
    : >"$stamps/$list"
  done
}

has() {
  command -v "$1" >/dev/null 2>&1
}

# is_installed NAME/NAME...
is_installed() {
  for name in $(echo "$1" | tr / ' '); do
    status=$(dpkg-query -W -f='${Status}' "$name" 2>/dev/null) || continue
    [ "$status" != "install ok installed" ] || return 0
  done
  return 1
}

# is_found PROBE
is_found() {
  name=${1#*:}
  case $1 in
    program:*) has "$name" ;;
    header:*) echo "#include <$name>" | c++ -E -x c++ - >/dev/null 2>&1 ;;
    file:*) [ -e "$name" ] ;;
    python:*) python3 -c "import $name" >/dev/null 2>&1 ;;
    clang:*) printf '#include <new>\nint main() {}\n' | clang++ "$name" -x c++ -o /dev/null - >/dev/null 2>&1 ;;
    *)
      echo "setup.sh: $1 does not say how to find a package" >&2
      exit 2
      ;;
  esac
}

# missing_rows LIST...: the rows of what is missing.
missing_rows() {
  cat "$@" | while read -r debian fedora arch alpine probe; do
    case $debian in '#'* | '') continue ;; esac
    if has dpkg-query && is_installed "$debian"; then continue; fi
    if [ "$can_install" = no ] && is_found "$probe"; then continue; fi
    echo "$debian $fedora $arch $alpine"
  done
}

# names COLUMN: the packages of the missing rows on one system.
names() {
  echo "$missing" | cut -d' ' -f"$1" | sed 's,/.*,,' | grep -vx -e - | sort -u | tr '\n' ' '
}

if up_to_date "$@"; then exit 0; fi

can_install=no
as_root=
if has apt-get; then
  if [ "$(id -u)" = 0 ]; then
    can_install=yes
  elif has sudo && sudo -n true 2>/dev/null; then
    can_install=yes
    as_root=sudo
  fi
fi

missing=$(missing_rows "$@")
if [ -z "$missing" ]; then
  remember "$@"
  exit 0
fi

if [ "$can_install" = no ]; then
  cat >&2 <<MESSAGE
Packages are missing, and cannot be installed without apt-get and root or sudo. Install them by
  Debian, Ubuntu:  apt-get install $(names 1)
  Fedora:          dnf install $(names 2)
  Arch:            pacman -S $(names 3)
  Alpine:          apk add $(names 4)
MESSAGE
  exit 1
fi

mkdir -p "$stamps"
log=$stamps/apt.log
try() {
  $as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=300 "$@" >"$log" 2>&1 || {
    cat "$log" >&2
    echo "setup.sh: apt-get $* failed" >&2
    exit 1
  }
}

try update
packages=$(echo "$missing" | cut -d' ' -f1 | while read -r alternatives; do
  for name in $(echo "$alternatives" | tr / ' '); do
    if apt-cache show "$name" >/dev/null 2>&1; then break; fi
  done
  echo "$name"
done)
# shellcheck disable=SC2086  # one word a package
echo "Installing:" $packages >&2
# shellcheck disable=SC2086
try install -y --no-install-recommends $packages
: >"$stamps/changed"
remember "$@"
