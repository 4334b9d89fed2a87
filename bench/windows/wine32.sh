#!/bin/sh
# wine32.sh BUILD FOLDER [TEXT]: runs mirolta-speed of a 32-bit Windows build by the 32-bit Wine in FOLDER, which
# scripts/wine32_system.sh puts there. Root runs it: it changes the root folder.
set -eu

build=$(cd "$1" && pwd)
mkdir -p "$2"
folder=$(cd "$2" && pwd)
shift 2
root=$(cd "$(dirname "$0")/../.." && pwd)
. "$root/scripts/wine32_system.sh"
open_wine32 "$folder"
# The program loads the module from where it was built.
mkdir -p "$system$build" "$system/root/speed"
cp -u "$build/Mirolta.dll" "$system$build/"
cp -u "$build/bin/mirolta-speed.exe" "$system/root/speed/"
[ -d "$system/root/.wine" ] || in_system wine wineboot -i >/dev/null
in_system wine 'Z:\root\speed\mirolta-speed.exe' "$@" </dev/null | tr -d '\r'
