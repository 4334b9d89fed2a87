// The loops of the number-theoretic transforms over any instruction set. The file that includes it
// defines MIROLTA_TRANSFORM_TARGET, the attribute of functions that use the instructions.
#pragma once

#include "transform_kernels.h"

namespace mirolta {

// TransformLoops computes on words of V::kWidth residues that are adjacent in memory: V::Word, with
// operations on each, or on both halves of each if V::kHasPairs. V::Product(x, w, q, field) is x * w mod p below
// 2 p, for any x < 2^52 or any halves.
template <typename V>
struct TransformLoops {
  using Word = typename V::Word;
  static constexpr size_t kStep = V::kWidth * kElementLimbs;  // limbs of a word

  // Field: a prime's constants in each lane.
  struct Field {
    MIROLTA_TRANSFORM_TARGET explicit Field(const TransformPrime& prime)
        : p(V::Set(prime.p)),
          two_p(V::Set(2 * prime.p)),
          negated_p(V::Set(0 - prime.p)),
          high_unit(V::Set(prime.high_unit)),
          high_quotient(V::Set(V::kHasPairs ? prime.Factor(prime.high_unit).quotient : 0)) {}
    Word p, two_p, negated_p;  // of negated_p products take the low kResidueBits
    Word high_unit, high_quotient;
  };
  struct Factor {
    MIROLTA_TRANSFORM_TARGET explicit Factor(TransformFactor w)
        : factor(V::Set(w.factor)), quotient(V::Set(w.quotient)) {}
    MIROLTA_TRANSFORM_TARGET Factor(const TransformTable& table, size_t j)
        : factor(V::Broadcast(table.factors + j * kElementLimbs)),
          quotient(V::Broadcast(table.quotients + j * kElementLimbs)) {}
    Word factor, quotient;
  };

  // x mod m for x < 2 m: x - m wraps to a large number unless x >= m.
  MIROLTA_TRANSFORM_TARGET static inline Word Reduce(Word x, Word m) {
    return V::Min(x, V::Subtract(x, m));
  }
  MIROLTA_TRANSFORM_TARGET static inline Word Product(Word x, const Factor& w, const Field& f) {
    return V::Product(x, w.factor, w.quotient, f.p, f.negated_p);
  }

  // x, y := x + y, x - y + 2 p, for x < 4 p and y < 2 p.
  MIROLTA_TRANSFORM_TARGET static inline void AddSubtract(Word& x, Word& y, const Field& f) {
    x = Reduce(x, f.two_p);
    const Word difference = V::Add(V::Subtract(x, y), f.two_p);
    x = V::Add(x, y);
    y = difference;
  }
  // x, y := x + y w, x - y w below 4 p, for x and y below 4 p.
  MIROLTA_TRANSFORM_TARGET static inline void Butterfly(Word& x, Word& y, const Factor& w,
                                                        const Field& f) {
    y = Product(y, w, f);
    AddSubtract(x, y, f);
  }
  MIROLTA_TRANSFORM_TARGET static inline void PlainButterfly(Word& x, Word& y, const Field& f) {
    y = Reduce(y, f.two_p);
    AddSubtract(x, y, f);
  }
  // x, y := x + y, (y - x) w below 2 p, for x and y below 2 p.
  MIROLTA_TRANSFORM_TARGET static inline void InverseButterfly(Word& x, Word& y, const Factor& w,
                                                               const Field& f) {
    const Word difference = V::Add(V::Subtract(y, x), f.two_p);
    x = Reduce(V::Add(x, y), f.two_p);
    y = Product(difference, w, f);
  }
  MIROLTA_TRANSFORM_TARGET static inline void PlainInverseButterfly(Word& x, Word& y,
                                                                    const Field& f) {
    const Word difference = V::Add(V::Subtract(x, y), f.two_p);
    x = Reduce(V::Add(x, y), f.two_p);
    y = Reduce(difference, f.two_p);
  }

  // -1 / R(2j) is entry InverseNode(j) of the table, for j >= 1: the roots of nodes 2^k to
  // 2^(k + 1) - 1 are the odd powers of a root of order 2^(k + 2), in bit-reversed order.
  static size_t InverseNode(size_t j) {
    size_t low = j;
    for (size_t shift = 1; shift < sizeof(size_t) * 8; shift *= 2) low |= low >> shift;
    return j ^ (low >> 1);
  }

