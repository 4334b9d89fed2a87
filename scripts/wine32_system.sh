# A 32-bit Wine in a folder of its own, without changes of the machine's packages; to be sourced. It
# downloads about 200 MB from the machine's Debian mirror, and chroot needs root. (Debian's 64-bit Wine
# runs no 32-bit programs without the other architecture's packages.)
#
#   open_wine32 FOLDER      unpacks it there unless it is there; the folder `system` is its root
#   in_system PROGRAM...    runs a program of Wine: the user's folder is /root, the prefix /root/.wine or
#                           $wine32_prefix
# shellcheck shell=sh

open_wine32() {
  wine32_folder=$1
  system=$wine32_folder/root
  if [ ! -e "$wine32_folder/unpacked" ]; then unpack_wine32; fi
  mkdir -p "$system/dev" "$system/proc"
  for device in null zero random urandom; do
    [ -e "$system/dev/$device" ] || cp -a "/dev/$device" "$system/dev/$device"
  done
  mountpoint -q "$system/proc" || mount -t proc proc "$system/proc"
  trap 'umount "$system/proc"' EXIT
}

in_system() {
  program=/usr/lib/wine/$1
  shift
  env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 TZ=UTC \
    WINEPREFIX="${wine32_prefix:-/root/.wine}" WINEARCH=win32 WINEDEBUG=-all \
    WINEDLLOVERRIDES="mscoree=;mshtml=" WINESERVER=/usr/lib/wine/wineserver32 \
    ${MIROLTA_TEST_FEATURES:+MIROLTA_TEST_FEATURES="$MIROLTA_TEST_FEATURES"} \
    chroot "$system" "$program" "$@" 2>/dev/null
}

# apt with the machine's sources, but its own packages and lists, for the other architecture.
apt_for_i386() {
  apt-get -qq -o APT::Architecture=i386 -o APT::Architectures=i386 -o Dir::State="$wine32_folder/state" \
    -o Dir::State::status="$wine32_folder/status" -o Dir::Cache="$wine32_folder/cache" \
    -o APT::Sandbox::User=root -o APT::Install-Recommends=false "$@"
}

unpack_wine32() {
  mkdir -p "$wine32_folder/state/lists/partial" "$wine32_folder/cache/archives/partial"
  : >"$wine32_folder/status"
  # A source that fails does not matter if another has the packages.
  apt_for_i386 update || true
  apt_for_i386 --download-only -y install wine wine32 dash coreutils >/dev/null
  rm -rf "$system"
  mkdir -p "$system/usr/bin" "$system/usr/sbin" "$system/usr/lib" "$system/tmp" "$system/root"
  for name in bin sbin lib; do ln -s "usr/$name" "$system/$name"; done
  # Only unpacked: of the packages' installation scripts only Wine's step is needed.
  for package in "$wine32_folder"/cache/archives/*.deb; do
    dpkg-deb --fsys-tarfile "$package" | tar -x --keep-directory-symlink -C "$system"
  done
  dpkg-deb --ctrl-tarfile "$wine32_folder"/cache/archives/libwine_*_i386.deb |
    tar -x -C "$system/tmp" ./postinst
  chroot "$system" /bin/sh /tmp/postinst configure
  touch "$wine32_folder/unpacked"
}
