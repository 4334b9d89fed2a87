#!/bin/sh
# Tests of the Windows module, run with Wine without a display.
#
#   wine-tests.sh STEP NATIVE_BUILD
#
# STEP is one of the functions below that have a comment. NATIVE_BUILD is the folder of the native
# build to compare with. The Windows builds are those of `make windows`, with their test programs
# (`make windows-tests`). Wine's own files are kept in build/wine; the first use creates them.
set -eu

step=${1:?usage: wine-tests.sh STEP NATIVE_BUILD}
native=$(cd "${2:?usage: wine-tests.sh STEP NATIVE_BUILD}" && pwd)
root=$(cd "$(dirname "$0")/.." && pwd)
windows=$root/build/windows-x64
work=$native/wine-tests/$step
mkdir -p "$work"

export WINEPREFIX="$root/build/wine" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree=;mshtml="
export MIROLTA_REGISTRY="$work/registry.reg" TZ=UTC LC_ALL=C.UTF-8
unset DISPLAY

fail() {
  echo "$*" >&2
  exit 1
}

# The name of a file for Windows programs.
windows_name() {
  echo "Z:$1" | tr / '\\'
}

run_wine() {
  wine "$@" 2>/dev/null | tr -d '\r'
}

# same WHAT FILE FILE: the files exist, are not empty and do not differ.
same() {
  [ -s "$2" ] || fail "$1: $2 is empty"
  diff "$2" "$3" || fail "$1: the outputs differ"
  echo "$1: $(wc -l <"$2") lines agree"
}

register() {
  wine regsvr32 /s "$@" "$(windows_name "$windows/Mirolta.dll")" 2>/dev/null ||
    fail "regsvr32 $* failed"
}

list_registry() {
  run_wine "$windows/tests/registry_listing.exe" "$(windows_name "$windows/Mirolta.dll")" |
    LC_ALL=C sort
}

