#!/bin/sh
# Calls of mirolta-definitions that must fail, and the installer's registry entries.
#
#   definitions_program_test.sh PROGRAM WORK
set -eu

program=$1
work=$2
mkdir -p "$work"

fail() {
  echo "$*" >&2
  exit 1
}

for version in 1.0.0 0.0.1 65535.65535.65535; do
  "$program" resources "$work/resources" "$version" || fail "$version is refused"
  grep -qx "FILEVERSION $(echo "$version" | tr . ,),0" "$work/resources" || fail "$version is not in the resources"
  "$program" manifest "$work/manifest" "$version" x86 || fail "$version is refused"
  grep -q " version=\"$version.0\" processorArchitecture=\"x86\"" "$work/manifest" ||
    fail "$version is not in the manifest"
done
for version in 1.0 1.0.0.0 1..0 1.0.0- 65536.0.0 1.0.65536 a '' -1.0.0; do
  for kind in resources "manifest x86"; do
    # shellcheck disable=SC2086  # without a processor for the resources
    set -- $kind
    if "$program" "$1" "$work/refused" "$version" ${2:+"$2"} 2>/dev/null; then
      fail "$1 takes the version $version"
    fi
  done
done

# Nothing but a type library loses its times, and other files keep their bytes.
printf 'MSFT' >"$work/short"
printf 'no type library, but as long as the header of one, and some more of it, so that it could have all' \
  >"$work/text"
for name in short text; do
  cp "$work/$name" "$work/kept"
  if "$program" untimed "$work/$name" 2>/dev/null; then fail "untimed takes the file $name"; fi
  cmp "$work/$name" "$work/kept" || fail "untimed changed the file $name"
done

"$program" registration "$work/registration" win32 Module.dll FOLDER
for entry in 'Value="\[#Module.dll\]"/>$ 13' 'Key="[^"]*\\InprocServer32" Type="string" Value="\[#Module.dll\]" 12' \
  'Key="[^"]*\\1.0\\0\\win32" Type="string" Value="\[#Module.dll\]" 1' 'Value="\[FOLDER\]"/>$ 1' \
  'Key="Interface\\[^\\]*" Type 6'; do
  found=$(grep -c "${entry% *}" "$work/registration") || true
  [ "$found" = "${entry##* }" ] || fail "$found entries are ${entry% *}"
done
