#!/bin/sh
# side_by_side.sh FOLDER COMMAND...: runs the commands, a text each, at the same time. Their outputs go to
# FOLDER and are printed one after the other, in the order of the commands, with what each took. Fails if one
# of them does.
set -eu

mkdir -p "${1:?usage: side_by_side.sh FOLDER COMMAND...}"
folder=$(cd "$1" && pwd)
shift
[ $# -gt 0 ] || {
  echo "usage: side_by_side.sh FOLDER COMMAND..." >&2
  exit 2
}

processes=
trap 'kill $processes 2>/dev/null || true' EXIT
trap 'exit 130' INT TERM
number=0
for command; do
  number=$((number + 1))
  rm -f "$folder/$number.status"
  (
    began=$(date +%s)
    status=0
    sh -c "$command" >"$folder/$number.log" 2>&1 </dev/null || status=$?
    echo "$status $(($(date +%s) - began))" >"$folder/$number.status"
  ) &
  processes="$processes $!"
done

failed=0
number=0
for command; do
  number=$((number + 1))
  # shellcheck disable=SC2086  # a word each
  set -- $processes
  wait "$1" || true
  shift
  processes=$*
  read -r status seconds <"$folder/$number.status" || { status=killed seconds='?'; }
  echo "== $command: status $status, $seconds s"
  cat "$folder/$number.log"
  [ "$status" = 0 ] || failed=1
done
exit $failed
