#!/bin/sh
# transcript.sh HOST SCRATCH: runs the examples with deterministic results and prints their output and the
# bytes of the files they write, to compare two builds.
set -eu

host=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
examples=$(cd "$(dirname "$0")/.." && pwd)/examples
rm -rf "$2"
mkdir -p "$2"
cd "$2"
export MIROLTA_REGISTRY="$PWD/registry.reg" TZ=UTC LC_ALL=C.UTF-8
cp "$examples/tour.js" "$examples/factorial.js" .
aes=603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4
des=0123456789abcdef23456789abcdef01456789abcdef0123
modulus=0xf123456789abcdef0fedcba987654321123456789abcdef0123456789abcdef1

example() {
  echo "== $*"
  script=$1
  shift
  "$host" "$examples/$script" "$@" 2>&1
}

example tour.js
for algorithm in MD5 SHA1 SHA256; do
  example hash-file.js "$algorithm" tour.js factorial.js
  example hmac.js "$algorithm" key -t "The quick brown fox"
done
example encrypt-file.js AES $aes tour.js aes
example decrypt-file.js AES $aes aes aes-back
example encrypt-file.js DES $des tour.js des
example decrypt-file.js DES $des des des-back
example crypt-stream.js encrypt AES $aes tour.js aes-stream
example crypt-stream.js decrypt DES $des des des-stream
example digest-while-copy.js aes-stream copy
example tee-digest.js SHA256 des-stream one two
example sums.js tour.js factorial.js
example sums.js --algorithm MD5 --output sums tour.js factorial.js
example sums.js --algorithm MD5 --check sums
example derive-key.js SHA256 "pass phrase" 73616c74 100 48
example show-bytes.js --escapes 'a\u20ac\u00e9'
example selftest.js
example factorial.js 1500
example power-mod.js 0x123456789abcdef0123456789abcdef 0xfedcba987654321fedcba $modulus
example is-prime.js 2 1229 65537 $modulus 170141183460469231731687303715884105727
example bignum-calc.js "2^4253 - 1" "3^2000 / 7^300 % 10^50" "gcd(2^600 - 1, 2^450 - 1)"
example bignum-calc.js --hex "123456789^77" "1000!"
rm -f registry.reg
# The bytes of the files.
for file in *; do
  echo "== $file"
  od -An -v -tx1 "$file"
done
