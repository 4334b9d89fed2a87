#!/bin/sh
# memory-libraries.sh FOLDER: builds with MemorySanitizer into FOLDER what the tests of make memory are linked to, from
# source packages of Debian that apt-get downloads (150 MB): clang's C++ library, of which the headers are not enough,
# since streams, locales and exceptions are compiled; the peers GMP and OpenSSL, without assembly; and Duktape.
# FOLDER/NAME.built is written last: a library that was cut short is built anew.
set -eu

jobs=${JOBS:-$(nproc)}
scripts=$(cd "$(dirname "$0")" && pwd)
clang=$(clang++ -dumpversion)
edition="$clang $(cksum <"$0")"
mkdir -p "$1"
folder=$(cd "$1" && pwd)
instrumented="-O1 -g1 -fPIC -fno-omit-frame-pointer -fsanitize=memory -fsanitize-memory-track-origins"

apt_sources() {
  apt-get -qq -o Dir::State="$folder/apt" -o Dir::Cache="$folder/apt" -o APT::Sandbox::User= \
    -o Debug::NoLocking=1 -o Dir::Etc::sourcelist="$folder/apt/list" -o Dir::Etc::sourceparts=- "$@"
}

# download PACKAGE PATH...: unpacks these paths of the source package, all if none is named, into the current folder.
download() {
  echo "Downloading the sources of $1" >&2
  if [ ! -e "$folder/apt/updated" ]; then
    mkdir -p "$folder/apt/lists/partial" "$folder/apt/archives/partial"
    release=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
    echo "deb-src [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $("$scripts/mirror.sh") $release main" \
      >"$folder/apt/list"
    apt_sources update
    touch "$folder/apt/updated"
  fi
  apt_sources --download-only source "$1" >/dev/null
  archive=$(ls "$1"_*.orig.tar.?z)
  top=$(tar -tf "$archive" 2>/dev/null | head -n 1)
  top=${top%%/*}
  shift
  [ $# != 0 ] || set -- .
  for path; do
    shift
    set -- "$@" "$top/${path#.}"
  done
  tar -xf "$archive" --strip-components=1 "$@"
}

build_libcxx() {
  cmake -G Ninja -S runtimes -B build -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ "-DLLVM_ENABLE_RUNTIMES=libcxx;libcxxabi" \
    "-DCMAKE_INSTALL_PREFIX=$folder" "-DCMAKE_INSTALL_RPATH=$folder/lib" -DCMAKE_BUILD_WITH_INSTALL_RPATH=ON \
    -DLLVM_USE_SANITIZER=MemoryWithOrigins -DLLVM_INCLUDE_TESTS=OFF -DLLVM_INCLUDE_DOCS=OFF \
    -DLIBCXX_INCLUDE_TESTS=OFF -DLIBCXX_INCLUDE_BENCHMARKS=OFF -DLIBCXXABI_INCLUDE_TESTS=OFF \
    -DLIBCXX_ENABLE_STATIC=OFF -DLIBCXXABI_ENABLE_STATIC=OFF -DLIBCXXABI_USE_LLVM_UNWINDER=OFF
  cmake --build build -j"$jobs" --target install-cxx install-cxxabi
}

# Debian's archive lacks the manual, which configure expects.
build_gmp() {
  mkdir -p doc
  : >doc/Makefile.in
  ./configure -q --disable-shared --disable-assembly CC=clang CFLAGS="$instrumented"
  make -s -j"$jobs" SUBDIRS="mpn mpz mpq mpf printf scanf rand ."
  cp gmp.h "$folder/include"
  cp .libs/libgmp.a "$folder/lib"
}

# The sanitizer sees what read() writes, but not what the system call for random numbers does.
build_openssl() {
  CC=clang CFLAGS="$instrumented" ./config no-asm no-shared no-module no-tests no-engine no-ssl no-tls no-dtls \
    no-ec no-dh no-dsa no-cms no-ts no-ocsp no-srp no-ct no-cmp no-sock no-dgram no-aria no-bf no-camellia no-cast \
    no-idea no-md4 no-mdc2 no-rc2 no-rc4 no-rmd160 no-seed no-sm2 no-sm3 no-sm4 no-whirlpool no-chacha no-poly1305 \
    no-blake2 no-scrypt no-siphash no-siv --with-rand-seed=devrandom
  make -s -j"$jobs" build_generated
  make -s -j"$jobs" libcrypto.a
  cp -r include/openssl "$folder/include"
  cp libcrypto.a "$folder/lib"
}

build_duktape() {
  # shellcheck disable=SC2086  # several options
  clang $instrumented -std=c99 -c src/duktape.c -o duktape.o
  rm -f "$folder/lib/libduktape.a"
  ar rcs "$folder/lib/libduktape.a" duktape.o
  cp src/duktape.h src/duk_config.h "$folder/include"
}

# library NAME PACKAGE PATH...
library() {
  [ "$(cat "$folder/$1.built" 2>/dev/null)" != "$edition" ] || return 0
  name=$1
  shift
  rm -rf "$folder/work"
  mkdir -p "$folder/work" "$folder/include" "$folder/lib"
  cd "$folder/work"
  download "$@"
  echo "Building $name with MemorySanitizer" >&2
  # In a shell of its own: set -e has no effect in a condition.
  set +e
  (
    set -e
    "build_$name"
  ) >"$folder/$name.log" 2>&1
  status=$?
  set -e
  [ $status = 0 ] || {
    tail -n 40 "$folder/$name.log" >&2
    exit 1
  }
  cd "$folder"
  rm -rf work
  echo "$edition" >"$name.built"
}

rm -f "$folder/apt/updated"
library libcxx "llvm-toolchain-${clang%%.*}" cmake runtimes libcxx libcxxabi libunwind llvm/cmake llvm/runtimes
library gmp gmp
library openssl openssl
library duktape duktape
