#!/bin/sh
# fuzz.sh BUILD SECONDS [HARNESS...]: runs each harness, or those named, for SECONDS, starting from
# fuzz/corpus and from BUILD/corpus of earlier runs. An input that fails is added to fuzz/corpus;
# FUZZ_KEEP=1 also adds inputs that reach new code.
set -u

here=$(cd "$(dirname "$0")/.." && pwd)
build=$1
seconds=$2
shift 2
[ $# -gt 0 ] || set -- $(cd "$here/fuzz/corpus" && ls)
broken=
for name in "$@"; do
  kept=$here/fuzz/corpus/$name
  found=$build/corpus/$name
  mkdir -p "$found"
  echo "== $name"
  UBSAN_OPTIONS=print_stacktrace=1 "$build/fuzz/${name}_fuzz" -max_total_time="$seconds" \
    -timeout=20 -rss_limit_mb=3000 -max_len=4096 -print_final_stats=1 -verbosity=1 \
    -artifact_prefix="$kept/found-" "$found" "$kept" >"$build/$name.log" 2>&1 ||
    broken="$broken $name"
  grep -E 'number_of_executed_units|SUMMARY|not so|ERROR' "$build/$name.log"
  if [ "${FUZZ_KEEP:-}" = 1 ]; then
    "$build/fuzz/${name}_fuzz" -merge=1 "$kept" "$found" >/dev/null 2>&1
  fi
done
[ -z "$broken" ] && exit 0
echo "Failed:$broken (reports in $build)" >&2
exit 1
