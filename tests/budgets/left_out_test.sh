#!/bin/sh
# left_out_test.sh SOURCE BUILD: builds the module without each class, with one class alone, and without the
# tables of AES. Each has the classes that it should have, and no others.
set -eu
source=$1
build=$2
status=0
all="HashObject SymmetricCryptObject PexBigNumber RSACrypt ToviStreamDigest ToviStreamCrypt"

# check NAME CMAKE_ARGUMENT... -- CLASS...
check() {
  name=$1
  shift
  arguments=
  while [ "$1" != -- ]; do
    arguments="$arguments $1"
    shift
  done
  shift
  # shellcheck disable=SC2086  # a list of arguments
  if ! { cmake -S "$source" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=MinSizeRel -DMIROLTA_HOST=OFF \
    -DMIROLTA_BUDGETS=ON $arguments && cmake --build "$build" --target mirolta left_out_probe; } >"$build.log" 2>&1
  then
    tail -20 "$build.log"
    echo "left_out_test: $name does not build" >&2
    status=1
    return
  fi
  rm -f "$build/registry"
  if ! MIROLTA_REGISTRY="$build/registry" "$build/tests/left_out_probe" "$@"; then
    echo "left_out_test: $name" >&2
    status=1
  fi
  strip -o "$build/stripped.so" "$build/lib/libMirolta.so"
  printf '%-32s%10d bytes\n' "$name" "$(wc -c <"$build/stripped.so")"
}

mkdir -p "$build"
# shellcheck disable=SC2086  # lists of classes
check all -DMIROLTA_CLASSES= -DMIROLTA_AES_TABLES=ON -- $all
for class in $all; do
  rest=$(echo "$all" | sed "s/\\b$class\\b//; s/^ //; s/ \$//; s/  */ /")
  # shellcheck disable=SC2086
  check "without $class" "-DMIROLTA_CLASSES=$(echo "$rest" | tr ' ' ';')" -- $rest
done
check "HashObject alone" -DMIROLTA_CLASSES=HashObject -- HashObject
# shellcheck disable=SC2086
check "without tables of AES" -DMIROLTA_CLASSES= -DMIROLTA_AES_TABLES=OFF -- $all
if nm "$build/lib/libMirolta.so" | grep -q AesEncryptPortable; then
  echo "left_out_test: the tables' kernels are part of the build without tables" >&2
  status=1
fi
if "$build/tests/left_out_probe" HashObject >/dev/null 2>&1; then
  echo "left_out_test: the probe accepts a module with other classes" >&2
  status=1
fi
if cmake -S "$source" -B "$build" -DMIROLTA_CLASSES=NoSuchClass >/dev/null 2>&1; then
  echo "left_out_test: an unknown class is accepted" >&2
  status=1
fi
exit $status
