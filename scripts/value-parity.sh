#!/bin/sh
# Compares the automation values of the portable runtime with those of the platform, run under Wine.
#
#   value-parity.sh WORK_FOLDER [COMPILER] [WINDOWS_COMPILER] [WINE]
#
# Builds tests/platform/value_parity.cpp twice, runs both and compares the outputs line by line. A
# difference must be described by a rule of tests/platform/value_parity_allowed.txt, and every rule
# must describe one. Prints the number of operations compared and of allowed differences.
set -eu

work=${1:?usage: value-parity.sh WORK_FOLDER [COMPILER] [WINDOWS_COMPILER] [WINE]}
compiler=${2:-c++}
windows_compiler=${3:-x86_64-w64-mingw32-g++}
wine=${4:-wine}
root=$(cd "$(dirname "$0")/.." && pwd)
program=$root/tests/platform/value_parity.cpp
mkdir -p "$work/objects"
work=$(cd "$work" && pwd)

# The runtime's sources are newer than their objects after a change only; headers rebuild all.
newest_header=$(ls -t "$root"/platform/*.h "$root"/platform/*/*.h | head -n 1)
for source in "$root"/platform/runtime/*.cpp; do
  object=$work/objects/$(basename "$source" .cpp).o
  if [ ! -e "$object" ] || [ "$source" -nt "$object" ] || [ "$newest_header" -nt "$object" ]; then
    "$compiler" -std=c++20 -O1 -fno-strict-aliasing -I"$root/platform" \
      -I"$root/platform/runtime" -c "$source" -o "$object"
  fi
done
"$compiler" -std=c++20 -O1 -fno-strict-aliasing -I"$root/platform" "$program" \
  "$work"/objects/*.o -o "$work/value_parity" -ldl -lpthread
"$windows_compiler" -std=c++20 -O1 -static -D__USE_MINGW_ANSI_STDIO=1 -I"$root/platform" \
  "$program" -o "$work/value_parity.exe" -loleaut32 -lole32 -luuid -ladvapi32

LC_ALL=C "$work/value_parity" >"$work/portable.txt"
WINEPREFIX=${WINEPREFIX:-$work/wine}
export WINEPREFIX
WINEDEBUG=-all WINEDLLOVERRIDES="mscoree=;mshtml=" "$wine" "$work/value_parity.exe" |
  tr -d '\r' >"$work/platform.txt"

# A rule is matched against "section operation => portable result ## platform result".
awk -v portable="$work/portable.txt" -v platform="$work/platform.txt" '
  /^#/ || /^$/ { next }
  { rules[++rule_count] = $0 }
  END {
    for (;;) {
      more = getline ours < portable
      theirs_more = getline theirs < platform
      if (more != theirs_more) { print "the outputs differ in length"; failed = 1; break }
      if (more <= 0) break
      ++compared
      if (ours == theirs) continue
      at = index(theirs, " => ")
      if (substr(ours, 1, index(ours, " => ")) != substr(theirs, 1, at)) {
        print "the operations differ: " ours " / " theirs
        failed = 1
        continue
      }
      difference = ours " ## " substr(theirs, at + 4)
      sub(/ [0-9]+ /, " ", difference)  # the running number
      found = 0
      for (i = 1; i <= rule_count; ++i) {
        if (difference ~ rules[i]) { found = 1; used[i] = 1 }
      }
      if (found) { ++allowed } else { print "different: " difference; failed = 1 }
    }
    for (i = 1; i <= rule_count; ++i) {
      if (!used[i]) { print "rule without a difference: " rules[i]; failed = 1 }
    }
    printf "%d operations compared, %d differences allowed\n", compared, allowed
    exit failed || compared == 0
  }' "$root/tests/platform/value_parity_allowed.txt"