  // Two levels of node j at once, on quarters of that many limbs.
  MIROLTA_TRANSFORM_TARGET static inline void ForwardQuarters(Limb* z, size_t quarter, size_t node,
                                                              const TransformTable& table,
                                                              const Field& f) {
    const Factor w(table, node), w0(table, 2 * node), w1(table, 2 * node + 1);
    Limb* const z1 = z + quarter;
    Limb* const z2 = z1 + quarter;
    Limb* const z3 = z2 + quarter;
    for (size_t i = 0; i < quarter; i += kStep) {
      Word a0 = V::Load(z + i), a1 = V::Load(z1 + i), a2 = V::Load(z2 + i), a3 = V::Load(z3 + i);
      Butterfly(a0, a2, w, f);
      Butterfly(a1, a3, w, f);
      Butterfly(a0, a1, w0, f);
      Butterfly(a2, a3, w1, f);
      V::Store(z + i, a0);
      V::Store(z1 + i, a1);
      V::Store(z2 + i, a2);
      V::Store(z3 + i, a3);
    }
  }
  // The same for node 0, whose roots are 1, 1 and the square root of -1.
  MIROLTA_TRANSFORM_TARGET static inline void ForwardFirst(Limb* z, size_t quarter,
                                                           const TransformTable& table,
                                                           const Field& f) {
    const Factor w(table, 1);
    Limb* const z1 = z + quarter;
    Limb* const z2 = z1 + quarter;
    Limb* const z3 = z2 + quarter;
    for (size_t i = 0; i < quarter; i += kStep) {
      Word a0 = V::Load(z + i), a1 = V::Load(z1 + i), a2 = V::Load(z2 + i), a3 = V::Load(z3 + i);
      PlainButterfly(a0, a2, f);
      PlainButterfly(a1, a3, f);
      PlainButterfly(a0, a1, f);
      Butterfly(a2, a3, w, f);
      V::Store(z + i, a0);
      V::Store(z1 + i, a1);
      V::Store(z2 + i, a2);
      V::Store(z3 + i, a3);
    }
  }
  MIROLTA_TRANSFORM_TARGET static inline void InverseQuarters(Limb* z, size_t quarter, size_t node,
                                                              const TransformTable& table,
                                                              const Field& f) {
    const size_t inverse = InverseNode(node);
    const Factor w(table, inverse), w0(table, 2 * inverse + 1), w1(table, 2 * inverse);
    Limb* const z1 = z + quarter;
    Limb* const z2 = z1 + quarter;
    Limb* const z3 = z2 + quarter;
    for (size_t i = 0; i < quarter; i += kStep) {
      Word a0 = V::Load(z + i), a1 = V::Load(z1 + i), a2 = V::Load(z2 + i), a3 = V::Load(z3 + i);
      InverseButterfly(a0, a1, w0, f);
      InverseButterfly(a2, a3, w1, f);
      InverseButterfly(a0, a2, w, f);
      InverseButterfly(a1, a3, w, f);
      V::Store(z + i, a0);
      V::Store(z1 + i, a1);
      V::Store(z2 + i, a2);
      V::Store(z3 + i, a3);
    }
  }
  MIROLTA_TRANSFORM_TARGET static inline void InverseFirst(Limb* z, size_t quarter,
                                                           const TransformTable& table,
                                                           const Field& f) {
    const Factor w(table, 1);
    Limb* const z1 = z + quarter;
    Limb* const z2 = z1 + quarter;
    Limb* const z3 = z2 + quarter;
    for (size_t i = 0; i < quarter; i += kStep) {
      Word a0 = V::Load(z + i), a1 = V::Load(z1 + i), a2 = V::Load(z2 + i), a3 = V::Load(z3 + i);
      PlainInverseButterfly(a0, a1, f);
      InverseButterfly(a2, a3, w, f);
      PlainInverseButterfly(a0, a2, f);
      PlainInverseButterfly(a1, a3, f);
      V::Store(z + i, a0);
      V::Store(z1 + i, a1);
      V::Store(z2 + i, a2);
      V::Store(z3 + i, a3);
    }
  }

