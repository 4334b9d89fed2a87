#!/bin/sh
# Tests of the packages for Windows, run with Wine without a display as their users do.
#
#   windows_packages_test.sh STEP... | all
#
# STEP is one of the functions below that have a comment. The packages are those that
# packaging/windows.sh wrote into PACKAGES (build/package if not set) from the modules in BUILD (build);
# the native host that tells what a script prints is that of NATIVE_BUILD (BUILD/native). Needs the
# program registry_listing of both Windows builds. Wine's prefixes are new in each run.
set -eu

root=$(cd "$(dirname "$0")/../.." && pwd)
BUILD=$(cd "${BUILD:-$root/build}" && pwd)
export BUILD
build=$BUILD
native=$(cd "${NATIVE_BUILD:-$build/native}" && pwd)
packages=$(cd "${PACKAGES:-$build/package}" && pwd)
work=$build/package-test/windows
read -r version <"$root/VERSION"
newer=${version%%.*}.$(($(echo "$version" | cut -d. -f2) + 1)).0
examples=$(ls "$root/examples")
mkdir -p "$work"
export TZ=UTC LC_ALL=C.UTF-8

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
  shared_name=$(echo "Z:$shared" | tr / '\\')
  run() {
    WINEPREFIX="$prefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree=;mshtml=" DISPLAY='' wine "$@" 2>/dev/null
  }
  settle() { WINEPREFIX="$prefix" wineserver -w; }
  if [ ! -f "$work/wine64.new" ]; then
    rm -rf "$prefix"
    run wineboot -i >/dev/null
    settle
    touch "$work/wine64.new"
  fi
}

use_wine32() {
  [ "$(id -u)" = 0 ] || fail "the 32-bit Wine needs root: it changes the root folder"
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
  folder=$prefix/drive_c/$(echo "${3#C:?}" | tr '\\' /)
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

# The installer for 64-bit systems. Of the 32-bit module it shows files and keys: this Wine runs no
# 32-bit programs.
installer64() {
  use_wine64
  expected_tour
  install_and_remove x64 "mirolta-$version.msi" 'C:\Program Files\Mirolta'
}

# The installer for 32-bit systems, and a program of theirs.
installer32() {
  use_wine32
  expected_tour
  install_and_remove x86 "mirolta-$version-x86.msi" 'C:\Program Files\Mirolta'
  developer x86 i686-w64-mingw32
}

# A newer version replaces an older one; an older one is refused, and so is the package for 32-bit
# systems on others. Wine does not show the reason without a display: it is read from the package.
upgrade() {
  use_wine64
  expected_tour
  "$root/packaging/windows.sh" "$work/newer" "$newer" >/dev/null
  cp "$packages/mirolta-$version.msi" "$packages/mirolta-$version-x86.msi" \
    "$work/newer/mirolta-$newer.msi" "$shared"
  [ "$(installer /i "$shared_name\\mirolta-$version.msi")" = 0 ] || fail "no installation"
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

  [ "$(installer /i "$shared_name\\mirolta-$version-x86.msi")" = $install_failure ] ||
    fail "the package for 32-bit systems was not refused"
  versions_installed "$newer"
  [ "$(installer /x "$shared_name\\mirolta-$newer.msi")" = 0 ] || fail "the newer version cannot be removed"
  class_is "gone 429"
}

# developer ARCHITECTURE TOOLS: a program compiled with the unpacked archive alone runs in its folder.
developer() {
  "$2-g++" -std=c++17 -Wall -Wextra -pedantic -Werror -static -I "$shared/zip/include" \
    "$root/tests/packages/windows_client.cpp" -o "$shared/zip/windows_client.exe" \
    -L "$shared/zip/lib" -lMirolta -lole32 -loleaut32
  found=$(run "$shared_name\\zip\\windows_client.exe" | tr -d '\r')
  [ "$found" = BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD ] ||
    fail "the program of $1 prints $found"
  echo "developer's program of $1: agrees"
}

# The archives: what is in them, the module registered where it was unpacked, the program of a developer.
archives() {
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

# The same packages come from another folder, by another user's mask, from files of other times.
reproducible() {
  copy="$work/another folder"
  rm -rf "$copy"
  mkdir -p "$copy/build/native/bin"
  for name in LICENSE THIRD-PARTY.md VERSION examples include lib packaging; do cp -R "$root/$name" "$copy/$name"; done
  for name in windows-x64 windows-x86; do
    mkdir "$copy/build/$name"
    cp "$build/$name/Mirolta.dll" "$build/$name/Mirolta.manifest" "$copy/build/$name"
  done
  cp "${MIROLTA_DEFINITIONS:-$build/native/bin/mirolta-definitions}" "$copy/build/native/bin"
  epoch=${SOURCE_DATE_EPOCH:-$(git -C "$root" log -1 --format=%ct 2>/dev/null || stat -c %Y "$root/VERSION")}
  (umask 077 && BUILD="$copy/build" SOURCE_DATE_EPOCH=$epoch MIROLTA_DEFINITIONS='' TZ=Asia/Tokyo \
    "$copy/packaging/windows.sh" "$copy/packages" >/dev/null)
  for name in "mirolta-$version-windows-x64.zip" "mirolta-$version-windows-x86.zip" \
    "mirolta-$version.msi" "mirolta-$version-x86.msi"; do
    cmp "$packages/$name" "$copy/packages/$name" || fail "$name is not reproducible"
    echo "$name: the same bytes"
  done
  rm -rf "$copy"
}

rm -f "$work/wine64.new"
[ "$*" != all ] || set -- archives installer64 upgrade reproducible installer32
for step; do
  case $step in
    archives | installer64 | installer32 | upgrade | reproducible)
      # Its own shell, which ends what it mounted.
      ("$step")
      ;;
    *) fail "there is no step $step" ;;
  esac
done
