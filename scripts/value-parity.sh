#!/bin/sh
# Compares the automation values of the portable runtime with the platform's.
#
#   value-parity.sh PORTABLE_OUTPUT PLATFORM_OUTPUT PLATFORM_VERSION [RULES]
#
# The two files are what one program prints, built over the one and the other. A difference must be
# described by a rule of RULES, by default tests/platform/value_parity/allowed.txt, and every rule must
# describe one, but that a rule of "[N]" is for versions from N on. Prints the rules, the number of
# operations compared and that of differences.
set -eu

usage="usage: value-parity.sh PORTABLE_OUTPUT PLATFORM_OUTPUT PLATFORM_VERSION [RULES]"
portable=${1:?$usage}
platform=${2:?$usage}
version=${3:?$usage}
rules=${4:-$(cd "$(dirname "$0")/.." && pwd)/tests/platform/value_parity/allowed.txt}

echo "What may differ ($(grep -c '^[^#]' "$rules") rules):"
sed 's/^/  /' "$rules"

# A rule is matched against "section operation => portable result ## platform result".
awk -v portable="$portable" -v platform="$platform" -v version="$version" '
  /^#/ || /^$/ { next }
  /^\[[0-9]+\] / {
    if (substr($1, 2) + 0 > version + 0) next
    sub(/^\[[0-9]+\] /, "")
  }
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
  }' "$rules"