# Checks of the two files: size, entry points, and imports.
binaries() {
  for processor in x64:x86_64:pei-x86-64:640 x86:i686:pei-i386:480; do
    folder=$root/build/windows-${processor%%:*}
    module=$folder/Mirolta.dll
    objdump=$(echo "$processor" | cut -d: -f2)-w64-mingw32-objdump
    [ -f "$module" ] || fail "$module is missing: run make windows"
    "$objdump" -p "$module" >"$work/headers"
    grep -q "file format $(echo "$processor" | cut -d: -f3)" "$work/headers" ||
      fail "$module is for another processor"

    size=$(wc -c <"$module")
    [ "$size" -le $((${processor##*:} * 1024)) ] || fail "$module has $size bytes"
    # Newer tools write the ordinal and a hint before the name.
    sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/{
      s/^\t\[ *[0-9]*\] \(+base\[ *[0-9]*\]  *[0-9a-f]* \)\{0,1\}//p
    }' "$work/headers" |
      tr '\n' ' ' >"$work/exports"
    expected="DllCanUnloadNow DllGetClassObject DllRegisterServer DllUnregisterServer "
    [ "$(cat "$work/exports")" = "$expected" ] || fail "$module exports $(cat "$work/exports")"
    imports=$(sed -n 's/^\tDLL Name: //p' "$work/headers" | tr '[:upper:]' '[:lower:]' | sort -u)
    [ -n "$imports" ] || fail "$module imports nothing"
    for import in $imports; do
      case $import in
        advapi32.dll | kernel32.dll | msvcrt.dll | ole32.dll | oleaut32.dll | user32.dll) ;;
        *) fail "$module needs $import" ;;
      esac
    done
    python3 "$root/tests/trust/hardening_test.py" "$module" >"$work/hardening" ||
      fail "$(cat "$work/hardening")"
    python3 "$root/tests/setup/third_party_test.py" "$root" --map "$folder/Mirolta.map" >"$work/carried" ||
      fail "$(cat "$work/carried")"
    grep -q "^<assembly" "$folder/Mirolta.manifest" || fail "no manifest beside $module"
    echo "$module: $size bytes, imports" $imports
  done
}

# The version that the system reads from both files is that of the file VERSION, as are those of the
# manifests.
versions() {
  read -r version <"$root/VERSION"
  holder=$(sed -n 's/^\(Copyright (c) [0-9]* The Mirolta authors\)$/\1/p' "$root/LICENSE")
  cat >"$work/expected" <<EXPECTED
signature FEEF04BD, flags 0, system 40004, type 2
file $version.0
product $version.0
translation 040904B0
CompanyName=The Mirolta authors
FileDescription=Mirolta cryptography components
FileVersion=$version
InternalName=Mirolta
LegalCopyright=$holder
OriginalFilename=Mirolta.dll
ProductName=Mirolta
ProductVersion=$version
EXPECTED
  for architecture in x64:amd64 x86:x86; do
    folder=$root/build/windows-${architecture%%:*}
    run_wine "$windows/tests/version_listing.exe" "$(windows_name "$folder/Mirolta.dll")" >"$work/version"
    same "version of $architecture" "$work/version" "$work/expected"
    grep -q "name=\"Mirolta\" version=\"$version.0\" processorArchitecture=\"${architecture##*:}\"" \
      "$folder/Mirolta.manifest" || fail "$folder/Mirolta.manifest has another version"
  done
}

# Registers and unregisters the module and compares the registry after each; leaves the module
# registered for the other steps.
registration() {
  [ -f "$WINEPREFIX/system.reg" ] || wineboot -i >/dev/null 2>&1 || fail "wineboot failed"
  expected=$root/tests/windows/registration.expected

  rm -f "$MIROLTA_REGISTRY"
  "$native/bin/mirolta-host" --register "$native/lib/libMirolta.so" >/dev/null
  "$native/tests/registry_listing" "$native/lib/libMirolta.so" | LC_ALL=C sort >"$work/native"
  same "native registration" "$work/native" "$expected"

  echo CLSID >"$work/nothing"
  register /u  # possibly nothing to take away
  list_registry >"$work/after"
  same "unregistered" "$work/after" "$work/nothing"
  register /u
  list_registry >"$work/after"
  same "unregistered twice" "$work/after" "$work/nothing"

  run_wine "$windows/tests/manifest_client.exe" "$(windows_name "$windows/Mirolta.manifest")" \
    >"$work/manifest"
  cat "$work/manifest"
  grep -q ' 0 failed$' "$work/manifest" || fail "the manifest does not serve"

  for times in once twice; do
    register
    list_registry >"$work/after"
    same "registered $times" "$work/after" "$expected"
  done
  register /u
  list_registry >"$work/after"
  same "unregistered again" "$work/after" "$work/nothing"
  register
}

# run_script NAME ARGUMENTS...: runs a script on the platform's script host.
run_script() {
  windows_script=$(windows_name "$1")
  shift
  run_wine cscript //nologo "$windows_script" "$@"
}

# both_hosts NAME SCRIPT ARGUMENTS...: the script prints the same by the platform's script host and
# by the native one. The output of the former is left in NAME.windows.
both_hosts() {
  name=$1
  script=$2
  shift 2
  "$native/bin/mirolta-host" "$script" "$@" >"$work/$name.native" || true
  run_script "$script" "$@" >"$work/$name.windows"
  same "$name" "$work/$name.windows" "$work/$name.native"
}

# The test scripts in both languages.
scripts() {
  for script in "$root"/tests/windows/scripts/*.js; do
    name=$(basename "$script" .js)
    both_hosts "$name" "$script"
    same "$name as expected" "$work/$name.windows" "${script%.js}_js.expected"
  done
  for script in "$root"/tests/windows/scripts/*.vbs; do
    name=$(basename "$script" .vbs)
    run_script "$script" >"$work/$name.windows"
    same "$name.vbs" "$work/$name.windows" "${script%.vbs}_vbs.expected"
  done
}

# Clients: of the interfaces, slot by slot, and of the module's compiler runtime routines.
client() {
  for client in early_bound_client language_support_client handheld_start_client; do
    run_wine "$windows/tests/$client.exe" >"$work/$client"
    cat "$work/$client"
    grep -q '^[1-9][0-9]* checks, 0 failed$' "$work/$client" || fail "$client failed"
  done
}

# The type library in the module's resources, as the system reads it, and the native tables.
type_library() {
  "$native/tests/type_library_listing" "$native/lib/libMirolta.so" >"$work/native"
  run_wine "$windows/tests/type_library_listing.exe" "$(windows_name "$windows/Mirolta.dll")" \
    >"$work/windows"
  same "type library" "$work/windows" "$work/native"
}

# The test scripts of the host whose output is the same by the platform's (tests/worlds/both_scripts.py).
both_scripts() {
  python3 -B "$root/tests/worlds/both_scripts.py" "$native/bin/mirolta-host" "$work" \
    "$root"/tests/host/scripts/both_*.js
}

# The examples (tests/worlds/example_scripts.py).
example_scripts() {
  python3 -B "$root/tests/worlds/example_scripts.py" "$root/examples" "$native/bin/mirolta-host" "$work"
}

# The scripts of the pages (tests/worlds/page_scripts.py).
page_scripts() {
  python3 -B "$root/tests/worlds/page_scripts.py" "$root" "$native/bin/mirolta-host" "$work" --wine
}

# The programs of docs/c.md: with the registered module, and with the DLL beside them.
c_page() {
  cp "$windows/Mirolta.dll" "$work"
  python3 -B "$root/tests/include/c_page.py" "$root/docs/c.md" "$work" x86_64-w64-mingw32-gcc \
    "-I$root/include" -lole32 -loleaut32 -luuid -- wine
}

# compare_values [RULES]: compares a program's output with the portable runtime and with the system.
compare_values() {
  version=$(wine --version 2>/dev/null | sed 's/^wine-\([0-9]*\).*/\1/')
  "$root/scripts/value-parity.sh" "$work/portable.txt" "$work/platform.txt" "$version" "$@"
}

# Late-bound calls through type information: the portable runtime's, and the system's.
invoke() {
  "$native/tests/invoke_listing" "$native/lib/libMirolta.so" >"$work/portable.txt"
  run_wine "$windows/tests/invoke_listing.exe" "$(windows_name "$windows/Mirolta.dll")" \
    >"$work/platform.txt"
  compare_values "$root/tests/windows/invoke_allowed.txt"
}

# Automation values: the portable runtime's results and statuses, and the platform's.
parity() {
  LC_ALL=C "$native/tests/value_parity" >"$work/portable.txt"
  run_wine "$windows/tests/value_parity.exe" >"$work/platform.txt"
  compare_values
}

# units FOLDER: the unit tests of a folder in the Windows build, with the module's own layers.
units() {
  programs=$(sed -n "s/^$1 //p" "$windows/tests/unit_tests.txt")
  [ -n "$programs" ] || fail "there are no unit tests of $1"
  for program in $programs; do
    unit "$program"
    case $program in
      *_kernels_test) same_kernels "$program" ;;
      wiping_stack_test)
        # Again up to AVX2 and with no feature of ProcessorFeature.
        for features in 0x201f 0; do
          printf 'features %s, ' "$features"
          (export MIROLTA_TEST_FEATURES="$features" && unit "$program")
        done
        ;;
    esac
  done
}

unit() {
  (cd "$work" && run_wine "$windows/tests/$1.exe") >"$work/$1" ||
    true  # the summary tells
  if ! grep -q '^\[  PASSED  \] [1-9][0-9]* tests*\.$' "$work/$1" || grep -q '^\[  FAILED  \]' "$work/$1"; then
    grep -v '^\[ RUN\|^\[       OK' "$work/$1" || true
    fail "$1 failed"
  fi
  echo "$1: $(sed -n 's/^\[  PASSED  \] //p' "$work/$1")"
}

# A program runs the same kernels as natively, by name: the processor is the same.
same_kernels() {
  skipped_kernels <"$work/$1" >"$work/$1.skipped"
  "$native/tests/$1" | skipped_kernels >"$work/$1.native"
  diff "$work/$1.skipped" "$work/$1.native" || fail "$1 skips other kernels than natively"
}

skipped_kernels() {
  sed -n 's/^skipped, [^:]*: //p' | sort -u
}

case $step in
  binaries | versions | registration | client | type_library | invoke | parity) "$step" ;;
  scripts | both_scripts | example_scripts | page_scripts | c_page) "$step" ;;
  units_*) units "${step#units_}" ;;
  *) fail "there is no step $step" ;;
esac