  // Up to this many blocks are transformed level by level; they fit the first cache. More are split
  // in four first.
  static constexpr size_t kCachedBlocks = 512;

  MIROLTA_TRANSFORM_TARGET static void ForwardLevel(Limb* z, size_t n, size_t node,
                                                    const TransformTable& table, const Field& f) {
    if (node == 0) {
      ForwardFirst(z, n / 4 * kBlockLimbs, table, f);
    } else {
      ForwardQuarters(z, n / 4 * kBlockLimbs, node, table, f);
    }
  }
  MIROLTA_TRANSFORM_TARGET static void ForwardParts(Limb* z, size_t n, size_t node,
                                                    const TransformTable& table, const Field& f) {
    if (n > kCachedBlocks) {
      ForwardLevel(z, n, node, table, f);
      for (size_t i = 0; i < 4; ++i) {
        ForwardParts(z + i * (n / 4) * kBlockLimbs, n / 4, 4 * node + i, table, f);
      }
      return;
    }
    size_t length = n;
    for (; length >= 4; length /= 4) {
      size_t i = 0;
      const size_t first = node * (n / length);
      if (first == 0) ForwardLevel(z, length, i++, table, f);
      for (; i < n / length; ++i) {
        ForwardQuarters(z + i * length * kBlockLimbs, length / 4 * kBlockLimbs, first + i, table,
                        f);
      }
    }
    if (length == 1) return;
    for (size_t i = 0; i < n / 2; ++i) {
      const Factor w(table, node * (n / 2) + i);
      for (size_t j = 0; j < kBlockLimbs; j += kStep) {
        Limb* const z0 = z + 2 * i * kBlockLimbs + j;
        Word a0 = V::Load(z0), a1 = V::Load(z0 + kBlockLimbs);
        Butterfly(a0, a1, w, f);
        V::Store(z0, a0);
        V::Store(z0 + kBlockLimbs, a1);
      }
    }
  }
  MIROLTA_TRANSFORM_TARGET static void Forward(Limb* z, size_t n, size_t node,
                                               const TransformTable& table,
                                               const TransformPrime& prime) {
    ForwardParts(z, n, node, table, Field(prime));
  }

  MIROLTA_TRANSFORM_TARGET static void InverseLevel(Limb* z, size_t n, size_t node,
                                                    const TransformTable& table, const Field& f) {
    if (node == 0) {
      InverseFirst(z, n / 4 * kBlockLimbs, table, f);
    } else {
      InverseQuarters(z, n / 4 * kBlockLimbs, node, table, f);
    }
  }
  MIROLTA_TRANSFORM_TARGET static void InverseParts(Limb* z, size_t n, size_t node,
                                                    const TransformTable& table, const Field& f) {
    if (n > kCachedBlocks) {
      for (size_t i = 0; i < 4; ++i) {
        InverseParts(z + i * (n / 4) * kBlockLimbs, n / 4, 4 * node + i, table, f);
      }
      InverseLevel(z, n, node, table, f);
      return;
    }
    size_t length = 1;
    for (size_t rest = n; rest > 1; rest /= 4) {
      if (rest == 2) length = 2;
    }
    if (length == 2) {
      size_t i = 0;
      if (node == 0) {
        for (size_t j = 0; j < kBlockLimbs; j += kStep) {
          Word a0 = V::Load(z + j), a1 = V::Load(z + kBlockLimbs + j);
          PlainInverseButterfly(a0, a1, f);
          V::Store(z + j, a0);
          V::Store(z + kBlockLimbs + j, a1);
        }
        i = 1;
      }
      for (; i < n / 2; ++i) {
        const Factor w(table, InverseNode(node * (n / 2) + i));
        for (size_t j = 0; j < kBlockLimbs; j += kStep) {
          Limb* const z0 = z + 2 * i * kBlockLimbs + j;
          Word a0 = V::Load(z0), a1 = V::Load(z0 + kBlockLimbs);
          InverseButterfly(a0, a1, w, f);
          V::Store(z0, a0);
          V::Store(z0 + kBlockLimbs, a1);
        }
      }
    }
    for (length *= 4; length <= n; length *= 4) {
      size_t i = 0;
      const size_t first = node * (n / length);
      if (first == 0) InverseLevel(z, length, i++, table, f);
      for (; i < n / length; ++i) {
        InverseQuarters(z + i * length * kBlockLimbs, length / 4 * kBlockLimbs, first + i, table,
                        f);
      }
    }
  }
  MIROLTA_TRANSFORM_TARGET static void Inverse(Limb* z, size_t n, size_t node,
                                               const TransformTable& table,
                                               const TransformPrime& prime) {
    InverseParts(z, n, node, table, Field(prime));
  }

