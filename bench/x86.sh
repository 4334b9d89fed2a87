#!/bin/sh
# x86.sh BUILD [PATTERN]: measures the rows of a 32-bit build, or those whose names match, with each level of
# the processor's features, for the peers too. Without a pattern it writes the processor's pages below
# docs/benchmarks, of what has requirements in this mode; all rows would take hours.
set -eu

build=$1
pattern=${2:-}
page='^(kernel/|engine/(MD5|SHA|HMAC|multiply|divide|inverse|gcd|power|RSA private)).*(bytes|iB|directions|[^0-9][0-9]{1,4} bits)$'

# LEVEL | MIROLTA_TEST_FEATURES, the bits of ProcessorFeature | OPENSSL_ia32cap, as make bench-avx2 has it.
# The program tells libgcrypt and Botan; nettle and GMP have nothing beyond SSE2 in this mode.
levels() {
  cat <<'END'
all  |        |
avx2 | 0x201f | :~0x600c0230000
sse2 | 0x2000 | ~0x1218120200000000:0
END
}

levels | while IFS='| ' read -r level features openssl; do
  results=$build/results-$level.json
  (
    [ -z "$features" ] || export MIROLTA_TEST_FEATURES="$features" OPENSSL_ia32cap="$openssl"
    "$build/bin/mirolta-bench" "$results" "${pattern:-$page}"
  ) </dev/null
  if [ -n "$pattern" ]; then
    python3 -B bench/table.py "$results"
  else
    python3 -B bench/table.py --pages docs/benchmarks "$results"
  fi
done
