#!/bin/sh
# in_system.sh VERSION: installs, upgrades, downgrades, removes and purges the packages below /debs, as root
# of a system of its own. MOUNTS=no: nothing can be mounted there.
version=$1
registry=/etc/mirolta/registry.reg
library=/usr/lib/$TRIPLET/libMirolta.so.1
export LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive
fails=0
fail() {
  echo "FAILED: $*"
  fails=1
}

# as_user COMMAND...: as a user without a home and without rights.
as_user() {
  setpriv --reuid=65534 --regid=65534 --clear-groups env -i PATH=/usr/bin:/bin LC_ALL=C.UTF-8 "$@"
}
install_version() {
  dpkg -i /debs/"$1"/*.deb >/tmp/dpkg.log 2>&1 || {
    cat /tmp/dpkg.log
    fail "dpkg -i of $1"
  }
}
# is_registered_once WHEN: 12 classes and the type library, all of the package's library.
is_registered_once() {
  [ "$(grep -c 'InprocServer32\]' $registry)" = 12 ] || fail "$1: $(grep -c 'InprocServer32\]' $registry) classes"
  [ "$(grep -c "^@=\"$library\"\$" $registry)" = 13 ] || fail "$1: other files are registered"
  said=$(as_user mirolta-host --verbose -e \
    'var h = new ActiveXObject("Vardeko.crypt.HashObject"); h.InitHash("SHA256"); h.HashData("abc"); WScript.Echo(h.Value)' 2>&1)
  echo "$said" | grep -q "^mirolta-host: Vardeko.crypt.HashObject: $library, registered in $registry" ||
    fail "$1: another user does not find the class: $said"
  echo "$said" | grep -q '^BA7816BF' || fail "$1: the digest is wrong: $said"
}
# Files of the system but those of the package manager and caches.
files_here() {
  find / -xdev \( -path /proc -o -path /tmp -o -path /debs -o -path /var/lib/dpkg -o -path /var/log \
    -o -path /var/cache -o -name __pycache__ -o -path /run \) -prune -o -print | LC_ALL=C sort
}

files_here >/tmp/before
install_version "$version"
is_registered_once "after the installation"
[ "$(stat -c '%U %a' $registry)" = 'root 644' ] || fail "the registry is $(stat -c '%U %a' $registry)"
as_user mirolta-host --list >/tmp/list || fail "--list"
for line in "^$library\$" "registered in $registry"; do
  grep -q "$line" /tmp/list || fail "--list says $(cat /tmp/list)"
done
[ "$(as_user mirolta-host --version | cut -d' ' -f2)" = "$version" ] || fail "--version"

# Examples, the manual page, a program in C++, Python.
cd /usr/share/doc/mirolta/examples || fail "there are no examples"
as_user mirolta-host tour.js >/tmp/tour 2>&1 || fail "tour.js: $(tail -3 /tmp/tour)"
as_user mirolta-host selftest.js >/tmp/selftest 2>&1 || fail "selftest.js: $(tail -3 /tmp/selftest)"
[ "$(as_user mirolta-host hash-file.js SHA256 /debs/abc | cut -c1-64)" = "$(sha256sum </debs/abc | cut -c1-64)" ] ||
  fail "hash-file.js"
for example in *.js; do
  [ "$example" = shared.js ] || as_user mirolta-host "$example" >/tmp/usage 2>&1
  [ $? -le 2 ] || fail "$example: $(cat /tmp/usage)"
done
cd /
# minbase leaves manual pages out where dpkg is told so.
if [ -e /usr/share/man/man1/mirolta-host.1.gz ]; then
  zcat /usr/share/man/man1/mirolta-host.1.gz | grep -q '^.TH MIROLTA-HOST 1' || fail "the manual page"
else
  grep -rqs 'path-exclude.*man' /etc/dpkg/dpkg.cfg.d || fail "there is no manual page"
fi
broken=$(find /usr/share/doc/mirolta -xtype l)
[ -z "$broken" ] || fail "links of the pages lead nowhere: $broken"
[ "$(as_user /debs/consumer)" = created ] || fail "the program in C++"
if [ -d /usr/lib/python3/dist-packages/mirolta ]; then
  said=$(as_user python3 -B -c 'import mirolta; print(mirolta.sha256(b"abc").hexdigest())' 2>&1)
  [ "$said" = ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad ] || fail "Python: $said"
fi

# The same version again, newer, older.
install_version "$version"
is_registered_once "after the same version"
install_version 99.0
is_registered_once "after an upgrade"
install_version 0.9
is_registered_once "after a downgrade"
install_version "$version"
is_registered_once "after an upgrade over an older version"

# Between the files and the configuration of an upgrade the classes are there.
dpkg --unpack /debs/99.0/*.deb >/tmp/dpkg.log 2>&1 || fail "unpacking: $(cat /tmp/dpkg.log)"
is_registered_once "while an upgrade is not configured"
# It cannot be configured while the registry cannot be written; afterwards it can.
if [ "$MOUNTS" = yes ]; then
  mount --bind /etc/mirolta /etc/mirolta || fail "mounting"
  mount -o remount,bind,ro /etc/mirolta || fail "mounting read-only"
  cp $registry /tmp/registry.reg
  dpkg --configure -a >/tmp/dpkg.log 2>&1 && fail "a read-only registry is not noticed"
  grep -q "the registry file $registry cannot be written: Read-only file system" /tmp/dpkg.log ||
    fail "the message: $(cat /tmp/dpkg.log)"
  cmp /tmp/registry.reg $registry || fail "the registry has changed"
  umount /etc/mirolta
else
  echo "NOT RUN: configuring with a read-only registry: nothing can be mounted here"
fi
dpkg --configure -a >/tmp/dpkg.log 2>&1 || fail "configuring again: $(cat /tmp/dpkg.log)"
is_registered_once "after configuring again"

# What else an administrator registers stays: here a copy for everybody, then the package's again.
mkdir -p /usr/local/lib/copy && cp -L "$library" /usr/local/lib/copy/
mirolta-host --register --system /usr/local/lib/copy/libMirolta.so.1 >/dev/null || fail "registering a copy"
dpkg -r mirolta >/tmp/dpkg.log 2>&1 || fail "removing: $(cat /tmp/dpkg.log)"
[ "$(grep -c '^@="/usr/local/lib/copy/libMirolta.so.1"$' $registry)" = 13 ] || fail "the copy is not registered any more"
dpkg -P mirolta >/tmp/dpkg.log 2>&1 || fail "purging: $(cat /tmp/dpkg.log)"
[ -e $registry ] || fail "purging removed the registration of a copy"
install_version "$version"
is_registered_once "after the copy"
mirolta-host --unregister --system /usr/local/lib/copy/libMirolta.so.1 >/dev/null || fail "unregistering the copy"
is_registered_once "after unregistering the copy"
rm -r /usr/local/lib/copy

dpkg -r mirolta >/tmp/dpkg.log 2>&1 || fail "removing: $(cat /tmp/dpkg.log)"
grep -q = $registry && fail "still registered after removing"
# shellcheck disable=SC2046
dpkg -P $(dpkg-query -W -f '${Package}\n' '*mirolta*') >/tmp/dpkg.log 2>&1 || fail "purging: $(cat /tmp/dpkg.log)"
files_here >/tmp/after
diff /tmp/before /tmp/after || fail "purging left files"
exit $fails
