#!/bin/sh
# run_closed_pipe.sh HOST SCRIPT SCRATCH: the reader of the host's output closes the pipe at once. A
# script that catches the error ends with its own status; otherwise it ends with 1 and a report.
set -u
mkdir -p "$3"
{ "$1" "$2" 2>"$3/errors"; echo $? >"$3/status"; } | true
{ "$1" "$2" uncaught 2>"$3/uncaught"; echo $? >"$3/uncaught-status"; } | true
cat "$3/errors" "$3/uncaught"
[ "$(cat "$3/status")" = 3 ] || exit 1
[ "$(cat "$3/uncaught-status")" = 1 ] || exit 1
grep -q 'The output cannot be written' "$3/uncaught"
