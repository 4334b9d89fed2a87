#!/bin/sh
# file_examples.sh HOST EXAMPLES SCRATCH: runs encrypt-file.js and decrypt-file.js, compares their
# files with what openssl makes of the same input filled up with zero bytes, and looks at what they
# say of wrong calls.
set -u

host=$1 examples=$2 scratch=$3
rm -rf "$scratch"
mkdir -p "$scratch"
cd "$scratch" || exit 1

aes=603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4
des3=0123456789abcdef23456789abcdef01456789abcdef0123
des=0123456789abcdef
warning='Beware: block by block: patterns of the plaintext stay visible, and nothing is authenticated.'
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

# succeeds LENGTH SCRIPT ARGUMENTS...
succeeds() {
  length=$1
  shift
  run "$@"
  [ $status -eq 0 ] || failed "$*: status $status: $(cat out.txt err.txt)"
  [ "$(cat out.txt)" = "plain length: $length" ] || failed "$*: printed $(cat out.txt)"
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
  [ "$(head -n 1 err.txt)" = "$1: $text" ] || failed "$*: said $(cat err.txt)"
  case $(sed -n 2p err.txt) in
    *": nothing was "*) ;;
    *) failed "$*: does not say that nothing was done" ;;
  esac
  [ ! -e out ] || failed "$*: made an output file"
}

# cipher SIZES ALG KEY BLOCK OPENSSL-CIPHER...: inputs of these sizes, there and back.
cipher() {
  sizes=$1 name=$2 key=$3 block=$4
  shift 4
  for size in $sizes; do
    rm -f out back
    head -c $size material > in
    succeeds $size encrypt-file.js "$name" $key in out
    cp in padded
    truncate -s %$block padded
    openssl enc "$@" -K $key -nopad -in padded -out peer || failed "openssl $*"
    cmp out peer || failed "$name, $size bytes: not what openssl gives"
    succeeds $size decrypt-file.js --length $size "$name" $key out back
    cmp in back || failed "$name, $size bytes: not what it was"
    [ $size -lt 17 ] || succeeds "$(stat -c %s padded)" decrypt-file.js "$name" $key out back
    [ $size -lt 17 ] || cmp padded back || failed "$name, $size bytes: not what was encrypted"
  done
}

# Bytes without a pattern, the same in every run.
truncate -s 1048579 zeros
openssl enc -aes-128-ctr -K 00 -iv 00 -in zeros -out material 2> err.txt || failed "material"

cipher "0 1 15 16 17 1048579" AES $aes 16 -aes-256-ecb
cipher "0 17" AES 00000000000000d80a0d1a00ffffdcff 16 -aes-128-ecb
cipher "0 1 15 16 17 1048579" DES $des3 8 -des-ede3
cipher "0 17" DES $des 8 -des-ecb -provider legacy -provider default

head -c 100 material > in
for script in encrypt-file.js decrypt-file.js; do
  refuses "a key of 20 bytes does not fit AES, which takes 16, 24 or 32 bytes" \
    $script AES 0000000000000000000000000000000000000000 in out
  refuses "a key of 15 bytes does not fit AES, which takes 16, 24 or 32 bytes" \
    $script AES 000000000000000000000000000000 in out
  refuses "a key of 0 bytes does not fit DES, which takes 8, 16 or 24 bytes" $script DES "" in out
  refuses "the key is not whole bytes in hexadecimal" $script DES 0123456789abcde in out
  refuses "the key is not whole bytes in hexadecimal" $script DES 0123456789abcdeg in out
  refuses "aes: Algorithm not found. Use AES or DES (case-sensitive)." \
    $script aes $aes in out
  refuses "no-such-file: File not found" $script AES $aes no-such-file out
  refuses "in: is both input and output" $script AES $aes in in
  cmp -s in material; [ "$(stat -c %s in)" = 100 ] || failed "$script destroyed its input"
  run $script
  [ $status -eq 2 ] || failed "$script without arguments: status $status"
  head -n 1 out.txt | grep -q "^Usage: $script " || failed "$script without arguments: $(cat out.txt)"
  [ "$(tail -n 1 out.txt)" = "$warning" ] || failed "$script: usage without a warning"
done
refuses "in: 100 bytes are no ciphertext, which has whole blocks of 16" \
  decrypt-file.js AES $aes in out
refuses "in: 100 bytes are no ciphertext, which has whole blocks of 8" decrypt-file.js DES $des in out
head -c 96 material > in
refuses "--length 97 does not fit: the plaintext of in has 81 to 96 bytes" \
  decrypt-file.js AES $aes in out --length 97
refuses "--length 80 does not fit: the plaintext of in has 81 to 96 bytes" \
  decrypt-file.js AES $aes in out --length 80
run decrypt-file.js AES $aes in out --length nonsense
[ $status -eq 2 ] || failed "--length nonsense: status $status"

# A file whose size does not tell what it holds: what is read must be what was there.
run encrypt-file.js AES $aes /proc/version out
[ $status -eq 1 ] || failed "a changing input: status $status"
grep -q ": /proc/version: changed while it was read$" err.txt || failed "a changing input: $(cat err.txt)"
[ ! -s out ] || failed "a changing input: an output is left"

# An output that cannot be finished: nothing is left, and it is said.
head -c 65536 material > in
rm -f out
(ulimit -f 32; run encrypt-file.js AES $aes in out
  [ $status -eq 1 ] || failed "a full disk: status $status"
  grep -q "^encrypt-file.js: out: Disk full$" err.txt &&
    grep -q "nothing was encrypted" err.txt || failed "a full disk: said $(cat err.txt)"
  [ ! -e out ] || failed "a full disk: a truncated output is left"
  exit $failures) || failures=$((failures + 1))

[ $failures -eq 0 ] && echo "all as expected"
[ $failures -eq 0 ]
