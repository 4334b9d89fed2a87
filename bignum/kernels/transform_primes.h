// The prime fields of the number-theoretic transforms. Three primes below 2^50 with roots of unity of
// order 2^24: residues up to 4 p fit 52 bits, as the IFMA instructions multiply them.
#pragma once

#include "limb.h"

namespace mirolta {

inline constexpr uint32_t kResidueBits = 52;
inline constexpr uint64_t kResidueMask = (uint64_t{1} << kResidueBits) - 1;

// HighProduct returns the upper 64 bits of a * b.
constexpr uint64_t HighProduct(uint64_t a, uint64_t b) {
  if constexpr (kLimbBits == 64) {
    return static_cast<uint64_t>(static_cast<DoubleLimb>(a) * b >> 64);
  } else {
    const uint64_t a0 = static_cast<uint32_t>(a), a1 = a >> 32;
    const uint64_t b0 = static_cast<uint32_t>(b), b1 = b >> 32;
    const uint64_t middle = a1 * b0 + (a0 * b0 >> 32);
    const uint64_t middle2 = a0 * b1 + static_cast<uint32_t>(middle);
    return a1 * b1 + (middle >> 32) + (middle2 >> 32);
  }
}

// TransformFactor: a factor below p, and floor(factor * 2^52 / p), by which products with it are
// reduced without division.
// Source: Shoup; Harvey, Faster arithmetic for number-theoretic transforms, 2014.
struct TransformFactor {
  uint64_t factor;
  uint64_t quotient;
};

// TransformPrime: a prime p = 2^50 - gap.
struct TransformPrime {
  static constexpr uint32_t kMostRoots = 20;

  uint64_t p;
  uint64_t negated_inverse;    // -1 / p mod 2^52
  uint64_t reciprocal;         // floor(2^102 / p) - 2^52
  uint64_t high_unit;          // 2^52 mod p
  uint64_t roots[kMostRoots];  // roots[k] is a primitive root of unity of order 2^(k + 2)

  // Factor returns w with its quotient, w < p. 4 w + 4 w * reciprocal / 2^52 is the quotient or less
  // by 1 or 2.
  constexpr TransformFactor Factor(uint64_t w) const {
    uint64_t quotient = 4 * w + HighProduct(w << 14, reciprocal);
    uint64_t rest = (0 - quotient * p) & kResidueMask;
    for (; rest >= p; rest -= p) ++quotient;
    return {w, quotient};
  }
  // Product returns x * w, below p.
  // Shapes: x < 2^52.
  constexpr uint64_t Product(uint64_t x, TransformFactor w) const {
    const uint64_t r = x * w.factor - HighProduct(x << 12, w.quotient) * p;
    return r < p ? r : r - p;
  }
  // PowerOfHalf returns 1 / 2^bits mod p, bits <= 24.
  constexpr uint64_t PowerOfHalf(uint32_t bits) const { return p - ((p - 1) >> bits); }
};

// MakeTransformPrime: root is a primitive root of unity of order 2^24.
constexpr TransformPrime MakeTransformPrime(uint64_t p, uint64_t root) {
  TransformPrime prime = {};
  prime.p = p;
  const uint64_t gap = (uint64_t{1} << 50) - p;
  prime.high_unit = 4 * gap;
  // 2^102 / p = 2^52 + 2^52 * gap / p, and gap < 2^30.
  uint64_t rest = gap;
  for (uint32_t i = 0; i < kResidueBits; ++i) {
    rest *= 2;
    prime.reciprocal = prime.reciprocal * 2 + (rest >= p ? 1 : 0);
    if (rest >= p) rest -= p;
  }
  uint64_t inverse = 1;
  for (uint32_t bits = 1; bits < 64; bits *= 2) inverse *= 2 - p * inverse;
  prime.negated_inverse = (0 - inverse) & kResidueMask;
  for (uint32_t order = 24; order >= 2; --order) {
    if (order - 2 < TransformPrime::kMostRoots) prime.roots[order - 2] = root;
    root = prime.Product(root, prime.Factor(root));
  }
  return prime;
}

inline constexpr size_t kTransformPrimes = 3;
inline constexpr TransformPrime kPrimes[kTransformPrimes] = {
    MakeTransformPrime(1125899437080577, 333047468223681),
    MakeTransformPrime(1125899302862849, 584691308212614),
    MakeTransformPrime(1125899286085633, 621182173434224),
};
static_assert(kPrimes[0].Product(kPrimes[0].roots[0], kPrimes[0].Factor(kPrimes[0].roots[0])) ==
              kPrimes[0].p - 1);
static_assert(kPrimes[1].Product(kPrimes[1].roots[0], kPrimes[1].Factor(kPrimes[1].roots[0])) ==
              kPrimes[1].p - 1);
static_assert(kPrimes[2].Product(kPrimes[2].roots[0], kPrimes[2].Factor(kPrimes[2].roots[0])) ==
              kPrimes[2].p - 1);

// 1 / p0 mod p1, 1 / p0 mod p2 and 1 / p1 mod p2, for Garner's algorithm.
inline constexpr TransformFactor kInverseOfPrime0In1 = kPrimes[1].Factor(562949643042821);
inline constexpr TransformFactor kInverseOfPrime0In2 = kPrimes[2].Factor(375299754572008);
inline constexpr TransformFactor kInverseOfPrime1In2 = kPrimes[2].Factor(1125899218976806);

}  // namespace mirolta
