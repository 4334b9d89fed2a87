#!/bin/sh
# transcript_test.sh TRANSCRIPT NATIVE_HOST HOST SCRATCH: the examples print and write the same bytes on
# two hosts.
set -eu

mkdir -p "$4"
"$1" "$2" "$4/native" >"$4/native.txt"
"$1" "$3" "$4/emulated" >"$4/emulated.txt"
[ "$(grep -c '^== ' "$4/native.txt")" -gt 30 ] || {
  echo "hardly any examples in $4/native.txt" >&2
  exit 1
}
diff "$4/native.txt" "$4/emulated.txt"
