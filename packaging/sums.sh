#!/bin/sh
# Writes SHA256SUMS of all packages in a folder with examples/sums.js on the host that was packed, and
# checks the list with it and with sha256sum.
#
#   sums.sh [FOLDER]
set -eu

cd "$(dirname "$0")/.."
sources=$(pwd)
cd "${1:-build/package}"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
tar -C "$work" --strip-components=1 -xzf "$(echo mirolta-*-linux-"$(uname -m)".tar.gz)"
sums() {
  MIROLTA_REGISTRY=$work/registry.reg "$work/bin/mirolta-host" "$sources/examples/sums.js" "$@"
}

rm -f SHA256SUMS
# In the order of bytes, whatever the language of the shell.
LC_ALL=C
export LC_ALL
# shellcheck disable=SC2035  # no name starts with a dash
sums --output SHA256SUMS *
sums --check --strict --quiet SHA256SUMS
sha256sum --check --strict --quiet SHA256SUMS
