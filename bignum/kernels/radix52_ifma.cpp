// Montgomery multiplication in radix 2^52 by AVX-512 IFMA. Digits are radix-2^52 digits here.
#include "radix52_ifma.h"

#if MIROLTA_KERNELS_FOR(X86)

// gcc 12 warns of values that its own header leaves undefined on purpose.
  #pragma GCC diagnostic ignored "-Wuninitialized"
  #pragma GCC diagnostic ignored "-Wmaybe-uninitialized"

  #include <immintrin.h>

  #include <iterator>

namespace mirolta {

namespace {

  #define MIROLTA_IFMA __attribute__((target("avx512f,avx512dq,avx512vl,avx512ifma")))
  #define MIROLTA_IFMA_STEP MIROLTA_IFMA __attribute__((always_inline))

// Carry propagation on bit masks, 64 radix-2^52 digits a word: a digit in `over` generates a carry,
// a digit in `full` propagates one.
inline void RippleCarries(uint64_t* carries, const uint64_t* over, const uint64_t* full,
                          size_t words) {
  uint64_t in = 0;
  for (size_t i = 0; i < words; ++i) {
    const uint64_t got = over[i] << 1 | in;
    const uint64_t sum = got + full[i];
    carries[i] = sum ^ full[i];
    // The carry out of the word is generated or propagated by its top digit.
    in = over[i] >> 63 | (sum < got ? 1 : 0);
  }
}

// The vectors of digits that a word of RippleCarries has.
constexpr size_t kVectorsPerWord = 64 / kRadix52PerVector;

// Normalises vectors of digits below 2^63 to digits below 2^52, and stores them. t may be z.
MIROLTA_IFMA_STEP inline void StoreRadix52(Digit52* z, __m512i* t, size_t vectors, uint64_t* over,
                                           uint64_t* full, uint64_t* carries) {
  const __m512i mask = _mm512_set1_epi64(static_cast<long long>(kRadix52Mask));
  __m512i below = _mm512_setzero_si512();
  for (size_t j = 0; j < vectors; ++j) {
    const __m512i high = _mm512_srli_epi64(t[j], kRadix52Bits);
    // Below 2^52 + 2^11 now, so that a digit carries at most 1.
    t[j] = _mm512_add_epi64(_mm512_and_si512(t[j], mask), _mm512_alignr_epi64(high, below, 7));
    below = high;
    const size_t word = j / kVectorsPerWord;
    const size_t bit = j % kVectorsPerWord * kRadix52PerVector;
    over[word] |= uint64_t{_mm512_cmpgt_epu64_mask(t[j], mask)} << bit;
    full[word] |= uint64_t{_mm512_cmpeq_epu64_mask(t[j], mask)} << bit;
  }
  RippleCarries(carries, over, full, (vectors + kVectorsPerWord - 1) / kVectorsPerWord);
  for (size_t j = 0; j < vectors; ++j) {
    const __mmask8 carry = static_cast<__mmask8>(carries[j / kVectorsPerWord] >>
                                                 (j % kVectorsPerWord * kRadix52PerVector));
    t[j] = _mm512_mask_sub_epi64(t[j], carry, t[j], _mm512_set1_epi64(-1));
    _mm512_storeu_si512(z + j * kRadix52PerVector, _mm512_and_si512(t[j], mask));
  }
}

// Chain is one product. It computes modulo multiple * 2^52 - 1, which m divides: that is -1 modulo 2^52, so
// that the low 52 bits of the lowest digit are the quotient digit, and adding its multiple of the modulus
// leaves the digits above plus quotient * multiple. A step of two digits does the same modulo
// multiple * 2^104 - 1, where the latencies of the quotient digits overlap. The last step takes its quotient
// digit modulo m itself, so that the product is no longer than m, with two steps of one digit before it.
// A digit gets four terms below 2^52 a digit of y, of at most 8 * kRadix52MostVectors: below 2^63.
template <size_t kVectors>
struct Chain {
  // Whether steps take two digits; with more vectors the multiplications take longer than the latencies.
  static constexpr bool kTakesTwo = kRadix52Multiples == 2 && kVectors <= 4;

