#!/bin/sh
# Writes the packages for Windows from the modules that `make windows` built.
#
#   windows.sh [FOLDER [VERSION]]
#
#   FOLDER/mirolta-VERSION-windows-x64.zip, -x86.zip   module, manifest, examples; headers and import
#                                                      library for developers
#   FOLDER/mirolta-VERSION.msi                         installs the modules of both architectures
#   FOLDER/mirolta-VERSION-x86.msi                     for 32-bit Windows
#
# FOLDER is build/package if not given, VERSION that of the file VERSION; tests of upgrades give another.
# BUILD is the folder that has windows-x64, windows-x86 and native (build if not set). The files depend on
# the modules and sources only, their times on those of the sources (source_date.sh).
set -eu

root=$(cd "$(dirname "$0")/.." && pwd)
mkdir -p "${1:-$root/build/package}"
output=$(cd "${1:-$root/build/package}" && pwd)
read -r source_version <"$root/VERSION"
version=${2:-$source_version}
build=$(cd "${BUILD:-$root/build}" && pwd)
definitions=${MIROLTA_DEFINITIONS:-$build/native/bin/mirolta-definitions}
# For programs that link the module instead of registering it.
import_library=archive/libMirolta.dll.a
work=$output/windows.work
export TZ=UTC LC_ALL=C
umask 022

fail() {
  echo "windows.sh: $*" >&2
  exit 1
}

missing=
for program in zip wixl msibuild faketime python3; do
  command -v "$program" >/dev/null || missing="$missing $program"
done
[ -z "$missing" ] || fail "missing:$missing (scripts/packages-package.txt)"
for architecture in x64 x86; do
  for file in Mirolta.dll Mirolta.manifest $import_library; do
    [ -f "$build/windows-$architecture/$file" ] ||
      fail "$build/windows-$architecture/$file is missing: run make windows"
  done
done
[ -x "$definitions" ] || fail "$definitions is missing: run make windows"

. "$root/packaging/source_date.sh"

# Windows programs of all ages show these.
text_file() {
  sed "s/@VERSION@/$version/g; s/\$/\r/" "$1" >"$2"
}

rm -rf "$work"
common=$work/common
mkdir -p "$common"
text_file "$root/packaging/windows/README.txt" "$common/README.txt"
text_file "$root/LICENSE" "$common/LICENSE.txt"
text_file "$root/THIRD-PARTY.md" "$common/THIRD-PARTY.txt"
cp -R "$root/examples" "$common/examples"
# The examples read it from there.
mkdir "$common/lib"
cp "$root/lib/bytes.js" "$common/lib"
"$definitions" typescript "$common/mirolta.d.ts"

for architecture in x64 x86; do
  name=mirolta-$version-windows-$architecture
  folder=$work/$name
  mkdir -p "$folder/lib"
  cp -R "$common/." "$folder"
  cp "$build/windows-$architecture/Mirolta.dll" "$build/windows-$architecture/Mirolta.manifest" "$folder"
  cp -R "$root/include" "$folder/include"
  cp "$build/windows-$architecture/$import_library" "$folder/lib/Mirolta.lib"
  chmod -R u=rwX,go=rX "$folder"
  find "$folder" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +
  rm -f "$output/$name.zip"
  # Sorted, without users and without times beyond the seconds that every reader knows.
  (cd "$work" && find "$name" -type f | sort | zip --quiet -X -9 -@ "$output/$name.zip")
  echo "$output/$name.zip"
done

# The installer's files: those that mirolta.wxs names, and the examples.
files=$work/files
mkdir -p "$files/x64" "$files/x86"
cp -R "$common/." "$files"
for architecture in x64 x86; do
  cp "$build/windows-$architecture/Mirolta.dll" "$files/$architecture"
done
cp "$root/packaging/windows/mirolta.wxs" "$work"
"$definitions" registration "$work/registration64.wxi" win64 Mirolta64.dll INSTALLDIR
"$definitions" registration "$work/registration32.wxi" win32 Mirolta32.dll INSTALLDIR
{
  echo "<Include>"
  (cd "$files/examples" && find . -type f | sed 's,^\./,,' | sort) | while read -r name; do
    identifier=$(echo "$name" | tr -c 'A-Za-z0-9.\n' _)
    echo "  <Component Id=\"$identifier\" Guid=\"*\" Win64=\"\$(var.WIN64)\">"
    echo "    <File Id=\"$identifier\" Source=\"files/examples/$name\" KeyPath=\"yes\"/>"
    echo "  </Component>"
  done
  echo "</Include>"
} >"$work/examples.wxi"
find "$work" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +

# unique_id TEXT: the same for the same text.
unique_id() {
  python3 -c 'import sys, uuid
print("{%s}" % str(uuid.uuid5(uuid.UUID("4b1e1e53-7f52-4c0b-9e0d-6f3a5d0c8a21"), sys.argv[1])).upper())' "$1"
}

# installer ARCHITECTURE SYSTEM yes|no OUTPUT: yes if the components are 64-bit.
installer() {
  # What is installed names the product: two builds that differ are two products, and the later replaces
  # the other.
  content=$(cd "$work" && find files mirolta.wxs ./*.wxi -type f | sort | xargs sha256sum |
    sha256sum | cut -d' ' -f1)
  product=$(unique_id "product $version $1 $content")
  package=$(unique_id "package $version $1 $content")
  (
    cd "$work"
    # The database keeps the time of its creation.
    NO_FAKE_STAT=1 faketime -f "$(date --date="@$SOURCE_DATE_EPOCH" '+%Y-%m-%d %H:%M:%S')" \
      wixl --arch "$1" -D VERSION="$version" -D PRODUCT="$product" -D SYSTEM="$2" \
      -D WIN64="$3" --output package.msi mirolta.wxs
  )
  # What wixl has no words for: its own identifier, which is random otherwise; an upgrade from the same
  # version; the version of the modules, without which the installer takes any file on the disk that has
  # one for newer, and which excludes a hash.
  query package.msi "DELETE FROM \`Upgrade\` WHERE \`ActionProperty\`='OLDERVERSION'"
  query package.msi "INSERT INTO \`Upgrade\` (\`UpgradeCode\`, \`VersionMin\`, \`VersionMax\`, \`Attributes\`,
    \`ActionProperty\`) VALUES ('{4B1E1E53-7F52-4C0B-9E0D-6F3A5D0C8A21}', '0.0.0', '$version', 768,
    'OLDERVERSION')"
  for module in Mirolta64.dll Mirolta32.dll; do
    query package.msi "UPDATE \`File\` SET \`Version\`='$source_version.0', \`Language\`='1033'
      WHERE \`File\`='$module'"
    query package.msi "DELETE FROM \`MsiFileHash\` WHERE \`File_\`='$module'"
  done
  msibuild "$work/package.msi" -s "Mirolta $version" "The Mirolta authors" \
    "$(template "$1");1033" "$package"
  mv "$work/package.msi" "$output/$4"
  echo "$output/$4"
}

template() {
  case $1 in
    x64) echo x64 ;;
    x86) echo Intel ;;
  esac
}

query() {
  msibuild "$work/$1" -q "$(echo "$2" | tr '\n' ' ')" >"$work/query" 2>&1 || {
    cat "$work/query" >&2
    fail "the installer's tables cannot be changed: $2"
  }
}

installer x64 win64 yes "mirolta-$version.msi"
installer x86 win32 no "mirolta-$version-x86.msi"
rm -rf "$work"
