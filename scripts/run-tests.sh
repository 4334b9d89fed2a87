#!/bin/sh
# run-tests.sh PRESET...: runs the tests of each preset (CMakePresets.json) in turn and ends with the
# last one's summary. All are run even if one fails; the exit status says whether all passed.
set -u
cd "$(dirname "$0")/.."

# One more than there are processors: some tests wait.
jobs=$(($(nproc) + 1))
failed=
for preset in "$@"; do
  echo "== tests: $preset"
  ctest --preset "$preset" -j"$jobs" ||
    failed="$failed $preset"
done
[ -z "$failed" ] && exit 0
echo "Tests failed in:$failed" >&2
exit 1
