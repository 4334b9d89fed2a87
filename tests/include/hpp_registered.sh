#!/bin/sh
# hpp_registered.sh PROGRAM HOST MODULE FOLDER: what the program prints without a registration, with one
# of a copy of the module, and with one of a file that is gone.
set -eu
program=$1 host=$2 module=$3 folder=$4
mkdir -p "$folder"
export MIROLTA_REGISTRY="$folder/registry.reg"

# prints WANTED: the program prints it.
prints() {
  got=$("$program")
  [ "$got" = "$1" ] || {
    echo "prints: $got" >&2
    echo "not:    $1" >&2
    exit 1
  }
}

rm -f "$MIROLTA_REGISTRY"
prints "own, source [], 6"
cp -f "$module" "$folder/copy.so"
"$host" --register "$folder/copy.so" >/dev/null
prints "registered, source [Vardeko HashObject Class], 6"
rm "$folder/copy.so"
prints "own, source [Vardeko HashObject Class], 6"
