#!/bin/sh
# file_examples.sh HOST EXAMPLES SCRATCH: makes keys with rsa-keygen.js and lets openssl check them,
# sends files through rsa-encrypt.js and rsa-decrypt.js, takes the encrypted file apart with openssl,
# and looks at what the scripts say of wrong calls.
set -u

host=$1 examples=$2 scratch=$3
rm -rf "$scratch"
mkdir -p "$scratch"
cd "$scratch" || exit 1

warning='Beware: raw RSA has no padding, AES works block by block, and nothing is authenticated.'
failures=0

failed() {
  echo "FAILED: $*"
  failures=$((failures + 1))
}

# run SCRIPT ARGUMENTS...: leaves out.txt, err.txt and $status.
run() {
  script=$1
  shift
  "$host" "$examples/$script" "$@" > out.txt 2> err.txt
  status=$?
}

# succeeds OUTPUT SCRIPT ARGUMENTS...
succeeds() {
  output=$1
  shift
  run "$@"
  [ $status -eq 0 ] || failed "$*: status $status: $(cat out.txt err.txt)"
  [ "$(cat out.txt)" = "$output" ] || failed "$*: printed $(cat out.txt)"
  [ "$(cat err.txt)" = "$warning" ] || failed "$*: standard error $(cat err.txt)"
}

# refuses TEXT SCRIPT ARGUMENTS...: status 1, the text, no output file.
refuses() {
  text=$1
  shift
  rm -f out
  run "$@"
  [ $status -eq 1 ] || failed "$*: status $status"
  [ ! -s out.txt ] || failed "$*: printed $(cat out.txt)"
  [ "$(cat err.txt)" = "$1: $text" ] || failed "$*: said $(cat err.txt)"
  [ ! -e out ] || failed "$*: made an output file"
}

# number KEY.json NAME: its hexadecimal digits.
number() {
  sed -n "s/.*\"$2\": \"\([0-9a-f]*\)\".*/\1/p" "$1"
}

# pem KEY.json: the key as openssl takes it, in key.pem.
pem() {
  cat > key.cnf <<END
asn1 = SEQUENCE:key
[key]
version = INTEGER:0
n = INTEGER:0x$(number "$1" n)
e = INTEGER:0x$(number "$1" e)
d = INTEGER:0x$(number "$1" d)
p = INTEGER:0x$(number "$1" p)
q = INTEGER:0x$(number "$1" q)
dp = INTEGER:0x$("$host" "$examples/bignum-calc.js" --hex \
  "0x$(number "$1" d) % (0x$(number "$1" p) - 1)" | cut -c3-)
dq = INTEGER:0x$("$host" "$examples/bignum-calc.js" --hex \
  "0x$(number "$1" d) % (0x$(number "$1" q) - 1)" | cut -c3-)
qinv = INTEGER:0x$("$host" "$examples/bignum-calc.js" --hex \
  "0x$(number "$1" q) ^ (0x$(number "$1" p) - 2) % 0x$(number "$1" p)" | cut -c3-)
END
  openssl asn1parse -genconf key.cnf -out key.der -noout > /dev/null || failed "$1: no structure"
  openssl rsa -inform DER -in key.der -out key.pem 2> /dev/null || failed "$1: no key"
}

for bits in 512 1024 2048; do
  run rsa-keygen.js $bits key$bits.json
  [ $status -eq 0 ] || failed "keygen $bits: $(cat err.txt)"
  grep -q "no padding" out.txt || failed "keygen $bits does not warn"
  pem key$bits.json
  openssl rsa -in key.pem -check -noout 2>&1 | grep -q "RSA key ok" || failed "$bits: not a key"
  openssl rsa -in key.pem -text -noout | grep -q "Private-Key: ($bits bit" || failed "$bits: size"
done

# key.pem is the key of 2048 bits here.
for size in 0 1 15 16 17 524287 524288 524289 3000000; do
  head -c $size /dev/urandom > plain
  succeeds "encrypted $size bytes" rsa-encrypt.js key2048.json plain encrypted
  succeeds "decrypted $size bytes" rsa-decrypt.js key2048.json encrypted decrypted
  cmp plain decrypted || failed "$size bytes do not come back"
  head -c 8 encrypted | grep -q MIROLRSA || failed "$size: no mark"
  # The encrypted key is shorter than the modulus if it begins with zero bytes; openssl wants those.
  k=$((0x$(tail -c +17 encrypted | head -c 4 | od -An -v -tx1 | tr -d ' \n')))
  { head -c $((256 - k)) /dev/zero; tail -c +21 encrypted | head -c $k; } > wrapped
  openssl pkeyutl -decrypt -inkey key.pem -pkeyopt rsa_padding_mode:none -in wrapped -out unwrapped
  key=$(tail -c 32 unwrapped | od -An -v -tx1 | tr -d ' \n')
  tail -c +$((21 + k)) encrypted | openssl enc -d -aes-256-ecb -nopad -K "$key" | head -c $size > peer
  cmp plain peer || failed "$size bytes differ at the peer"
done

# The public numbers alone are enough to encrypt.
printf '{"n": "%s", "e":"%s"}' "$(number key1024.json n)" "$(number key1024.json e)" > public.json
succeeds "encrypted 3000000 bytes" rsa-encrypt.js public.json plain encrypted
refuses 'public.json: has no number d' rsa-decrypt.js public.json encrypted out
succeeds "decrypted 3000000 bytes" rsa-decrypt.js key1024.json encrypted decrypted
cmp plain decrypted || failed "the public key's file does not come back"

refuses 'key1024.json: is there already, and may be a key that is still needed' \
  rsa-keygen.js 512 key1024.json
refuses 'key2048.json: is not the key for this file' rsa-decrypt.js key2048.json encrypted out
refuses 'plain: was not made by rsa-encrypt.js' rsa-decrypt.js key1024.json plain out
head -c 2999999 encrypted > short
refuses 'short: is cut short or damaged' rsa-decrypt.js key1024.json short out
refuses 'nowhere: File not found' rsa-decrypt.js key1024.json nowhere out
refuses 'nowhere: File not found' rsa-encrypt.js nowhere plain out
refuses 'nowhere: File not found' rsa-encrypt.js key1024.json nowhere out
refuses 'public.json: is both input and output' rsa-encrypt.js public.json plain public.json
refuses 'plain: is no key file' rsa-encrypt.js plain plain out
"$host" "$examples/rsa-keygen.js" 256 key256.json > out.txt || failed "keygen 256"
refuses 'key256.json: the modulus is too short for an AES key' \
  rsa-encrypt.js key256.json plain out

for call in "rsa-keygen.js" "rsa-keygen.js 1000 out" "rsa-keygen.js 48 out" "rsa-keygen.js x out" \
            "rsa-encrypt.js key1024.json plain" "rsa-decrypt.js a b c d"; do
  # shellcheck disable=SC2086
  run $call
  [ $status -eq 2 ] || failed "$call: status $status"
  grep -q "^Usage: ${call%% *} " out.txt || failed "$call: no usage"
done

[ $failures -eq 0 ]
