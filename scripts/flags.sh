#!/bin/sh
# flags.sh [ROW...]: builds everything for each row of the table below, or for the rows named, runs the
# tests, and compares the output and files of the examples with those of the native build byte by byte.
# Code that depends on the signedness of char, on the size of long, size_t or pointers, on type punning,
# or on one optimiser, fails in some row.
#
#   FLAGS_JOBS   parallel compilations and tests, by default the number of processors
#   FLAGS_BUILD  folder of the rows' builds, by default build/flags
#   FLAGS_NATIVE folder of the build to compare with, by default build/native
set -u

# NAME | compiler flags instead of the release build's | further arguments of cmake. A row combines
# independent flags. The release build itself covers -O3 without -flto.
table() {
  cat <<'ROWS'
O0     | -O0 -funsigned-char |
lto    | -O3 -flto=auto      |
clang  | -O2                 | -DCMAKE_CXX_COMPILER=clang++
libc++ | -O2 -stdlib=libc++  | -DCMAKE_CXX_COMPILER=clang++ -DMIROLTA_GTEST_SOURCE=/usr/src/googletest/googletest
32-bit | -O2                 | --toolchain cmake/linux-i686.cmake -DMIROLTA_TARGET_PACKAGES=build/packages/i386
ROWS
}

root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root" || exit 1
jobs=${FLAGS_JOBS:-$(nproc)}
builds=${FLAGS_BUILD:-build/flags}
native=${FLAGS_NATIVE:-build/native}
mkdir -p "$builds"

trimmed() {
  echo "$1" | sed 's/^ *//; s/ *$//'
}

# run_row NAME FLAGS MORE: prints the row's summary line; fails if a test or the transcript does.
run_row() {
  build=$builds/$1
  log=$builds/$1.log
  if [ "$1" = 32-bit ]; then
    if ! scripts/target-packages.sh i386 build/packages/i386 libssl-dev libgmp-dev libgtest-dev duktape-dev \
      libedit-dev >"$log" 2>&1; then
      echo "no 32-bit libraries (see $log)"
      return 1
    fi
    # The C library loads its character sets as modules, which must be 32-bit too.
    export GCONV_PATH="$root/build/packages/i386/root/usr/lib/i386-linux-gnu/gconv"
  fi
  # shellcheck disable=SC2086  # $3 is a list of arguments
  if ! { cmake -S . -B "$build" -DMIROLTA_TESTS=ON -DCMAKE_COMPILE_WARNING_AS_ERROR=ON \
    "-DCMAKE_CXX_FLAGS_RELEASE=$2" $3 &&
    cmake --build "$build" -j"$jobs"; } >"$log" 2>&1; then
    echo "no build (see $log)"
    return 1
  fi
  ctest --test-dir "$build" -j"$jobs" --output-on-failure --no-tests=error >"$build/tests.txt" 2>&1
  status=$?
  counts=$(sed -n 's/.*tests passed, \([0-9]*\) tests failed out of \([0-9]*\)/\1 \2/p' \
    "$build/tests.txt")
  counts=${counts:-0 0}
  total=${counts#* }
  line="$((total - ${counts% *}))/$total tests passed"
  [ $status = 0 ] || line="$line (see $build/tests.txt)"
  if scripts/transcript.sh "$build/bin/mirolta-host" "$build/transcript" >"$build/transcript.txt" &&
    cmp -s "$build/transcript.txt" "$builds/transcript.txt"; then
    echo "$line, same transcript"
    return $status
  fi
  echo "$line, other transcript: $build/transcript.txt"
  return 1
}

scripts/transcript.sh "$native/bin/mirolta-host" "$builds/transcript" >"$builds/transcript.txt" || {
  echo "no transcript of $native" >&2
  exit 1
}
wanted=" $* "
table | {
  failed=
  while IFS='|' read -r name flags more; do
    name=$(trimmed "$name") flags=$(trimmed "$flags")
    [ "$wanted" = "  " ] || case $wanted in *" $name "*) ;; *) continue ;; esac
    result=$(run_row "$name" "$flags" "$more" </dev/null) || failed="$failed $name"
    printf '%-7s %-20s %s\n' "$name" "$flags" "$result"
  done
  [ -z "$failed" ] && exit 0
  echo "Failed:$failed" >&2
  exit 1
}
