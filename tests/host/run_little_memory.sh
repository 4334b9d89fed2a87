#!/bin/sh
# run_little_memory.sh HOST SCRIPT: runs the script in 160 MB of addresses. No call may bring the
# host down, and those that cannot be done are errors that say so.
set -u
ulimit -v 160000
output=$("$1" "$2" 2>/dev/null) || { echo "status $?"; echo "$output" | cut -c1-80; exit 1; }
echo "$output" | cut -c1-80
bad=$(echo "$output" | sed 1d | sed '$d' | grep -v -e ' -2147024882 ' -e ' -2147287032 ' -e ' no error$')
[ -z "$bad" ] || { echo "unexpected: $bad"; exit 1; }
[ "$(echo "$output" | grep -c -e ' -2147024882 ' -e ' -2147287032 ')" -ge 6 ] || exit 1
[ "$(echo "$output" | tail -n 1)" = "1 1" ]
