#!/bin/sh
# Tests of the packages for Windows, run with Wine without a display as their users do.
#
#   windows_test.sh PACKAGES WORK [PART...]
#
# Parts, by default all but the last:
#   archives     what is in them, the module registered where it was unpacked, a developer's program
#   installer64  installed on 64-bit Windows, removed; of the 32-bit module only files and registry
#                entries, since this Wine runs no 32-bit programs
#   upgrade      a newer version replaces an older one; older ones are refused, and the installer for
#                32-bit Windows
#   reproduce    the same packages come from another folder, with files of other times; the modules have
#                the same bytes when linked again
#   installer32  installed on 32-bit Windows, removed; a developer's program (needs root; build/wine32)
#   modules      compiled again in another folder, the modules have the same bytes (minutes)
#
# Needs the modules and the program registry_listing of both Windows builds, and the native host, which
# tells what a script prints. They are in BUILD (build if not set), the host in NATIVE_BUILD (BUILD/native).
# Wine's prefixes are new in each run.
set -eu

root=$(cd "$(dirname "$0")/../.." && pwd)
BUILD=$(cd "${BUILD:-$root/build}" && pwd)
export BUILD
build=$BUILD
native=$(cd "${NATIVE_BUILD:-$build/native}" && pwd)
packages=$(cd "${1:?usage: windows_test.sh PACKAGES WORK [PART...]}" && pwd)
mkdir -p "${2:?usage: windows_test.sh PACKAGES WORK [PART...]}/windows"
work=$(cd "$2/windows" && pwd)
shift 2
[ $# -gt 0 ] || set -- archives installer64 upgrade reproduce installer32
read -r version <"$root/VERSION"
newer=${version%%.*}.$(($(echo "$version" | cut -d. -f2) + 1)).0
examples=$(ls "$root/examples")
export TZ=UTC LC_ALL=C.UTF-8
. "$root/tests/packages/rights.sh"

fail() {
  echo "$*" >&2
  exit 1
}

# same WHAT FILE FILE: the files exist, are not empty and do not differ.
same() {
  [ -s "$2" ] || fail "$1: $2 is empty"
  diff "$2" "$3" || fail "$1: the outputs differ"
  echo "$1: $(wc -l <"$2") lines agree"
}

# What follows runs on two systems, 64-bit Wine and 32-bit Wine; each defines
#
#   run PROGRAM...     a program of Wine or the platform, by its name there; returns its status
#   settle             waits until the registry is in its files
#   prefix             the folder of the registry and of drive C
#   shared             a folder for files, `shared_name` its name there
use_wine64() {
  prefix=$work/wine64 shared=$work/shared64
  mkdir -p "$shared"
  shared_name=$(echo "Z:$shared" | tr / '\134')
  run() {
    WINEPREFIX="$prefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree=;mshtml=" DISPLAY='' wine "$@" 2>/dev/null
  }
  settle() { WINEPREFIX="$prefix" wineserver -w; }
  if [ ! -f "$work/wine64.new" ]; then
    rm -rf "$prefix"
    run wineboot -i >/dev/null
    # Windows always has classes for 32-bit programs. 64-bit Wine alone has none, and Wine 10 writes them
    # among the others once an installer has removed the last one.
    run reg add 'HKLM\Software\Classes\CLSID\{7A0C1D52-93B5-4E0E-8F61-5E1B0D6C2F10}' /d 'Test Class' /f /reg:32 >/dev/null
    settle
    touch "$work/wine64.new"
  fi
}

use_wine32() {
  . "$root/scripts/wine32_system.sh"
  mkdir -p "$root/build/wine32"
  open_wine32 "$root/build/wine32"
  wine32_prefix=/root/packages-prefix
  prefix=$system$wine32_prefix shared=$system/root/packages shared_name='Z:\root\packages'
  mkdir -p "$shared"
  run() { in_system wine "$@"; }
  settle() { in_system wineserver32 -w || true; }
  rm -rf "$prefix"
  run wineboot -i >/dev/null
  settle
}

# status COMMAND...: prints its exit status.
status() {
  if "$@" >/dev/null; then echo 0; else echo $?; fi
}

# msiexec's status as a program of Wine sees it: its last eight bits.
install_failure=$((1603 & 255))

installer() {
  status run msiexec "$@" /qn
  settle
}

# The registry without the times of its keys, and without what Wine itself writes at each start.
registry() {
  settle
  cat "$prefix/system.reg" "$prefix/user.reg" |
    sed -e 's/^\(\[.*\]\) [0-9]*$/\1/' -e '/^#time=/d' -e '/^"DriverDateData"=/d' -e '/^;;/d' -e '/^$/d'
}

files() {
  (cd "$prefix/drive_c" && find . | sort)
}

# tour FOLDER: what the tour prints, in that folder of examples.
tour() {
  run cscript //nologo "$1\\tour.js" | tr -d '\r'
}

expected_tour() {
  MIROLTA_REGISTRY=$work/registry.reg "$native/bin/mirolta-host" --register "$native/lib/libMirolta.so" >/dev/null
  MIROLTA_REGISTRY=$work/registry.reg "$native/bin/mirolta-host" "$root/examples/tour.js" >"$work/tour"
}

# listing ARCHITECTURE MODULE: the registration of a module, as it is in the registry.
listing() {
  cp "$build/windows-$1/tests/registry_listing.exe" "$shared"
  run "$shared_name\\registry_listing.exe" "$2" | tr -d '\r' | LC_ALL=C sort
}

# A script that tells whether the class is there.
class_is() {
  cat >"$shared/class.js" <<'SCRIPT'
try {
  new ActiveXObject("Vardeko.crypt.HashObject");
  WScript.Echo("there");
} catch (e) {
  WScript.Echo("gone " + (e.number & 0xFFFF));
}
SCRIPT
  found=$(run cscript //nologo "$shared_name\\class.js" | tr -d '\r')
  [ "$found" = "$1" ] || fail "the class is $found, not $1"
}

# versions_installed VERSION...: of the products that the system shows for removal.
versions_installed() {
  settle
  found=$(sed -n '/CurrentVersion\\\\Uninstall\\\\{/,/^$/{s/^"DisplayVersion"="\(.*\)"$/\1/p}' \
    "$prefix/system.reg" | tr '\n' ' ')
  [ "$found" = "$(printf '%s ' "$@")" ] || fail "installed: $found, not $*"
}

unpack() {
  rm -rf "$shared/zip"
  unzip -q "$packages/mirolta-$version-windows-$1.zip" -d "$shared/zip"
  mv "$shared/zip/mirolta-$version-windows-$1"/* "$shared/zip"
}

# install_and_remove ARCHITECTURE PACKAGE FOLDER: installs, compares files and registry, runs the tour,
# removes; nothing is left. `also` is what is installed beyond that architecture's module.
install_and_remove() {
  # Wine itself writes at the first script and at the first use of the installer; removal deletes a key
  # that is empty.
  unpack "$1"
  cp "$packages/$2" "$shared"
  class_is "gone 429"
  cat >"$work/empty-keys" <<'KEYS'
[Software\\Classes\\Wow6432Node\\CLSID]
[Software\\Classes\\Installer\\Features]
[Software\\Classes\\Installer\\Products]
[Software\\Classes\\Installer\\UpgradeCodes]
[Software\\Microsoft\\Windows\\CurrentVersion\\Installer\\UpgradeCodes]
[Software\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\S-1-5-18\\Components]
[Software\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\S-1-5-18\\Products]
KEYS
  registry | grep -vxFf "$work/empty-keys" >"$work/registry.before"
  mkdir -p "$prefix/drive_c/windows/Installer"  # where Wine keeps the packages that are installed
  files >"$work/files.before"

  [ "$(installer /i "$shared_name\\$2")" = 0 ] || fail "$2 cannot be installed"
  folder=$prefix/drive_c/$(echo "${3#C:?}" | tr '\134' /)
  {
    printf '%s\n' LICENSE.txt Mirolta.dll README.txt THIRD-PARTY.txt lib/bytes.js mirolta.d.ts
    for name in $examples; do echo "examples/$name"; done
  } | sort >"$work/expected-files"
  (cd "$folder" && find . -type f | sed 's,^\./,,' | sort) >"$work/installed-files"
  same "installed files" "$work/installed-files" "$work/expected-files"
  while read -r name; do
    cmp "$folder/$name" "$shared/zip/$name" || fail "$name was changed"
  done <"$work/expected-files"
  {
    cat "$root/tests/windows/registration.expected"
    if [ "$1" = x64 ]; then
      # The key of the type library is not one for each architecture.
      library='TypeLib\{D0503D72-C0D7-4CDA-BD03-8D7496F936DA}\1.0\0\<system>'
      printf '%s\n' "$library" "$library|=C:\\Program Files (x86)\\Mirolta\\Mirolta.dll"
    fi
  } | LC_ALL=C sort >"$work/expected-registration"
  listing "$1" "$3\\Mirolta.dll" >"$work/registration"
  same "registration" "$work/registration" "$work/expected-registration"
  tour "$3\\examples" >"$work/tour.output"
  same "tour" "$work/tour.output" "$work/tour"
  versions_installed "$version"
  # Without a version a file of the disk that has one is newer than that of the package, and a hash is for
  # files without a version.
  msiinfo export "$packages/$2" File | awk -F '\t' '$3 == "Mirolta.dll" && $5 != version { exit 1 }' \
    version="$version.0" || fail "$2 does not have the version of a module"
  ! msiinfo export "$packages/$2" MsiFileHash | grep -q 'dll' || fail "$2 has the hash of a module"
  if [ "$1" = x64 ]; then
    cmp "$prefix/drive_c/Program Files (x86)/Mirolta/Mirolta.dll" "$build/windows-x86/Mirolta.dll" ||
      fail "the 32-bit module was not installed"
    # 32-bit programs read their classes from keys of their own.
    found=$(registry | grep -A3 '^\[Software\\\\Classes\\\\Wow6432Node\\\\CLSID\\\\.*\\\\InprocServer32\]$' |
      grep -cF '@="C:\\Program Files (x86)\\Mirolta\\Mirolta.dll"') || true
    [ "$found" = 12 ] || fail "$found classes are registered for 32-bit programs"
  fi
  [ "$(installer /i "$shared_name\\$2")" = 0 ] || fail "$2 cannot be installed again"
  versions_installed "$version"

  [ "$(installer /x "$shared_name\\$2")" = 0 ] || fail "$2 cannot be removed"
  class_is "gone 429"
  listing "$1" "$3\\Mirolta.dll" >"$work/registration"
  echo CLSID >"$work/nothing"
  same "registration after removal" "$work/registration" "$work/nothing"
  registry | grep -vxFf "$work/empty-keys" >"$work/registry.after"
  same "registry after removal" "$work/registry.after" "$work/registry.before"
  files >"$work/files.after"
  same "files after removal" "$work/files.after" "$work/files.before"
}

test_installer64() {
  use_wine64
  expected_tour
  install_and_remove x64 "mirolta-$version.msi" 'C:\Program Files\Mirolta'
}

test_installer32() {
  why=$(why_no_chroot)
  [ -n "$why" ] || can_mount || why="nothing can be mounted in this container, and Wine needs /proc"
  if [ -n "$why" ]; then
    echo "installer32: NOT RUN: $why"
    return
  fi
  use_wine32
  expected_tour
  install_and_remove x86 "mirolta-$version-x86.msi" 'C:\Program Files\Mirolta'
  developer x86 i686-w64-mingw32
}

# Wine shows the reason of a refusal on a display only: it is read from the package.
test_upgrade() {
  use_wine64
  expected_tour
  # Another build of the same version.
  for architecture in x64 x86; do
    copy_module "$architecture" "$work/build/windows-$architecture"
    echo >>"$work/build/windows-$architecture/Mirolta.dll"
  done
  MIROLTA_DEFINITIONS=${MIROLTA_DEFINITIONS:-$build/native/bin/mirolta-definitions} BUILD=$work/build \
    "$root/packaging/windows.sh" "$work/rebuilt" >/dev/null
  "$root/packaging/windows.sh" "$work/newer" "$newer" >/dev/null
  cp "$packages/mirolta-$version.msi" "$work/newer/mirolta-$newer.msi" "$work/newer/mirolta-$newer-x86.msi" \
    "$shared"
  cp "$work/rebuilt/mirolta-$version.msi" "$shared/rebuilt.msi"
  [ "$(installer /i "$shared_name\\rebuilt.msi")" = 0 ] || fail "no installation"
  [ "$(installer /i "$shared_name\\mirolta-$version.msi")" = 0 ] || fail "no second build"
  versions_installed "$version"
  cmp "$prefix/drive_c/Program Files/Mirolta/Mirolta.dll" "$build/windows-x64/Mirolta.dll" ||
    fail "the first build stayed"
  [ "$(installer /i "$shared_name\\mirolta-$newer.msi")" = 0 ] || fail "no upgrade"
  versions_installed "$newer"
  tour 'C:\Program Files\Mirolta\examples' >"$work/tour.output"
  same "tour after the upgrade" "$work/tour.output" "$work/tour"

  [ "$(installer /i "$shared_name\\mirolta-$version.msi")" = $install_failure ] ||
    fail "the older version was not refused"
  versions_installed "$newer"
  tour 'C:\Program Files\Mirolta\examples' >"$work/tour.output"
  same "tour after the refusal" "$work/tour.output" "$work/tour"
  msiinfo export "$packages/mirolta-$version.msi" LaunchCondition | tr -d '\r' >"$work/conditions"
  grep -qx "NOT NEWERVERSION	A newer version of Mirolta is installed. Remove it before you install\
 version $version." "$work/conditions" || fail "the refusal has another text"

  [ "$(installer /i "$shared_name\\mirolta-$newer-x86.msi")" = $install_failure ] ||
    fail "the package for 32-bit systems was not refused"
  versions_installed "$newer"
  [ "$(installer /x "$shared_name\\mirolta-$newer.msi")" = 0 ] || fail "the newer version cannot be removed"
  class_is "gone 429"
}

# developer ARCHITECTURE TOOLS: a program compiled with the unpacked archive alone runs in its folder.
developer() {
  "$2-g++" -std=c++17 -Wall -Wextra -pedantic -Werror -static -I "$shared/zip/include" \
    "$root/tests/packages/windows_client.cpp" -o "$shared/zip/windows_client.exe" \
    -L "$shared/zip/lib" -lMirolta -lole32 -loleaut32 -luuid
  found=$(run "$shared_name\\zip\\windows_client.exe" | tr -d '\r')
  [ "$found" = BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD ] ||
    fail "the program of $1 prints $found"
  echo '#include <mirolta.hpp>' |
    "$2-g++" -std=c++17 -Wall -Wextra -pedantic -Werror -fsyntax-only -I "$shared/zip/include" -x c++ -
  echo "developer's program of $1: agrees"
}

test_archives() {
  use_wine64
  expected_tour
  for architecture in x64 x86; do
    unpack "$architecture"
    {
      printf '%s\n' LICENSE.txt Mirolta.dll Mirolta.manifest README.txt THIRD-PARTY.txt lib/Mirolta.lib \
        lib/bytes.js mirolta.d.ts
      for name in $examples; do echo "examples/$name"; done
      (cd "$root" && find include -type f)
    } | sort >"$work/expected-files"
    (cd "$shared/zip" && find . -type f | sed 's,^\./,,' | sort) >"$work/unpacked-files"
    same "files of $architecture" "$work/unpacked-files" "$work/expected-files"
    for name in Mirolta.dll Mirolta.manifest; do
      cmp "$shared/zip/$name" "$build/windows-$architecture/$name" || fail "$name was changed"
    done
    cmp "$shared/zip/lib/Mirolta.lib" "$build/windows-$architecture/archive/libMirolta.dll.a" ||
      fail "the import library is not that of the build"
    grep -q "mirolta-$version.msi" "$shared/zip/README.txt" || fail "README.txt has another version"
  done
  unpack x64
  class_is "gone 429"
  developer x64 x86_64-w64-mingw32
  run regsvr32 /s "$shared_name\\zip\\Mirolta.dll" || fail "regsvr32 failed"
  tour "$shared_name\\zip\\examples" >"$work/tour.output"
  same "tour of the archive" "$work/tour.output" "$work/tour"
  run regsvr32 /s /u "$shared_name\\zip\\Mirolta.dll" || fail "regsvr32 /u failed"
  class_is "gone 429"
}

# copy_module ARCHITECTURE FOLDER: what the packages contain of a build.
copy_module() {
  mkdir -p "$2/archive"
  cp "$build/windows-$1/Mirolta.dll" "$build/windows-$1/Mirolta.manifest" "$2"
  cp "$build/windows-$1/archive/libMirolta.dll.a" "$2/archive"
}

# copy_sources FOLDER: with the modules' definitions as the native build has them.
copy_sources() {
  rm -rf "$1"
  mkdir -p "$1/build/native/bin"
  (cd "$root" && find . -mindepth 1 -maxdepth 1 ! -name build ! -name .git -exec cp -R {} "$1" \;)
  cp "${MIROLTA_DEFINITIONS:-$build/native/bin/mirolta-definitions}" "$1/build/native/bin"
}

test_reproduce() {
  copy="$work/another folder"
  copy_sources "$copy"
  for architecture in x64 x86; do
    copy_module "$architecture" "$copy/build/windows-$architecture"
  done
  SOURCE_DATE_EPOCH=1234567891 "$root/packaging/windows.sh" "$work/packages" >/dev/null
  (umask 077 && BUILD="$copy/build" SOURCE_DATE_EPOCH=1234567891 MIROLTA_DEFINITIONS='' TZ=Asia/Tokyo \
    "$copy/packaging/windows.sh" "$copy/packages" >/dev/null)
  for name in "mirolta-$version-windows-x64.zip" "mirolta-$version-windows-x86.zip" \
    "mirolta-$version.msi" "mirolta-$version-x86.msi"; do
    cmp "$work/packages/$name" "$copy/packages/$name" || fail "$name is not reproducible"
    echo "$name: the same bytes"
  done
  rm -rf "$copy"

  # Whatever writes the time runs again: widl, the resource compiler, the linker.
  for architecture in x64 x86; do
    folder=$build/windows-$architecture
    module=$folder/Mirolta.dll
    mv "$module" "$work/Mirolta.dll"
    mv "$folder/archive/libMirolta.dll.a" "$work/libMirolta.dll.a"
    rm -f "$folder/module/definitions/Mirolta.tlb"
    find "$folder/module" -name 'Mirolta.rc.*' -delete
    cmake --build "$folder" --target mirolta >"$work/relink.log" || fail "$(cat "$work/relink.log")"
    same_module "$architecture" "$work/Mirolta.dll" "$module"
    cmp "$work/libMirolta.dll.a" "$folder/archive/libMirolta.dll.a" ||
      fail "the import library of $architecture is not reproducible"
  done
}

same_module() {
  cmp "$2" "$3" || fail "the module of $1 is not reproducible"
  ! strings -a "$3" | grep -F "$root" || fail "the module of $1 names the folder of its sources"
  echo "module of $1: the same bytes"
}

test_modules() {
  copy="$work/other sources"
  copy_sources "$copy"
  for architecture in x64 x86; do
    (cd "$copy" && unset CMAKE_CXX_COMPILER_LAUNCHER && cmake --preset "windows-$architecture" \
      -DMIROLTA_TESTS=OFF && cmake --build "build/windows-$architecture" --target mirolta \
      -j"${JOBS:-$(nproc)}") >"$work/modules.log" || fail "$(tail -20 "$work/modules.log")"
    same_module "$architecture" "$build/windows-$architecture/Mirolta.dll" \
      "$copy/build/windows-$architecture/Mirolta.dll"
  done
  rm -rf "$copy"
}

rm -f "$work/wine64.new"
failed=
for part; do
  # Its own shell unmounts at its end. In a condition it would not stop at the first error.
  began=$(date +%s)
  set +e
  (
    set -e
    "test_$part"
  )
  status=$?
  set -e
  [ $status = 0 ] || failed="$failed $part"
  echo "$part: status $status, $(($(date +%s) - began)) s"
done
[ -z "$failed" ] || fail "failed:$failed"