  MIROLTA_TRANSFORM_TARGET static void Extend(const TransformTable& table, size_t count,
                                              TransformFactor root, const TransformPrime& prime) {
    const Field f(prime);
    const Factor w(root);
    for (size_t i = 0; i < count * kElementLimbs; i += kStep) {
      const Word x = Reduce(Product(V::Load(table.factors + i), w, f), f.p);
      V::Store(table.factors + count * kElementLimbs + i, x);
      V::Store(table.quotients + count * kElementLimbs + i, Quotient(x, f, prime));
    }
  }
  // As TransformPrime::Factor.
  MIROLTA_TRANSFORM_TARGET static inline Word Quotient(Word x, const Field& f,
                                                       const TransformPrime& prime) {
    if constexpr (V::kHasPairs) {
      return V::LowProducts(x, V::Set(prime.inverse));
    } else {
      const Word x4 = V::template ShiftLeft<2>(x);
      Word quotient = V::AddHigh(x4, x4, V::Set(prime.reciprocal));
      Word rest = V::Mask(V::AddLow(V::Set(0), V::Mask(quotient), f.negated_p));
      for (int again = 0; again < 2; ++again) {
        quotient = V::AddIfNotLess(quotient, rest, f.p);
        rest = Reduce(rest, f.p);
      }
      return quotient;
    }
  }

  // The residue of a 64-bit coefficient, below 2 p + 2^44, of a pair 2^32 - 2 p.
  MIROLTA_TRANSFORM_TARGET static inline Word Residue(Word x, const Field& f) {
    if constexpr (V::kHasPairs) {
      // By both primes: the lower half, and the upper one times 2^32.
      const Word low = Reduce(V::LowTwice(x), f.two_p);
      const Word high = V::Product(V::HighTwice(x), f.high_unit, f.high_quotient, f.p, f.negated_p);
      return Reduce(V::Add(low, high), f.two_p);
    } else {
      const Word r = V::AddLow(V::Mask(x), V::template ShiftRight<kResidueBits>(x), f.high_unit);
      return Reduce(r, f.two_p);
    }
  }

  // Words that are folded at once, since each depends on the one above.
  static constexpr size_t kTogether = 4;

  MIROLTA_TRANSFORM_TARGET static void Fold(Limb* z, size_t n, const Limb* x, size_t limbs,
                                            TransformFactor w, const TransformPrime& prime) {
    const Field f(prime);
    const Factor factor(w);
    const size_t length = n * kBlockLimbs;
    const size_t top = (limbs - 1) / length * length;
    for (size_t i = 0; i < length; i += kTogether * kStep) {
      Word sum[kTogether];
      for (size_t k = 0; k < kTogether; ++k) {
        const size_t at = top + i + k * kStep;
        sum[k] = at >= limbs           ? V::Set(0)
                 : at + kStep <= limbs ? V::Load(x + at)
                                       : V::LoadPart(x + at, limbs - at);
        sum[k] = Residue(sum[k], f);
      }
      for (size_t at = top; at != 0;) {
        at -= length;
        for (size_t k = 0; k < kTogether; ++k) {
          const Word r = Residue(V::Load(x + at + i + k * kStep), f);
          sum[k] = Reduce(V::Add(Product(sum[k], factor, f), r), f.two_p);
        }
      }
      for (size_t k = 0; k < kTogether; ++k) V::Store(z + i + k * kStep, sum[k]);
    }
  }