  __m512i t[kVectors];  // with the low halves of x * y[i] before step i
  __m512i quotient;     // of the step before, whose high halves are still to be added

  MIROLTA_IFMA_STEP static __m512i Load(const Digit52* x, size_t j) {
    return _mm512_loadu_si512(x + j * kRadix52PerVector);
  }
  MIROLTA_IFMA_STEP static __m512i Broadcast(Digit52 digit) {
    return _mm512_set1_epi64(static_cast<long long>(digit));
  }
  // Vector j of x * 2^52.
  MIROLTA_IFMA_STEP static __m512i Shifted(const Digit52* x, size_t j) {
    return _mm512_alignr_epi64(Load(x, j), j == 0 ? _mm512_setzero_si512() : Load(x, j - 1), 7);
  }

  MIROLTA_IFMA_STEP Chain(const Digit52* x, const Digit52* y) : quotient(_mm512_setzero_si512()) {
    const __m512i by = Broadcast(y[0]);
    for (size_t j = 0; j < kVectors; ++j) {
      t[j] = _mm512_madd52lo_epu64(_mm512_setzero_si512(), Load(x, j), by);
    }
  }

  // The bits of the lowest digit from 52 on, which its shift adds to the next one.
  MIROLTA_IFMA_STEP __m512i Carry() const { return _mm512_maskz_srli_epi64(1, t[0], kRadix52Bits); }
  // Digits of t above the lowest kDigits, in vector j.
  template <int kDigits>
  MIROLTA_IFMA_STEP __m512i Above(size_t j) const {
    const __m512i above = j + 1 < kVectors ? t[j + 1] : _mm512_setzero_si512();
    return _mm512_alignr_epi64(above, t[j], kDigits);
  }

  // The sum of what is ready in that order, where the compiler would change it.
  MIROLTA_IFMA_STEP static __m512i Sum(__m512i first, __m512i second, __m512i last) {
    __m512i sum = _mm512_add_epi64(first, second);
    __asm__("" : "+v"(sum));
    return _mm512_add_epi64(sum, last);
  }

  // Whether count digits are enough for steps of two, which need a digit above.
  MIROLTA_IFMA_STEP static bool HasTwo(size_t count) {
    return kTakesTwo && count > kDigitsBesideTwo + 1 && count < kVectors * kRadix52PerVector;
  }
  // Steps of two have one step of one digit before them, two after them, and the last.
  static constexpr size_t kDigitsBesideTwo = 4;

  // Digit 0, before StepTwo: no high halves are still to be added, and those and the next low halves of
  // x * y[1] are.
  MIROLTA_IFMA_STEP void StepBeforeTwo(const Digit52* x, const Digit52* y,
                                       const Digit52* multiple) {
    const __m512i by = Broadcast(y[0]);
    const __m512i by_next = Broadcast(y[1]);
    const __m512i by_second = Broadcast(y[2]);
    const __m512i next = _mm512_broadcastq_epi64(_mm512_castsi512_si128(t[0]));
    const __m512i carry = Carry();
    for (size_t j = 0; j < kVectors; ++j) {
      __m512i terms = _mm512_madd52hi_epu64(_mm512_setzero_si512(), Load(x, j), by);
      terms = _mm512_madd52lo_epu64(terms, Load(x, j), by_next);
      terms = _mm512_madd52lo_epu64(terms, Load(multiple, j), next);
      __m512i high = _mm512_madd52hi_epu64(_mm512_setzero_si512(), Shifted(x, j), by_next);
      high = _mm512_madd52lo_epu64(high, Shifted(x, j), by_second);
      high = _mm512_madd52hi_epu64(high, Shifted(multiple, j), next);
      __m512i others = Above<1>(j);
      if (j == 0) others = _mm512_add_epi64(others, carry);
      t[j] = Sum(others, terms, high);
    }
  }

