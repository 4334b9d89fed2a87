#!/bin/sh
# registration.sh HOST MODULE FAKE FOLDER: the effect of --register and --unregister on the registries,
# their messages when they fail, and what --list, --describe and --verbose say.
host=$1 module=$2 fake=$3 folder=$4
tests=$(cd "$(dirname "$0")" && pwd)
rm -rf "$folder" && mkdir -p "$folder" && cd "$folder" || exit 1
umask 022
export MIROLTA_REGISTRY="$folder/registry.reg"
. "$tests/registration_support.sh"
registry=registry.reg

expect 0 ': registered$' --register "$module"
holds 12 'InprocServer32\]'
expect 0 ': registered$' --register "$fake"
holds 13 'InprocServer32\]'
expect 0 ': unregistered$' --unregister "$module"
holds 1 'InprocServer32\]'
expect 0 ': unregistered$' --unregister "$module"
expect 0 ': unregistered$' --unregister "$fake"
holds 0 'InprocServer32\]'

# A symbolic link is registered by its own name, by whatever path: what it leads to may be replaced.
mkdir real && cp "$fake" real/fake.so.1.0 && ln -s fake.so.1.0 real/fake.so.1 && ln -s real other
expect 0 ': registered$' --register other/fake.so.1
holds 1 "^@=\"$folder/real/fake.so.1\"\$"
ln -sf fake.so.1.1 real/fake.so.1 && mv real/fake.so.1.0 real/fake.so.1.1
expect 0 ': unregistered$' --unregister real/fake.so.1
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

# What each of the registries holds, and how a class that is registered in them is found.
rm registry.reg
unset MIROLTA_REGISTRY
export XDG_DATA_HOME="$folder/home" XDG_DATA_DIRS="$folder/data"
export MIROLTA_SYSTEM_REGISTRY="$folder/etc/registry.reg"
home=$XDG_DATA_HOME/mirolta/registry.reg
copy="$folder/it's a copy.so"
cp "$fake" "$copy"
create='WScript.Echo(typeof new ActiveXObject("Fake.Object").Echo)'
hash='new ActiveXObject("Vardeko.crypt.HashObject")'
cannot="Automation server can't create object: \"Fake.Object\""

expect 1 "$cannot (0x800401F3, Invalid class string)\$" -e "$create"
# Nobody else may have to be able to write: here only the system-wide file is written.
expect 0 ': registered$' --register --system "$copy"
[ -e "$home" ] && echo "--system wrote the user's registry" && fails=1
expect 0 'undefined\|function' -e "$create"
expect 0 "^mirolta-host: Fake.Object: $copy, registered in $MIROLTA_SYSTEM_REGISTRY\$" --verbose -e "$create"
expect 0 "registered in $MIROLTA_SYSTEM_REGISTRY\$" --list
expect 0 '^    Fake.Object  *{3B1F6A52-77C0-4D0E-8E21-6B9D401CF3A8}$' --list
# The user's own copy comes first.
expect 0 ': registered$' --register "$fake"
expect 0 "^mirolta-host: Fake.Object: $fake, registered in $home\$" --verbose -e "$create"
expect 0 "registered in $home\$" --list
expect 0 ': unregistered$' --unregister "$fake"
expect 0 "^mirolta-host: Fake.Object: $copy, registered in $MIROLTA_SYSTEM_REGISTRY\$" --verbose -e "$create"
# Unregistering it for the user cannot remove what is registered for all.
expect 1 "still registered in the system-wide registry $MIROLTA_SYSTEM_REGISTRY; .* mirolta-host --unregister --system" \
  --unregister "$copy"
# One that lies in a folder of XDG_DATA_DIRS belongs to a package.
mkdir -p data/mirolta && mv etc/registry.reg data/mirolta/registry.reg
expect 0 "^mirolta-host: Fake.Object: $copy, registered in $folder/data/mirolta/registry.reg\$" --verbose -e "$create"
mv data/mirolta/registry.reg etc/registry.reg

# The module is gone: the error names it, the registry and the command that mends it.
rm "$copy"
mends="'$folder/it'\\\\''s a copy.so'"
expect 1 "$cannot (0x800401F8, The module of the class was not found): $copy, registered in $MIROLTA_SYSTEM_REGISTRY, does not exist; its entries are removed by mirolta-host --unregister --system $mends\$" -e "$create"
expect 1 "^mirolta-host: Fake.Object cannot be created (0x800401F8, .*): $copy, registered in .*does not exist" --describe Fake.Object
expect 0 "^$copy (does not exist)\$" --list
expect 0 "^  its entries are removed by mirolta-host --unregister --system $mends\$" --list
expect 1 'there is no such file, and nothing is registered for it$' --unregister "$folder/never.so"
ln -s loop.so "$folder/loop.so"
looped='loop.so: the file cannot be reached: Too many levels of symbolic links'
expect 1 "$looped\$" --register "$folder/loop.so"
expect 1 "$looped, and nothing is registered for it\$" --unregister "$folder/loop.so"
expect 0 ': unregistered$' --unregister --system "$copy"
grep 'copy.so\|{\|Fake' etc/registry.reg && fails=1
expect 1 'there is no such file, and nothing is registered for it$' --unregister --system "$copy"
# The same for the user's registry, with classes, ProgIDs, a type library and its interfaces, and by a
# relative name; a file that is no module any more counts as gone.
cp "$module" gone.so
expect 0 ': registered$' --register gone.so
printf '\n[HKEY_CLASSES_ROOT\\Others.Key]\n@="kept"\n' >>"$home"
expect 0 "^mirolta-host: Vardeko.crypt.HashObject: $folder/gone.so, registered in $home, instead of .*/libMirolta.so.1\$" \
  --verbose -e "$hash"
