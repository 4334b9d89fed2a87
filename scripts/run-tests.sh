#!/bin/sh
# run-tests.sh PRESET...: runs the tests of each build in turn and ends with the last one's summary.
# All builds are run even if one fails; the exit status says whether all passed.
set -u

failed=
for preset in "$@"; do
  echo "== tests: $preset"
  # Sanitizers: leaks count, the first report ends the program.
  ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1 \
  UBSAN_OPTIONS=print_stacktrace=1 \
  TSAN_OPTIONS=halt_on_error=1 \
    ctest --test-dir "build/$preset" -j"$(nproc)" --output-on-failure --no-tests=error ||
    failed="$failed $preset"
done
[ -z "$failed" ] && exit 0
echo "Tests failed in:$failed" >&2
exit 1
