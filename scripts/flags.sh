#!/bin/sh
# flags.sh [ROW...]: builds everything once a row of the table below, or once for each row named,
# runs its tests, and compares what the examples print and write there with what the native build's
# do, byte by byte. Code that leans on the sign of char, on the size of long, size_t or a pointer, on
# values read as another type, or on what one optimizer happens to do, fails in some row.
#
#   FLAGS_JOBS   programs compiled and tests run at once, one for each processor if not set
#   FLAGS_BUILD  folder of the rows' builds, build/flags if not set
#   FLAGS_NATIVE folder of the build to compare with, build/native if not set
set -u

# NAME | compiler flags, in place of the release build's | more for cmake. A row has several flags that
# have nothing to do with each other. The release build itself is the row of -O3 without -flto.
table() {
  cat <<'ROWS'
O0     | -O0 -funsigned-char |
lto    | -O3 -flto=auto      |
clang  | -O2                 | -DCMAKE_CXX_COMPILER=clang++
libc++ | -O2 -stdlib=libc++  | -DCMAKE_CXX_COMPILER=clang++ -DMIROLTA_GTEST_SOURCE=/usr/src/googletest/googletest
32-bit | -O2                 | --toolchain cmake/linux-i686.cmake -DMIROLTA_I386=build/i386
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

# run_row NAME FLAGS MORE: the row's summary line on standard output; its status says if all is well.
run_row() {
  build=$builds/$1
  log=$builds/$1.log
  if [ "$1" = 32-bit ]; then
    if ! scripts/i386-packages.sh build/i386 libssl-dev libgmp-dev libgtest-dev duktape-dev \
      >"$log" 2>&1; then
      echo "no 32-bit libraries (see $log)"
      return 1
    fi
    # The character sets of the system's library are modules of its own kind.
    export GCONV_PATH="$root/build/i386/root/usr/lib/i386-linux-gnu/gconv"
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