  MIROLTA_TRANSFORM_TARGET static void SubtractFold(Limb* z, size_t n, const Limb* x, size_t count,
                                                    TransformFactor w, TransformFactor scale,
                                                    const TransformPrime& prime) {
    const Field f(prime);
    const Factor factor(w), by(scale);
    const size_t length = n * kBlockLimbs;
    for (size_t i = 0; i < length; i += kTogether * kStep) {
      const size_t top = count * kBlockLimbs - length;
      Word sum[kTogether];
      for (size_t k = 0; k < kTogether; ++k) sum[k] = V::Load(x + top + i + k * kStep);
      for (size_t at = top; at != 0;) {
        at -= length;
        for (size_t k = 0; k < kTogether; ++k) {
          const Word r = V::Load(x + at + i + k * kStep);
          sum[k] = Reduce(V::Add(Product(sum[k], factor, f), r), f.two_p);
        }
      }
      for (size_t k = 0; k < kTogether; ++k) {
        Limb* const to = z + i + k * kStep;
        const Word difference = V::Add(V::Subtract(V::Load(to), sum[k]), f.two_p);
        V::Store(to, Product(difference, by, f));
      }
    }
  }

  MIROLTA_TRANSFORM_TARGET static void AddMultiple(Limb* z, const Limb* x, size_t n,
                                                   TransformFactor w, const TransformPrime& prime) {
    const Field f(prime);
    const Factor factor(w);
    for (size_t i = 0; i < n * kBlockLimbs; i += kStep) {
      const Word sum = V::Add(V::Load(z + i), Product(V::Load(x + i), factor, f));
      V::Store(z + i, Reduce(sum, f.two_p));
    }
  }

  // Garner's algorithm: the number is v0 + p0 (v1 + p1 v2), v(i) < p(i). Each difference below is
  // raised by twice a prime, which exceeds the other primes.
  MIROLTA_TRANSFORM_TARGET static void Combine(Limb* r0, Limb* r1, Limb* r2, size_t n) {
    const Field f0(kPrimes[0]), f1(kPrimes[1]), f2(kPrimes[2]);
    const Factor inverse01(kInverseOfPrime0In1), inverse02(kInverseOfPrime0In2);
    const Factor inverse12(kInverseOfPrime1In2);
    for (size_t i = 0; i < n * kBlockLimbs; i += kStep) {
      const Word v0 = Reduce(V::Load(r0 + i), f0.p);
      const Word d1 = V::Add(V::Subtract(V::Load(r1 + i), v0), f1.two_p);
      const Word v1 = Reduce(Product(d1, inverse01, f1), f1.p);
      const Word d2 = V::Add(V::Subtract(V::Load(r2 + i), v0), f2.two_p);
      const Word e2 = V::Add(V::Subtract(Product(d2, inverse02, f2), v1), f2.two_p);
      const Word v2 = Reduce(Product(e2, inverse12, f2), f2.p);
      // Radix-2^52 digits: t = v1 + p1 v2 < 2^100, then v0 + p0 t < 2^150.
      const Word t = V::AddLow(v1, f1.p, v2);
      const Word t0 = V::Mask(t);
      const Word t1 = V::AddHigh(V::template ShiftRight<kResidueBits>(t), f1.p, v2);
      const Word low = V::AddLow(v0, f0.p, t0);
      const Word carried = V::AddHigh(V::template ShiftRight<kResidueBits>(low), f0.p, t0);
      const Word middle = V::AddLow(carried, f0.p, t1);
      const Word high = V::AddHigh(V::template ShiftRight<kResidueBits>(middle), f0.p, t1);
      const Word digit1 = V::Mask(middle);
      V::Store(r0 + i, V::Or(V::Mask(low), V::template ShiftLeft<52>(digit1)));
      V::Store(r1 + i, V::Or(V::template ShiftRight<12>(digit1), V::template ShiftLeft<40>(high)));
      V::Store(r2 + i, V::template ShiftRight<24>(high));
    }
  }

