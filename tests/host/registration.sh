#!/bin/sh
# registration.sh HOST MODULE FAKE FOLDER: the effect of --register and --unregister on the registry,
# and their messages when they fail.
host=$1 module=$2 fake=$3 folder=$4
rm -rf "$folder" && mkdir -p "$folder" && cd "$folder" || exit 1
umask 022
export MIROLTA_REGISTRY="$folder/registry.reg"
fails=0

# expect STATUS PATTERN ARGUMENTS...: the exit status, and a pattern of both outputs
expect() {
  status=$1 pattern=$2
  shift 2
  said=$("$host" "$@" 2>&1)
  got=$?
  if [ $got -ne "$status" ] || ! printf '%s\n' "$said" | grep -q "$pattern"; then
    echo "$*: status $got, expected $status and '$pattern': $said"
    fails=1
  fi
}
# holds COUNT PATTERN: the number of lines of the registry that match the pattern
holds() {
  found=$(grep -c "$2" registry.reg)
  if [ "$found" -ne "$1" ]; then
    echo "$found lines match $2, expected $1"
    fails=1
  fi
}

expect 0 ': registered$' --register "$module"
holds 12 'InprocServer32\]'
expect 0 ': registered$' --register "$fake"
holds 13 'InprocServer32\]'
expect 0 ': unregistered$' --unregister "$module"
holds 1 'InprocServer32\]'
expect 0 ': unregistered$' --unregister "$module"
expect 0 ': unregistered$' --unregister "$fake"
holds 0 'InprocServer32\]'

# Keys that remain are reported even if the module succeeds: here a key with a subkey of another.
expect 0 ': registered$' --register "$fake"
printf '\n[HKEY_CLASSES_ROOT\\CLSID\\{3B1F6A52-77C0-4D0E-8E21-6B9D401CF3A8}\\InprocServer32\\Other]\n' \
  >>registry.reg
expect 1 'still registered in HKEY_CLASSES_ROOT.CLSID.{3B1F6A52-77C0-4D0E-8E21-6B9D401CF3A8}.InprocServer32$' \
  --unregister "$fake"
rm registry.reg
# The same for a type library, and for another path to the module.
ln -s "$fake" link.so
printf 'REGEDIT4\n[HKEY_CLASSES_ROOT\\TypeLib\\{1}\\1.0\\0\\linux64]\n@="%s/link.so"\n' "$folder" >registry.reg
expect 0 ': registered$' --register "$fake"
expect 1 'still registered in HKEY_CLASSES_ROOT.TypeLib.{1}.1.0.0.linux64$' --unregister "$fake"
rm registry.reg

# A registry that cannot be read.
echo damaged >registry.reg
for what in --register --unregister; do
  expect 1 'the registry file .*registry.reg is malformed in line 1$' \
    $what "$module"
  holds 1 '^damaged$'
done
rm registry.reg
expect 0 ': registered$' --register "$module"
chmod 666 registry.reg
expect 1 'the registry file .*registry.reg is refused: .*(chmod 644 .*registry.reg)$' --unregister "$module"
chmod 644 registry.reg

# A registry that cannot be written, which the module does not notice: nothing changes.
mkdir registry.reg.new
expect 1 'the registry file .*registry.reg cannot be written$' --unregister "$module"
expect 1 'the registry file .*registry.reg cannot be written$' --register "$fake"
holds 12 'InprocServer32\]'
rmdir registry.reg.new
expect 0 ': unregistered$' --unregister "$module"
holds 0 'InprocServer32\]'
exit $fails
