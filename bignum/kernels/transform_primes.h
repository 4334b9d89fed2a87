// The prime fields of the number-theoretic transforms. Either three primes below 2^50 with roots of unity of
// order 2^24: residues up to 4 p fit 52 bits, as the IFMA instructions multiply them. Or three pairs of
// primes below 2^30, whose residues up to 4 p fit the halves of 64 bits, as vectors without IFMA multiply them.
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
// reduced without division. Of a pair each half is a factor times 2^32, and the quotient that times 1 / p mod 2^32.
// Source: Shoup; Harvey, Faster arithmetic for number-theoretic transforms, 2014; Montgomery 1985 for pairs.
struct TransformFactor {
  uint64_t factor;
  uint64_t quotient;
};

// ProductOfHalves returns x * w / 2^32 mod p below p, for x of 32 bits and a factor w of half a pair.
constexpr uint32_t ProductOfHalves(uint32_t x, uint32_t factor, uint32_t quotient, uint32_t p) {
  const uint64_t product = uint64_t{x} * factor;
  const uint64_t multiple = uint64_t{x * quotient} * p;
  // The lower halves are equal.
  const uint32_t r = static_cast<uint32_t>(product >> 32) - static_cast<uint32_t>(multiple >> 32);
  return r < p ? r : r + p;
}
constexpr uint64_t JoinHalves(uint32_t low, uint32_t high) {
  return low | static_cast<uint64_t>(high) << 32;
}

// TransformPrime: a prime p = 2^50 - gap; or a pair, whose members are those of two primes in the halves of
// 64 bits, every residue w as w * 2^32.
struct TransformPrime {
  static constexpr uint32_t kMostRoots = 20;

  bool is_pair;
  uint64_t p;
  uint64_t one;
  uint64_t inverse;            // -1 / p mod 2^52; of a pair 1 / p mod 2^32
  uint64_t reciprocal;         // floor(2^102 / p) - 2^52; not of a pair
  uint64_t high_unit;          // 2^52 mod p, of a pair 2^32: what products of blocks are divided by
  uint64_t roots[kMostRoots];  // roots[k] is a primitive root of unity of order 2^(k + 2)

  // Modulus returns the prime, or the product of a pair.
  constexpr uint64_t Modulus() const {
    return is_pair ? static_cast<uint64_t>(static_cast<uint32_t>(p)) * (p >> 32) : p;
  }
  // Factor returns w with its quotient, w < p. 4 w + 4 w * reciprocal / 2^52 is the quotient or less
  // by 1 or 2.
  constexpr TransformFactor Factor(uint64_t w) const {
    if (is_pair) {
      const uint32_t low = static_cast<uint32_t>(w) * static_cast<uint32_t>(inverse);
      const uint32_t high = static_cast<uint32_t>(w >> 32) * static_cast<uint32_t>(inverse >> 32);
      return {w, JoinHalves(low, high)};
    }
    uint64_t quotient = 4 * w + HighProduct(w << 14, reciprocal);
    uint64_t rest = (0 - quotient * p) & kResidueMask;
    for (; rest >= p; rest -= p) ++quotient;
    return {w, quotient};
  }
  // Product returns x * w, below p.
  // Shapes: x < 2^52, or any pair.
  constexpr uint64_t Product(uint64_t x, TransformFactor w) const {
    if (is_pair) {
      const auto half = [&](uint32_t shift) {
        return ProductOfHalves(
            static_cast<uint32_t>(x >> shift), static_cast<uint32_t>(w.factor >> shift),
            static_cast<uint32_t>(w.quotient >> shift), static_cast<uint32_t>(p >> shift));
      };
      return JoinHalves(half(0), half(32));
    }
    const uint64_t r = x * w.factor - HighProduct(x << 12, w.quotient) * p;
    return r < p ? r : r - p;
  }
  // PowerOfHalf returns 1 / 2^bits mod p, bits <= 24.
  constexpr uint64_t PowerOfHalf(uint32_t bits) const {
    if (!is_pair) return p - ((p - 1) >> bits);
    uint64_t power = one;
    for (; bits != 0; --bits) {
      // Odd halves become even by their primes.
      const uint64_t odd = power & JoinHalves(1, 1);
      power += p & (odd * UINT32_MAX);
      power = power >> 1 & JoinHalves(UINT32_MAX >> 1, UINT32_MAX >> 1);
    }
    return power;
  }
};