  // Digits i and i + 1.
  MIROLTA_IFMA_STEP void StepTwo(const Digit52* x, const Digit52* y, const Digit52* multiple,
                                 size_t i) {
    const __m512i by = Broadcast(y[i + 1]);
    const __m512i by_next = Broadcast(y[i + 2]);
    const __m512i by_second = Broadcast(y[i + 3]);
    const __m128i lowest = _mm512_castsi512_si128(t[0]);
    const __m512i next = _mm512_broadcastq_epi64(lowest);
    // The second digit with the carry of the first.
    const __m128i digit =
        _mm_add_epi64(_mm_unpackhi_epi64(lowest, lowest), _mm_srli_epi64(lowest, kRadix52Bits));
    const __m512i second = _mm512_broadcastq_epi64(digit);
    const __m512i carry = _mm512_maskz_srli_epi64(1, _mm512_castsi128_si512(digit), kRadix52Bits);
    for (size_t j = 0; j < kVectors; ++j) {
      __m512i terms = _mm512_madd52hi_epu64(_mm512_setzero_si512(), Load(x, j), by);
      terms = _mm512_madd52lo_epu64(terms, Load(x, j), by_next);
      terms = _mm512_madd52hi_epu64(terms, Load(multiple, j), quotient);
      terms = _mm512_madd52lo_epu64(terms, Load(multiple, j), next);
      __m512i high = _mm512_madd52hi_epu64(_mm512_setzero_si512(), Shifted(x, j), by_next);
      high = _mm512_madd52lo_epu64(high, Shifted(x, j), by_second);
      high = _mm512_madd52hi_epu64(high, Shifted(multiple, j), next);
      high = _mm512_madd52lo_epu64(high, Shifted(multiple, j), second);
      __m512i others = Above<2>(j);
      if (j == 0) others = _mm512_add_epi64(others, carry);
      t[j] = Sum(others, terms, high);
    }
    quotient = second;
  }

  // The step of one digit after those of two, which have added all of x * y.
  MIROLTA_IFMA_STEP void StepAfterTwo(const Radix52Modulus& modulus) {
    const Digit52* const before = modulus.multiple[kRadix52Multiples - 1];
    const __m512i next = _mm512_broadcastq_epi64(_mm512_castsi512_si128(t[0]));
    const __m512i carry = Carry();
    for (size_t j = 0; j < kVectors; ++j) {
      __m512i terms = _mm512_madd52hi_epu64(_mm512_setzero_si512(), Shifted(before, j), quotient);
      terms = _mm512_madd52lo_epu64(terms, Load(modulus.multiple[0], j), next);
      __m512i others = Above<1>(j);
      if (j == 0) others = _mm512_add_epi64(others, carry);
      t[j] = _mm512_add_epi64(others, terms);
    }
    quotient = next;
  }

  // Vector j after a step: the digits above the lowest, the terms of x * y, and those of the multiple. Of the
  // terms one product depends on the step before, beside the shift; the others wait for nothing.
  MIROLTA_IFMA_STEP void Advance(size_t j, __m512i terms, const Digit52* multiple, __m512i next,
                                 __m512i carry) {
    const __m512i mj = Load(multiple, j);
    terms = _mm512_madd52hi_epu64(terms, mj, quotient);
    terms = _mm512_madd52lo_epu64(terms, mj, next);
    // Not to the product, which takes as long as the shift.
    __m512i others = Above<1>(j);
    if (j == 0) others = _mm512_add_epi64(others, carry);
    t[j] = _mm512_add_epi64(others, terms);
  }

  MIROLTA_IFMA_STEP void Step(const Digit52* x, const Digit52* y, const Digit52* multiple,
                              size_t i) {
    const __m512i by = Broadcast(y[i]);
    const __m512i by_next = Broadcast(y[i + 1]);
    // Products take the low 52 bits.
    const __m512i next = _mm512_broadcastq_epi64(_mm512_castsi512_si128(t[0]));
    const __m512i carry = Carry();
    for (size_t j = 0; j < kVectors; ++j) {
      const __m512i xj = Load(x, j);
      const __m512i terms = _mm512_madd52hi_epu64(_mm512_setzero_si512(), xj, by);
      Advance(j, _mm512_madd52lo_epu64(terms, xj, by_next), multiple, next, carry);
    }
    quotient = next;
  }