  // Pairs: sum + v0 c0 + ... + v(k - 1) c(k - 1), of 64 bits. Unrolled, as all of CombinePairs.
  template <size_t kFirst, size_t kTerms>
  MIROLTA_TRANSFORM_TARGET static inline Word AddTerms(Word sum, const Word* v, const uint32_t* c) {
    if constexpr (kFirst == kTerms) {
      return sum;
    } else {
      const Word term = V::WideProduct(v[kFirst], V::Set(c[kFirst]));
      return AddTerms<kFirst + 1, kTerms>(V::AddWide(sum, term), v, c);
    }
  }
  // v(kDigit) for the residue x modulo p(kDigit), by the digits below.
  template <size_t kDigit>
  MIROLTA_TRANSFORM_TARGET static inline Word DigitOf(Word x, const Word* v) {
    static constexpr PairDigit kFactors = kPairDigits.of[kDigit];
    constexpr uint64_t kPrime = kSmallPrimes[kDigit];
    const Word p = V::Set(kPrime);
    Word sum = V::WideProduct(x, V::Set(kFactors.own));
    sum = AddTerms<0, kDigit>(sum, v, kFactors.below);
    // Montgomery reduction by 2^32: the sum is below 7 p * p, the result plus p below 3 p.
    const Word factor = V::WideProduct(sum, V::Set(kFactors.negated_inverse));
    const Word reduced = V::HighHalf(V::AddWide(sum, V::WideProduct(factor, p)));
    return Reduce(Reduce(reduced, p), p);
  }
  // Horner's scheme with digits of 32 bits, in the lower halves: the first k digits times p, plus carry.
  template <size_t kFirst, size_t kDigits>
  MIROLTA_TRANSFORM_TARGET static inline void MultiplyDigits(Word* digits, Word p, Word carry) {
    if constexpr (kFirst == kDigits) {
      digits[kDigits] = carry;
    } else {
      digits[kFirst] = V::AddWide(V::WideProduct(digits[kFirst], p), carry);
      MultiplyDigits<kFirst + 1, kDigits>(digits, p, V::HighHalf(digits[kFirst]));
    }
  }
  // The same with six primes: the number is v0 + p0 (v1 + p1 (v2 + ...)).
  MIROLTA_TRANSFORM_TARGET static void CombinePairs(Limb* r0, Limb* r1, Limb* r2, size_t n) {
    const Word p01 = V::Set(kPrimePairs[0].p), p23 = V::Set(kPrimePairs[1].p);
    const Word p45 = V::Set(kPrimePairs[2].p);
    for (size_t i = 0; i < n * kBlockLimbs; i += kStep) {
      const Word x01 = Reduce(V::Load(r0 + i), p01), x23 = Reduce(V::Load(r1 + i), p23);
      const Word x45 = Reduce(V::Load(r2 + i), p45);
      Word v[2 * kTransformPrimes];
      v[0] = V::LowHalf(x01);
      v[1] = DigitOf<1>(V::HighHalf(x01), v);
      v[2] = DigitOf<2>(x23, v);
      v[3] = DigitOf<3>(V::HighHalf(x23), v);
      v[4] = DigitOf<4>(x45, v);
      v[5] = DigitOf<5>(V::HighHalf(x45), v);
      Word digits[2 * kTransformPrimes] = {v[5]};
      MultiplyDigits<0, 1>(digits, V::Set(kSmallPrimes[4]), v[4]);
      MultiplyDigits<0, 2>(digits, V::Set(kSmallPrimes[3]), v[3]);
      MultiplyDigits<0, 3>(digits, V::Set(kSmallPrimes[2]), v[2]);
      MultiplyDigits<0, 4>(digits, V::Set(kSmallPrimes[1]), v[1]);
      MultiplyDigits<0, 5>(digits, V::Set(kSmallPrimes[0]), v[0]);
      V::Store(r0 + i, V::Join(digits[0], digits[1]));
      V::Store(r1 + i, V::Join(digits[2], digits[3]));
      V::Store(r2 + i, V::Join(digits[4], digits[5]));
    }
  }

  // The table of these loops and V's products.
  static constexpr TransformKernels Table(size_t least) {
    if constexpr (V::kHasPairs) {
      return {kPrimePairs, least,       Extend,       Fold,        Forward,
              Inverse,     V::Multiply, SubtractFold, AddMultiple, CombinePairs};
    } else {
      return {kPrimes, least,       Extend,       Fold,        Forward,
              Inverse, V::Multiply, SubtractFold, AddMultiple, Combine};
    }
  }
};

}  // namespace mirolta
