#!/bin/sh
# Runs the 32-bit module and its unit tests with a 32-bit Wine in a folder of its own
# (wine32_system.sh). Not part of `make test`: it downloads about 200 MB, and chroot needs root.
#
#   wine32.sh [FOLDER]              FOLDER is build/wine32 if not given
#   PROGRAMS="a b" wine32.sh        these unit tests only
#
# Registers build/windows-x86/Mirolta.dll, runs the tour and the test scripts by cscript, and
# compares what they print with the native host's (NATIVE_BUILD, build/native if not set). Then
# builds the unit tests of that build and runs them.
set -eu

root=$(cd "$(dirname "$0")/.." && pwd)
mkdir -p "${1:-$root/build/wine32}"
folder=$(cd "${1:-$root/build/wine32}" && pwd)
native=${NATIVE_BUILD:-$root/build/native}

fail() {
  echo "$*" >&2
  exit 1
}
[ "$(id -u)" = 0 ] || fail "wine32.sh must be run by root: it changes the root folder"
[ -f "$root/build/windows-x86/Mirolta.dll" ] || fail "run make windows first"

. "$root/scripts/wine32_system.sh"
open_wine32 "$folder"
build=$root/build/windows-x86
work=$system/root/module
# The module and its manifest have the names by which the tests of that build load them, and lie beside the
# programs. The scripts lie where they find the library.
mkdir -p "$work" "$system$build" "$system$root/examples" "$system$root/tests/windows" "$system$root/tests/trust"
cp "$build/Mirolta.dll" "$build/Mirolta.manifest" "$system$build"
cp "$build/Mirolta.dll" "$work"
cp -ru "$root/lib" "$root/docs" "$system$root"
cp -ru "$root/examples/tour.js" "$system$root/examples"
cp -ru "$root/tests/windows/scripts" "$system$root/tests/windows"
# The programs read the published vectors where their build found them.
cp -ru "$root/tests/vectors" "$system$root/tests"
[ -d "$system/root/.wine" ] || in_system wine wineboot -i >/dev/null
in_system wine regsvr32 /s "Z:$build/Mirolta.dll"
export MIROLTA_REGISTRY="$folder/registry.reg" TZ=UTC LC_ALL=C.UTF-8
failed=
for script in "$root/examples/tour.js" "$root"/tests/windows/scripts/*; do
  [ -z "${PROGRAMS:-}" ] || break
  name=$(basename "$script")
  case $name in
    *.js) "$native/bin/mirolta-host" "$script" >"$folder/expected" ;;
    *.vbs) cp "${script%.vbs}_vbs.expected" "$folder/expected" ;;
    *) continue ;;
  esac
  in_system wine cscript //nologo "Z:$(echo "$script" | tr / '\\')" | tr -d '\r' >"$folder/$name.output"
  if [ -s "$folder/expected" ] && diff "$folder/$name.output" "$folder/expected"; then
    echo "$name: $(wc -l <"$folder/expected") lines agree"
  else
    failed="$failed $name"
  fi
done

tests=$build/tests
# shellcheck disable=SC2086  # names of programs
cmake --build "$build" --target ${PROGRAMS:-windows-tests} >"$folder/build" ||
  fail "the unit tests do not build: $folder/build"
while read -r _ program; do
  case " ${PROGRAMS:-$program} " in *" $program "*) ;; *) continue ;; esac
  cp "$tests/$program.exe" "$work"
  in_system wine "Z:\\root\\module\\$program.exe" </dev/null | tr -d '\r' >"$folder/$program.output"
  if grep -q '^\[  PASSED  \] [1-9][0-9]* tests*\.$' "$folder/$program.output" &&
    ! grep -q '^\[  FAILED  \]' "$folder/$program.output"; then
    echo "$program: $(sed -n 's/^\[  PASSED  \] //p' "$folder/$program.output")"
  else
    grep -v '^\[ RUN\|^\[       OK' "$folder/$program.output" || true
    failed="$failed $program"
  fi
done <"$tests/unit_tests.txt"
in_system wineserver32 -w
[ -z "$failed" ] || fail "failed or differ:$failed"
