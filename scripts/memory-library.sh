#!/bin/sh
# memory-library.sh FOLDER: builds clang's C++ library with MemorySanitizer into FOLDER, from the source
# package of Debian's clang, which apt-get downloads (130 MB). Only its headers are not enough: streams,
# locales and exceptions are compiled in the library.
set -eu

folder=$1
scripts=$(cd "$(dirname "$0")" && pwd)
version=$(clang++ -dumpversion)
package=llvm-toolchain-${version%%.*}
[ "$(cat "$folder/built" 2>/dev/null)" != "$version" ] || exit 0

rm -rf "$folder"
mkdir -p "$folder/source/state/lists/partial" "$folder/source/cache/archives/partial"
folder=$(cd "$folder" && pwd)
cd "$folder/source"
echo "Downloading the sources of $package" >&2
release=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
echo "deb-src [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $("$scripts/mirror.sh") $release main" >list
apt_sources() {
  apt-get -qq -o Dir::State="$PWD/state" -o Dir::Cache="$PWD/cache" -o APT::Sandbox::User= \
    -o Debug::NoLocking=1 -o Dir::Etc::sourcelist="$PWD/list" -o Dir::Etc::sourceparts=- "$@"
}
apt_sources update
apt_sources --download-only source "$package" >/dev/null
top=$(tar -tf "$package"_*.orig.tar.xz 2>/dev/null | head -n 1)
top=${top%%/*}
tar -xf "$package"_*.orig.tar.xz --strip-components=1 "$top/cmake" "$top/runtimes" "$top/libcxx" \
  "$top/libcxxabi" "$top/libunwind" "$top/llvm/cmake" "$top/llvm/runtimes"

echo "Building the C++ library with MemorySanitizer" >&2
{
  cmake -G Ninja -S runtimes -B "$folder" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ "-DLLVM_ENABLE_RUNTIMES=libcxx;libcxxabi" \
    -DLLVM_USE_SANITIZER=MemoryWithOrigins -DLLVM_INCLUDE_TESTS=OFF -DLLVM_INCLUDE_DOCS=OFF \
    -DLIBCXX_INCLUDE_TESTS=OFF -DLIBCXX_INCLUDE_BENCHMARKS=OFF -DLIBCXXABI_INCLUDE_TESTS=OFF \
    -DLIBCXX_ENABLE_STATIC=OFF -DLIBCXXABI_ENABLE_STATIC=OFF -DLIBCXXABI_USE_LLVM_UNWINDER=OFF
  cmake --build "$folder" -j"${JOBS:-$(nproc)}"
} >log 2>&1 || {
  tail -n 40 log >&2
  exit 1
}
echo "$version" >"$folder/built"
