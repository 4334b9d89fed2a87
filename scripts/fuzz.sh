#!/bin/sh
# fuzz.sh BUILD SECONDS [HARNESS...]: runs each harness, or those named, for SECONDS, starting from
# fuzz/corpus and from BUILD/corpus of earlier runs. An input that fails is added to fuzz/corpus.
#   FUZZ_COUNT=BUILD  searches with that build, which has no sanitizers and makes many more executions;
#                     BUILD then runs every input that it has found
#   FUZZ_KEEP=1       adds inputs that reach new code to fuzz/corpus
#   FUZZ_JOBS=N       harnesses that run at once, 1 by default
# BUILD/executions has a line for each run; the table printed is of all of them.
set -u

here=$(cd "$(dirname "$0")/.." && pwd)
build=$1
seconds=$2
shift 2
count=${FUZZ_COUNT:-}

# run NAME BUILD ARGUMENT...: one run, recorded as its build's.
run() {
  name=$1
  with=$2
  shift 2
  began=$(date +%s)
  UBSAN_OPTIONS=print_stacktrace=1 "$with/fuzz/${name}_fuzz" -timeout=20 -rss_limit_mb=3000 \
    -print_final_stats=1 -verbosity=1 -artifact_prefix="$here/fuzz/corpus/$name/found-" "$@" \
    >"$with/$name.log" 2>&1
  status=$?
  sed -n 's/^stat::number_of_executed_units: *//p' "$with/$name.log" |
    while read -r executions; do
      echo "$name $(basename "$with") $executions $(($(date +%s) - began))" >>"$build/executions"
    done
  return $status
}

# one NAME: the runs of one harness.
one() {
  name=$1
  kept=$here/fuzz/corpus/$name
  found=$build/corpus/$name
  mkdir -p "$kept" "$found"
  failed=
  if [ -n "$count" ]; then
    # Few features, so that an execution costs little.
    run "$name" "$count" -max_total_time="$seconds" -max_len=128 -reload=0 -reduce_inputs=0 \
      -entropic=0 "$found" "$kept" || failed=1
    run "$name" "$build" -runs=0 -max_len=4096 "$found" "$kept" || failed=1
  else
    run "$name" "$build" -max_total_time="$seconds" -max_len=4096 -use_value_profile=1 "$found" \
      "$kept" || failed=1
  fi
  if [ "${FUZZ_KEEP:-}" = 1 ]; then
    "$build/fuzz/${name}_fuzz" -merge=1 "$kept" "$found" >/dev/null 2>&1
  fi
  [ -z "$failed" ] && return
  grep -hE 'SUMMARY|not so|ERROR' ${count:+"$count/$name.log"} "$build/$name.log" >&2
  echo "$name" >>"$build/failed"
}

if [ "${FUZZ_ONE:-}" = 1 ]; then
  one "$1"
  exit
fi
[ $# -gt 0 ] || set -- $(cd "$here/fuzz" && ls ./*_fuzz.cpp | sed 's,^\./\(.*\)_fuzz.cpp,\1,')
rm -f "$build/failed"
printf '%s\n' "$@" |
  FUZZ_ONE=1 xargs -P "${FUZZ_JOBS:-1}" -n 1 "$0" "$build" "$seconds"
awk '
  { executions[$1 " " $2] += $3; seconds[$1 " " $2] += $4; all += $3 }
  END {
    for (row in executions) {
      split(row, part, " ")
      printf "%-18s %-10s %13.0f executions %7.0f s\n", part[1], part[2], executions[row], seconds[row] | "sort"
    }
    close("sort")
    printf "%-29s %13.0f executions\n", "all", all
  }' "$build/executions"
[ ! -e "$build/failed" ] && exit 0
echo "Failed: $(tr '\n' ' ' <"$build/failed")(reports in $build)" >&2
exit 1
