#!/bin/sh
# run_little_memory.sh HOST SCRIPT: runs the script in 160 MB of address space. The host must not
# crash, and every call that fails must be an out-of-memory error.
set -u
ulimit -v 160000
output=$("$1" "$2" 2>/dev/null) || { echo "status $?"; echo "$output" | cut -c1-80; exit 1; }
echo "$output" | cut -c1-80
bad=$(echo "$output" | sed 1d | sed '$d' | grep -v -e ' -2147024882 ' -e ' -2147287032 ' -e ' no error$')
[ -z "$bad" ] || { echo "unexpected: $bad"; exit 1; }
[ "$(echo "$output" | grep -c -e ' -2147024882 ' -e ' -2147287032 ')" -ge 6 ] || exit 1
[ "$(echo "$output" | tail -n 1)" = "1 1" ]