expect 0 "^$folder/gone.so\$" --list
rm gone.so
expect 1 "(0x800401F8, .*): $folder/gone.so, registered in $home, does not exist; its entries are removed by mirolta-host --unregister $folder/gone.so\$" -e "$hash"
echo text >gone.so
expect 1 "(0x800401F9, .*): $folder/gone.so, registered in $home, cannot be loaded as a module\$" -e "$hash"
cp "$home" saved.reg
expect 0 ': unregistered$' --unregister gone.so
grep 'gone.so\|{\|Vardeko' "$home" && fails=1
grep -q '^@="kept"$' "$home" || { echo 'the key of another program is gone'; fails=1; }
cp saved.reg "$home" && rm gone.so
expect 0 ': unregistered$' --unregister ./gone.so
grep 'gone.so\|{\|Vardeko' "$home" && fails=1
# Without a registration the module beside the host is used, and nothing is reported that is not asked for.
expect 0 '^mirolta-host: Vardeko.crypt.HashObject: .*/libMirolta.so.1, beside the host$' --verbose -e "$hash"
expect 0 'not registered, used because it lies beside the host$' --list
[ -z "$("$host" -e "$hash" 2>&1)" ] || { echo 'an object is reported without --verbose'; fails=1; }

# Descriptions of classes: from type information, from the host's tables, and of a class without either.
"$host" --describe Vardeko.crypt.HashObject | sed 's|^  in .*/libMirolta.so.1|  in MODULE|' >described
diff described "$tests/descriptions/hash_object.expected" || fails=1
expect 0 '^  Random(lSize As Long, \[bEnsureSize As Boolean = false\], \[bOdd As Boolean = false\])$' \
  --describe Vardeko.crypt.Number.free
expect 0 '^  NewNumber(\[v As Variant\]) As IPexBigNumber$' --describe Vardeko.crypt.Number
expect 0 '^Vardeko.crypt.Number.free: Big integers$' --describe Vardeko.crypt.Number.free
expect 0 '^Vardeko.crypt.RSA.free: Raw RSA and its keys$' --describe Vardeko.crypt.RSA.free
expect 0 '^{9D56F139-1F04-4283-AED7-3DB89AFF00FD}: Message digests and HMAC$' \
  --describe '{9D56F139-1F04-4283-AED7-3DB89AFF00FD}'
expect 0 '^  a class of the host itself$' --describe Scripting.Dictionary
expect 0 '^  Add(key As Variant, item As Variant)$' --describe scripting.dictionary
expect 0 '^  Count As Long  (read-only)$' --describe Scripting.Dictionary
expect 0 '^    Scripting.Dictionary$' --list
expect 1 '^mirolta-host: No.Such is not the name of a class; mirolta-host --list prints the names$' --describe No.Such
expect 0 ': registered$' --register "$fake"
expect 1 '^mirolta-host: Fake.Object: the class has no type information$' --describe Fake.Object
expect 0 ': unregistered$' --unregister "$fake"

# Registries that cannot be used: the file, the line and the remedy.
printf 'REGEDIT4\n\nwrong\n' >etc/registry.reg
expect 1 "$cannot (0x800703F1, The registry is malformed): the registry file $MIROLTA_SYSTEM_REGISTRY is malformed in line 3\$" -e "$create"
expect 1 "^mirolta-host: the registry file $MIROLTA_SYSTEM_REGISTRY is malformed in line 3\$" --list
expect 1 "the registry file $MIROLTA_SYSTEM_REGISTRY is malformed in line 3\$" --register --system "$fake"
expect 0 ': registered$' --register "$fake"
expect 0 'undefined\|function' -e "$create"
expect 0 ': unregistered$' --unregister "$fake"
echo REGEDIT4 >etc/registry.reg && chmod 666 etc/registry.reg
expect 1 "$cannot (0x80070005, Permission denied): the registry file $MIROLTA_SYSTEM_REGISTRY is refused: .*(chmod 644 $MIROLTA_SYSTEM_REGISTRY)\$" -e "$create"
rm etc/registry.reg
export MIROLTA_REGISTRY="$folder/registry.reg"
expect 1 'MIROLTA_REGISTRY replaces the system-wide registry; unset it to use --system$' --register --system "$fake"
unset MIROLTA_REGISTRY XDG_DATA_HOME
HOME='' expect 1 'there is no registry file: neither MIROLTA_REGISTRY nor HOME is set$' --register "$fake"
exit $fails