  // Vectors of x below kFrom have no more terms.
  template <size_t kFrom = 0>
  MIROLTA_IFMA_STEP void Last(Digit52* z, const Digit52* x, const Digit52* y,
                              const Radix52Modulus& modulus, size_t i) {
    const __m512i by = Broadcast(y[i]);
    const __m512i product =
        _mm512_madd52lo_epu64(_mm512_setzero_si512(), t[0], Broadcast(modulus.inverse));
    const __m512i last = _mm512_broadcastq_epi64(_mm512_castsi512_si128(product));
    __m512i high[kVectors];
    for (size_t j = 0; j < kVectors; ++j) {
      const __m512i mj = Load(modulus.m, j);
      high[j] = _mm512_setzero_si512();
      if (j >= kFrom) high[j] = _mm512_madd52hi_epu64(high[j], Load(x, j), by);
      high[j] = _mm512_madd52hi_epu64(high[j], Load(modulus.multiple[0], j), quotient);
      high[j] = _mm512_madd52hi_epu64(high[j], mj, last);
      t[j] = _mm512_madd52lo_epu64(t[j], mj, last);
    }
    high[0] = _mm512_add_epi64(high[0], Carry());
    for (size_t j = 0; j < kVectors; ++j) t[j] = _mm512_add_epi64(Above<1>(j), high[j]);
    constexpr size_t kWords = (kVectors + kVectorsPerWord - 1) / kVectorsPerWord;
    uint64_t over[kWords] = {}, full[kWords] = {}, carries[kWords];
    StoreRadix52(z, t, kVectors, over, full, carries);
  }
};

// SquareChain is one square: digits of x times the vector they are in, and digits of 2 x times the vectors above,
// which stand for both products of two digits. 2 x as a whole has digits of 52 bits; the one that a vector's last
// digit carries is no multiplier of the next vector, and is added to it.
template <size_t kVectors>
struct SquareChain : Chain<kVectors> {
  using Base = Chain<kVectors>;

  __m512i twice;  // digit i of 2 x before step i, in the low 52 bits

  MIROLTA_IFMA_STEP explicit SquareChain(const Digit52* x)
      : Base(x, x), twice(Base::Broadcast(x[0] << 1)) {
    for (size_t j = 1; j < kVectors; ++j) {
      this->t[j] = _mm512_madd52lo_epu64(_mm512_setzero_si512(), Base::Load(x, j), twice);
    }
  }

  // Digit i is in vector kHigh, the next in kLow.
  template <size_t kHigh, size_t kLow>
  MIROLTA_IFMA_STEP void Step(const Digit52* x, const Digit52* multiple, size_t i) {
    const __m512i by = Base::Broadcast(x[i]);
    const __m512i by_next = Base::Broadcast(x[i + 1]);
    const __m512i carried = _mm512_srli_epi64(by, kRadix52Bits - 1);
    const __m512i twice_next = _mm512_add_epi64(_mm512_add_epi64(by_next, by_next), carried);
    const __m512i next = _mm512_broadcastq_epi64(_mm512_castsi512_si128(this->t[0]));
    const __m512i carry = Base::Carry();
    for (size_t j = 0; j < kVectors; ++j) {
      const __m512i xj = Base::Load(x, j);
      __m512i terms = _mm512_setzero_si512();
      if (j >= kHigh) terms = _mm512_madd52hi_epu64(terms, xj, j == kHigh ? by : twice);
      if (j >= kLow) terms = _mm512_madd52lo_epu64(terms, xj, j == kLow ? by_next : twice_next);
      if (j == kLow && kLow != kHigh) terms = _mm512_madd52lo_epu64(terms, xj, carried);
      Base::Advance(j, terms, multiple, next, carry);
    }
    this->quotient = next;
    twice = twice_next;
  }
};

// The steps of kCount squares, by the vector of their digits.
template <size_t kVectors, size_t kCount>
struct Squares {
  static constexpr size_t kNext = kVectors * kRadix52PerVector;

