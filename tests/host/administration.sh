#!/bin/sh
# administration.sh HOST MODULE FAKE FOLDER: what administrators do with registrations: upgrades and
# downgrades, two copies of a module, accounts without a home, and two commands at once.
host=$1 module=$2 fake=$3 folder=$4
tests=$(cd "$(dirname "$0")" && pwd)
rm -rf "$folder" && mkdir -p "$folder/lib" && cd "$folder" || exit 1
umask 022
unset MIROLTA_REGISTRY XDG_DATA_HOME
export HOME="$folder/home" XDG_DATA_DIRS="$folder/data"
export MIROLTA_SYSTEM_REGISTRY="$folder/etc/registry.reg"
. "$tests/registration_support.sh"
registry=$MIROLTA_SYSTEM_REGISTRY
hash='new ActiveXObject("Vardeko.crypt.HashObject")'

# An upgrade that replaces the file under its versioned name; the registry names the link. The other
# version has other classes: `fake` has one, which the module lacks.
cp "$module" lib/libTest.so.1.0.0 && ln -s libTest.so.1.0.0 lib/libTest.so.1
library=$folder/lib/libTest.so.1
expect 0 ': registered$' --register --system lib/libTest.so.1
holds 12 'InprocServer32\]'
holds 13 "^@=\"$library\"\$"
holds 0 'libTest.so.1.0.0'
cp "$fake" lib/libTest.so.1.1.0 && ln -sf libTest.so.1.1.0 lib/libTest.so.1 && rm lib/libTest.so.1.0.0
expect 0 ': registered$' --register --system "$library"
holds 1 'InprocServer32\]'
holds 1 "^@=\"$library\"\$"
holds 0 'Vardeko'
# A downgrade.
cp "$module" lib/libTest.so.1.0.0 && ln -sf libTest.so.1.0.0 lib/libTest.so.1 && rm lib/libTest.so.1.1.0
expect 0 ': registered$' --register --system "$library"
holds 12 'InprocServer32\]'
holds 13 "^@=\"$library\"\$"
holds 0 'Fake'
expect 0 "^mirolta-host: Vardeko.crypt.HashObject: $library, registered in $registry, instead of" --verbose -e "$hash"
# The same version again, and by another of its names: still one registration.
cp "$registry" once.reg
expect 0 ': registered$' --register --system "$library"
sort once.reg >once && sort "$registry" | cmp once - || fails=1
expect 0 ': registered$' --register --system "$folder/lib/libTest.so.1.0.0"
holds 12 'InprocServer32\]'
holds 0 "^@=\"$library\"\$"
# A version that cannot be registered leaves the old registration.
cp "$registry" before.reg
echo text >lib/libTest.so.1.0.0
expect 1 'cannot be loaded as a module$' --register --system "$library"
cmp before.reg "$registry" || fails=1
FAKE_REGISTRATION_FAILS=1 expect 1 'DllRegisterServer failed' --register --system "$fake"
cmp before.reg "$registry" || fails=1
rm -r lib etc

# Two copies in one registry: removing the one that others replaced leaves their classes, and removing
# the registered one leaves the other usable beside its host.
mkdir lib && cp "$module" lib/first.so && cp "$module" lib/second.so
first=$folder/lib/first.so second=$folder/lib/second.so
expect 0 ': registered$' --register --system "$first"
expect 0 ': registered$' --register --system "$second"
cp "$registry" second.reg
expect 0 ': unregistered$' --unregister --system "$first"
sort second.reg >once && sort "$registry" | cmp once - || fails=1
rm "$first"
expect 0 "^mirolta-host: Vardeko.crypt.HashObject: $second, registered in $registry, instead of" --verbose -e "$hash"
expect 0 ': unregistered$' --unregister --system "$second"
holds 0 '='
expect 0 '^mirolta-host: Vardeko.crypt.HashObject: .*/libMirolta.so[.0-9]*, beside the host$' --verbose -e "$hash"
# The first has replaced one class only: that one stays.
cp "$module" "$first"
expect 0 ': registered$' --register --system "$second"
sed -e '0,/InprocServer32\]/!b' -e '/InprocServer32\]/{n' -e "s,second,first,}" "$registry" >mixed &&
  cp mixed "$registry"
holds 1 "^@=\"$first\"\$"
expect 0 ': unregistered$' --unregister --system "$second"
holds 1 'InprocServer32\]'
holds 1 "^@=\"$first\"\$"
holds 0 'second'
# One for the user, one for everybody: each is removed for itself.
rm -r etc
expect 0 ': registered$' --register --system "$first"
expect 0 ': registered$' --register "$second"
expect 0 ': unregistered$' --unregister --system "$first"
expect 0 "^mirolta-host: Vardeko.crypt.HashObject: $second, registered in $HOME/.*\$" --verbose -e "$hash"
expect 0 ': registered$' --register --system "$first"
expect 0 ': unregistered$' --unregister "$second"
expect 0 "^mirolta-host: Vardeko.crypt.HashObject: $first, registered in $registry, instead of" --verbose -e "$hash"

# An account without a home: everything but its own registry works.
rm -r etc home
unset HOME
expect 1 'there is no registry file: neither MIROLTA_REGISTRY nor HOME is set$' --register "$first"
expect 0 ': registered$' --register --system "$first"
expect 0 "registered in $registry\$" --list
expect 0 "^mirolta-host: Vardeko.crypt.HashObject: $first, registered in $registry, instead of" --verbose -e "$hash"
expect 0 ': unregistered$' --unregister --system "$first"

# Two at once: all succeed, and the registry is that of one of them, in whatever order.
for round in 1 2 3 4 5 6 7 8; do
  rm -rf etc
  : >failed
  for file in "$first" "$second" "$fake" "$first" "$second"; do
    "$host" --register --system "$file" >/dev/null 2>>failed || echo "--register $file: $?" >>failed &
  done
  wait
  holds 13 'InprocServer32\]'
  owners=$(grep -o '^@=".*/\(first\|second\).so"' "$registry" | sort | uniq -c | tr -s ' ')
  case $owners in
    ' 13 @="'*) ;;
    *) echo "round $round: registered are $owners" && fails=1 ;;
  esac
  for file in "$first" "$second" "$fake"; do
    "$host" --unregister --system "$file" >/dev/null 2>>failed || echo "--unregister $file: $?" >>failed &
  done
  wait
  holds 0 '='
  [ ! -s failed ] || { cat failed && fails=1; }
done
exit $fails