// MakeTransformPrime: root is a primitive root of unity of order 2^24.
constexpr TransformPrime MakeTransformPrime(uint64_t p, uint64_t root) {
  TransformPrime prime = {};
  prime.p = p;
  prime.one = 1;
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
  prime.inverse = (0 - inverse) & kResidueMask;
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

// Roots of unity of every order up to 2^21 modulo a prime below 2^30 that has them.
struct SmallPrimeRoots {
  uint32_t roots[TransformPrime::kMostRoots];
};
constexpr uint32_t PowerModulo(uint64_t base, uint32_t exponent, uint32_t p) {
  uint64_t power = 1;
  for (base %= p; exponent != 0; exponent >>= 1) {
    if (exponent % 2 != 0) power = power * base % p;
    base = base * base % p;
  }
  return static_cast<uint32_t>(power);
}
constexpr SmallPrimeRoots FindRoots(uint32_t p) {
  constexpr uint32_t kMost = TransformPrime::kMostRoots;
  uint64_t root = 0;
  for (uint32_t base = 2; PowerModulo(root, uint32_t{1} << kMost, p) != p - 1; ++base) {
    root = PowerModulo(base, (p - 1) >> (kMost + 1), p);
  }
  SmallPrimeRoots roots = {};
  for (uint32_t k = kMost; k-- != 0; root = root * root % p)
    roots.roots[k] = static_cast<uint32_t>(root);
  return roots;
}
constexpr uint32_t TimesTwoTo32(uint64_t w, uint32_t p) {
  return static_cast<uint32_t>((w << 32) % p);
}
constexpr TransformPrime MakePrimePair(uint32_t p0, uint32_t p1) {
  TransformPrime pair = {};
  pair.is_pair = true;
  pair.p = JoinHalves(p0, p1);
  pair.one = JoinHalves(TimesTwoTo32(1, p0), TimesTwoTo32(1, p1));
  uint32_t inverse0 = 1, inverse1 = 1;
  for (uint32_t bits = 1; bits < 32; bits *= 2) {
    inverse0 *= 2 - p0 * inverse0;
    inverse1 *= 2 - p1 * inverse1;
  }
  pair.inverse = JoinHalves(inverse0, inverse1);
  pair.high_unit =
      JoinHalves(TimesTwoTo32(TimesTwoTo32(1, p0), p0), TimesTwoTo32(TimesTwoTo32(1, p1), p1));
  const SmallPrimeRoots roots0 = FindRoots(p0), roots1 = FindRoots(p1);
  for (uint32_t k = 0; k < TransformPrime::kMostRoots; ++k) {
    pair.roots[k] =
        JoinHalves(TimesTwoTo32(roots0.roots[k], p0), TimesTwoTo32(roots1.roots[k], p1));
  }
  return pair;
}

// The primes of the pairs, which are 1 modulo 2^21.
inline constexpr uint32_t kSmallPrimes[2 * kTransformPrimes] = {1012924417, 1004535809, 998244353,
                                                                985661441,  975175681,  962592769};
inline constexpr TransformPrime kPrimePairs[kTransformPrimes] = {
    MakePrimePair(kSmallPrimes[0], kSmallPrimes[1]),
    MakePrimePair(kSmallPrimes[2], kSmallPrimes[3]),
    MakePrimePair(kSmallPrimes[4], kSmallPrimes[5]),
};

// PairDigit: digit v(k) of Garner's algorithm is own x + below[0] v(0) + ... + below[k - 1] v(k - 1) modulo p(k)
// for the residue x: (x - v(0) - p(0) v(1) - ...) / (p(0) ... p(k - 1)), every factor times 2^32.
struct PairDigit {
  uint32_t own;
  uint32_t below[2 * kTransformPrimes - 1];
  uint32_t negated_inverse;  // -1 / p(k) mod 2^32
};
struct PairDigits {
  PairDigit of[2 * kTransformPrimes];
};
constexpr PairDigits MakePairDigits() {
  PairDigits digits = {};
  for (size_t k = 0; k < 2 * kTransformPrimes; ++k) {
    const uint64_t p = kSmallPrimes[k];
    uint64_t own = TimesTwoTo32(1, kSmallPrimes[k]);
    for (size_t i = 0; i < k; ++i) {
      own = own * PowerModulo(kSmallPrimes[i], kSmallPrimes[k] - 2, kSmallPrimes[k]) % p;
    }
    digits.of[k].own = static_cast<uint32_t>(own);
    uint64_t below = p - own;
    for (size_t i = 0; i < k; ++i) {
      digits.of[k].below[i] = static_cast<uint32_t>(below);
      below = below * kSmallPrimes[i] % p;
    }
    const uint64_t inverse = kPrimePairs[k / 2].inverse >> (k % 2 * 32);
    digits.of[k].negated_inverse = 0 - static_cast<uint32_t>(inverse);
  }
  return digits;
}
inline constexpr PairDigits kPairDigits = MakePairDigits();

// 1 / p0 mod p1, 1 / p0 mod p2 and 1 / p1 mod p2, for Garner's algorithm.
inline constexpr TransformFactor kInverseOfPrime0In1 = kPrimes[1].Factor(562949643042821);
inline constexpr TransformFactor kInverseOfPrime0In2 = kPrimes[2].Factor(375299754572008);
inline constexpr TransformFactor kInverseOfPrime1In2 = kPrimes[2].Factor(1125899218976806);

}  // namespace mirolta
