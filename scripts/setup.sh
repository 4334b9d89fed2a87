#!/bin/sh
# Installs the Debian packages that building and testing need, or those of the lists given, where they
# are missing. Without root or sudo it names them and fails.
#
#   setup.sh [list...]
set -eu

here=$(dirname "$0")
missing=
for package in $(cd "$here" && cat "${@:-packages.txt}" | grep -v '^#'); do
  status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
  [ "$status" = "install ok installed" ] || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

if [ "$(id -u)" = 0 ]; then
  as_root=
elif command -v sudo >/dev/null 2>&1 && sudo -n true 2>/dev/null; then
  as_root=sudo
else
  echo "These packages are needed and cannot be installed without root:$missing" >&2
  echo "Install them with: apt-get install$missing" >&2
  exit 1
fi

echo "Installing:$missing" >&2
$as_root apt-get update -qq
# shellcheck disable=SC2086  # one word a package
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >/dev/null