  SquareChain<kVectors> (&chains)[kCount];
  const Digit52* x;
  const Radix52Modulus* moduli;
  size_t count;

  template <size_t kHigh, size_t kLow>
  MIROLTA_IFMA_STEP void Step(size_t i) {
    for (size_t k = 0; k < kCount; ++k) {
      chains[k].template Step<kHigh, kLow>(x + k * kNext, moduli[k].multiple[0], i);
    }
  }

  // Vector kFrom of digits, and those above. Copies of the loop would be kilobytes.
  template <size_t kFrom>
  MIROLTA_IFMA_STEP void Finish(Digit52* z) {
    constexpr bool kIsLast = kFrom + 1 == kVectors;
    const size_t last = kIsLast ? count - 1 : (kFrom + 1) * kRadix52PerVector - 1;
  #pragma GCC unroll 1
    for (size_t i = kFrom * kRadix52PerVector; i < last; ++i) Step<kFrom, kFrom>(i);
    if constexpr (kIsLast) {
      for (size_t k = 0; k < kCount; ++k) {
        const Digit52* const xk = x + k * kNext;
        chains[k].template Last<kFrom>(z + k * kNext, xk, xk, moduli[k], last);
      }
    } else {
      Step<kFrom, kFrom + 1>(last);
      Finish<kFrom + 1>(z);
    }
  }
};

// Whether squares are faster than products: with fewer vectors they have more additions than they save products.
// In 32-bit mode there are too few registers for either.
template <size_t kVectors>
constexpr bool kHasSquare = kVectors == 5 && MIROLTA_KERNELS_FOR(X86_64);

template <size_t kVectors>
MIROLTA_IFMA void Square(Digit52* z, const Digit52* x, const Radix52Modulus& modulus,
                         size_t count) {
  SquareChain<kVectors> chains[] = {SquareChain<kVectors>(x)};
  Squares<kVectors, 1>{chains, x, &modulus, count}.template Finish<0>(z);
}

template <size_t kVectors>
MIROLTA_IFMA void PairSquare(Digit52* z, const Digit52* x, const Radix52Modulus (&moduli)[2],
                             size_t count) {
  SquareChain<kVectors> chains[] = {SquareChain<kVectors>(x),
                                    SquareChain<kVectors>(x + kVectors * kRadix52PerVector)};
  Squares<kVectors, 2>{chains, x, moduli, count}.template Finish<0>(z);
}

template <size_t kVectors>
MIROLTA_IFMA void Product(Digit52* z, const Digit52* x, const Digit52* y,
                          const Radix52Modulus& modulus, size_t count) {
  if constexpr (kHasSquare<kVectors>) {
    if (x == y) return Square<kVectors>(z, x, modulus, count);
  }
  Chain<kVectors> chain(x, y);
  size_t i = 0;
  if (Chain<kVectors>::HasTwo(count)) {
    chain.StepBeforeTwo(x, y, modulus.multiple[0]);
    const Digit52* const multiple = modulus.multiple[kRadix52Multiples - 1];
    for (i = 1; i + Chain<kVectors>::kDigitsBesideTwo < count; i += 2) {
      chain.StepTwo(x, y, multiple, i);
    }
    chain.StepAfterTwo(modulus);
    ++i;
  }
  for (; i + 1 < count; ++i) chain.Step(x, y, modulus.multiple[0], i);
  chain.Last(z, x, y, modulus, count - 1);
}

// The same for more vectors than there are registers: t is in memory, with a vector of zeros above.
MIROLTA_IFMA void LongProduct(Digit52* z, const Digit52* x, const Digit52* y,
                              const Radix52Modulus& modulus, size_t count) {
  using OneVector = Chain<1>;
  constexpr size_t kMostWords = kRadix52MostVectors / kVectorsPerWord + 1;
  const size_t vectors = Radix52Vectors(count);
  __m512i t[kRadix52MostVectors + 1];
  const __m512i first = OneVector::Broadcast(y[0]);
  for (size_t j = 0; j < vectors; ++j) {
    t[j] = _mm512_madd52lo_epu64(_mm512_setzero_si512(), OneVector::Load(x, j), first);
  }
  t[vectors] = _mm512_setzero_si512();
  __m512i quotient = _mm512_setzero_si512();
  for (size_t i = 0; i + 1 < count; ++i) {
    const __m512i by = OneVector::Broadcast(y[i]);
    const __m512i by_next = OneVector::Broadcast(y[i + 1]);
    const __m512i next = _mm512_broadcastq_epi64(_mm512_castsi512_si128(t[0]));
    __m512i carry = _mm512_maskz_srli_epi64(1, t[0], kRadix52Bits);
    for (size_t j = 0; j < vectors; ++j) {
      const __m512i xj = OneVector::Load(x, j);
      const __m512i mj = OneVector::Load(modulus.multiple[0], j);
      __m512i terms = _mm512_madd52hi_epu64(carry, xj, by);
      carry = _mm512_setzero_si512();
      terms = _mm512_madd52lo_epu64(terms, xj, by_next);
      terms = _mm512_madd52hi_epu64(terms, mj, quotient);
      terms = _mm512_madd52lo_epu64(terms, mj, next);
      t[j] = _mm512_add_epi64(_mm512_alignr_epi64(t[j + 1], t[j], 1), terms);
    }
    quotient = next;
  }
  const __m512i by = OneVector::Broadcast(y[count - 1]);
  const __m512i product =
      _mm512_madd52lo_epu64(_mm512_setzero_si512(), t[0], OneVector::Broadcast(modulus.inverse));
  const __m512i last = _mm512_broadcastq_epi64(_mm512_castsi512_si128(product));
  for (size_t j = 0; j < vectors; ++j) {
    t[j] = _mm512_madd52lo_epu64(t[j], OneVector::Load(modulus.m, j), last);
  }
  __m512i carry = _mm512_maskz_srli_epi64(1, t[0], kRadix52Bits);
  for (size_t j = 0; j < vectors; ++j) {
    __m512i high = _mm512_madd52hi_epu64(carry, OneVector::Load(x, j), by);
    carry = _mm512_setzero_si512();
    high = _mm512_madd52hi_epu64(high, OneVector::Load(modulus.multiple[0], j), quotient);
    high = _mm512_madd52hi_epu64(high, OneVector::Load(modulus.m, j), last);
    t[j] = _mm512_add_epi64(_mm512_alignr_epi64(t[j + 1], t[j], 1), high);
  }
  uint64_t over[kMostWords] = {}, full[kMostWords] = {}, carries[kMostWords];
  StoreRadix52(z, t, vectors, over, full, carries);
  WipeMemory(t, sizeof t);
}

// The steps of the two products depend on each other within a product only, so that the processor
// overlaps them.
template <size_t kVectors>
MIROLTA_IFMA void PairProduct(Digit52* z, const Digit52* x, const Digit52* y,
                              const Radix52Modulus (&moduli)[2], size_t count) {
  if constexpr (kHasSquare<kVectors>) {
    if (x == y) return PairSquare<kVectors>(z, x, moduli, count);
  }
  constexpr size_t kNext = kVectors * kRadix52PerVector;
  Chain<kVectors> first(x, y);
  Chain<kVectors> second(x + kNext, y + kNext);
  size_t i = 0;
  if (Chain<kVectors>::HasTwo(count)) {
    constexpr size_t kLong = kRadix52Multiples - 1;
    first.StepBeforeTwo(x, y, moduli[0].multiple[0]);
    second.StepBeforeTwo(x + kNext, y + kNext, moduli[1].multiple[0]);
    for (i = 1; i + Chain<kVectors>::kDigitsBesideTwo < count; i += 2) {
      first.StepTwo(x, y, moduli[0].multiple[kLong], i);
      second.StepTwo(x + kNext, y + kNext, moduli[1].multiple[kLong], i);
    }
    first.StepAfterTwo(moduli[0]);
    second.StepAfterTwo(moduli[1]);
    ++i;
  }
  for (; i + 1 < count; ++i) {
    first.Step(x, y, moduli[0].multiple[0], i);
    second.Step(x + kNext, y + kNext, moduli[1].multiple[0], i);
  }
  // z may be x or y, of which each reads its own half.
  first.Last(z, x, y, moduli[0], count - 1);
  second.Last(z + kNext, x + kNext, y + kNext, moduli[1], count - 1);
}

constexpr Radix52PairProduct kPairProducts[kRadix52MostPairVectors] = {
    PairProduct<1>, PairProduct<2>, PairProduct<3>, PairProduct<4>, PairProduct<5>,
};

// Entries are masked in as many chains as registers hold, since each waits for the one before in its own.
constexpr size_t kSelectChains = MIROLTA_KERNELS_FOR(X86_64) ? 2 : 1;

// Part of an entry. Every vector is read: the mask applies to the value that was loaded.
template <size_t kVectors>
MIROLTA_IFMA_STEP inline void SelectVectors(Digit52* z, const Digit52* table, size_t entries,
                                            size_t stride, Digit52 index) {
  const __m512i wanted = _mm512_set1_epi64(static_cast<long long>(index));
  const __m512i one = _mm512_set1_epi64(1);
  __m512i entry[kSelectChains][kVectors];
  for (size_t j = 0; j < kSelectChains * kVectors; ++j) {
    entry[j / kVectors][j % kVectors] = _mm512_setzero_si512();
  }
  __m512i at = _mm512_setzero_si512();
  for (size_t i = 0; i < entries; i += kSelectChains) {
  #pragma GCC unroll 2
    for (size_t chain = 0; chain < kSelectChains; ++chain, table += stride) {
      const __mmask8 is_wanted = _mm512_cmpeq_epi64_mask(at, wanted);
      at = _mm512_add_epi64(at, one);
      for (size_t j = 0; j < kVectors; ++j) {
        const __m512i loaded = _mm512_loadu_si512(table + j * kRadix52PerVector);
        entry[chain][j] = _mm512_mask_mov_epi64(entry[chain][j], is_wanted, loaded);
      }
    }
  }
  for (size_t j = 0; j < kVectors; ++j) {
    const __m512i last = entry[kSelectChains - 1][j];
    _mm512_storeu_si512(z + j * kRadix52PerVector, _mm512_or_si512(entry[0][j], last));
  }
}

// In 32-bit mode each of the longer ones is code of some kilobytes.
constexpr Radix52Product kProducts[] = {
    Product<1>, Product<2>, Product<3>, Product<4>,  Product<5>, Product<6>,
  #if MIROLTA_KERNELS_FOR(X86_64)
    Product<7>, Product<8>, Product<9>, Product<10>,
  #endif
};

}  // namespace

Radix52Product Radix52ProductFor(size_t vectors) noexcept {
  return vectors <= std::size(kProducts) ? kProducts[vectors - 1] : LongProduct;
}

Radix52PairProduct Radix52PairProductFor(size_t vectors) noexcept {
  return kPairProducts[vectors - 1];
}

MIROLTA_IFMA void Radix52Select(Digit52* z, const Digit52* table, size_t entries, size_t stride,
                                size_t n, Digit52 index) noexcept {
  size_t done = 0;
  for (; done + 4 * kRadix52PerVector <= n; done += 4 * kRadix52PerVector) {
    SelectVectors<4>(z + done, table + done, entries, stride, index);
  }
  switch ((n - done) / kRadix52PerVector) {
    case 1:
      SelectVectors<1>(z + done, table + done, entries, stride, index);
      break;
    case 2:
      SelectVectors<2>(z + done, table + done, entries, stride, index);
      break;
    case 3:
      SelectVectors<3>(z + done, table + done, entries, stride, index);
      break;
    default:
      break;
  }
}

}  // namespace mirolta

#endif
