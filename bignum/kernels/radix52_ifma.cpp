// Montgomery multiplication in radix 2^52 by AVX-512 IFMA. Digits are radix-2^52 digits here.
#include "radix52_ifma.h"

#if MIROLTA_KERNELS_FOR(X86)

// gcc 12 warns of values that its own header leaves undefined on purpose.
  #pragma GCC diagnostic ignored "-Wuninitialized"
  #pragma GCC diagnostic ignored "-Wmaybe-uninitialized"

  #include <immintrin.h>

namespace mirolta {

namespace {

  #define MIROLTA_IFMA __attribute__((target("avx512f,avx512dq,avx512vl,avx512ifma")))
  #define MIROLTA_IFMA_STEP MIROLTA_IFMA __attribute__((always_inline))

// Carry propagation on bit masks, 64 radix-2^52 digits a word: a digit in `over` generates a carry,
// a digit in `full` propagates one.
template <size_t kWords>
inline void RippleCarries(uint64_t (&carries)[kWords], const uint64_t (&over)[kWords],
                          const uint64_t (&full)[kWords]) {
  uint64_t in = 0;
  for (size_t i = 0; i < kWords; ++i) {
    const uint64_t got = over[i] << 1 | in;
    const uint64_t sum = got + full[i];
    carries[i] = sum ^ full[i];
    // The carry out of the word is generated or propagated by its top digit.
    in = over[i] >> 63 | (sum < got ? 1 : 0);
  }
}

// Normalises vectors of radix-2^52 digits below 2^63 to digits below 2^52, and stores them.
template <size_t kVectors>
MIROLTA_IFMA inline void StoreRadix52(Digit52* z, __m512i (&t)[kVectors]) {
  const __m512i mask = _mm512_set1_epi64(static_cast<long long>(kRadix52Mask));
  constexpr size_t kWords = (kVectors + 7) / 8;
  uint64_t over[kWords] = {}, full[kWords] = {}, carries[kWords];
  __m512i below = _mm512_setzero_si512();
  for (size_t j = 0; j < kVectors; ++j) {
    const __m512i high = _mm512_srli_epi64(t[j], kRadix52Bits);
    // Below 2^52 + 2^11 now, so that a digit carries at most 1.
    t[j] = _mm512_add_epi64(_mm512_and_si512(t[j], mask), _mm512_alignr_epi64(high, below, 7));
    below = high;
    over[j / 8] |= uint64_t{_mm512_cmpgt_epu64_mask(t[j], mask)} << (j % 8 * 8);
    full[j / 8] |= uint64_t{_mm512_cmpeq_epu64_mask(t[j], mask)} << (j % 8 * 8);
  }
  RippleCarries(carries, over, full);
  for (size_t j = 0; j < kVectors; ++j) {
    const __mmask8 carry = static_cast<__mmask8>(carries[j / 8] >> (j % 8 * 8));
    t[j] = _mm512_mask_sub_epi64(t[j], carry, t[j], _mm512_set1_epi64(-1));
    _mm512_storeu_si512(z + j * kRadix52PerVector, _mm512_and_si512(t[j], mask));
  }
}

// Chain is one product. It computes modulo multiple * 2^52 - 1, which m divides: that is -1 modulo 2^52, so
// that the low 52 bits of the lowest digit are the quotient digit, and adding its multiple of the modulus
// leaves the digits above plus quotient * multiple. The last step takes its quotient digit modulo m
// itself, so that the product is no longer than m.
// A digit gets four terms below 2^52 a step, in at most 8 * kVectors steps: below 2^61.
template <size_t kVectors>
struct Chain {
  __m512i t[kVectors];  // with the low halves of x * y[i] before step i
  __m512i quotient;     // of the step before, whose high halves are still to be added

  MIROLTA_IFMA_STEP static __m512i Load(const Digit52* x, size_t j) {
    return _mm512_loadu_si512(x + j * kRadix52PerVector);
  }
  MIROLTA_IFMA_STEP static __m512i Broadcast(Digit52 digit) {
    return _mm512_set1_epi64(static_cast<long long>(digit));
  }

  MIROLTA_IFMA_STEP Chain(const Digit52* x, const Digit52* y) : quotient(_mm512_setzero_si512()) {
    const __m512i by = Broadcast(y[0]);
    for (size_t j = 0; j < kVectors; ++j) {
      t[j] = _mm512_madd52lo_epu64(_mm512_setzero_si512(), Load(x, j), by);
    }
  }

  // The bits of the lowest digit from 52 on, which its shift adds to the next one.
  MIROLTA_IFMA_STEP __m512i Carry() const { return _mm512_maskz_srli_epi64(1, t[0], kRadix52Bits); }
  // Digits of t above the lowest, in vector j.
  MIROLTA_IFMA_STEP __m512i Above(size_t j) const {
    const __m512i above = j + 1 < kVectors ? t[j + 1] : _mm512_setzero_si512();
    return _mm512_alignr_epi64(above, t[j], 1);
  }

  // Of the terms one product depends on the step before, beside the shift; the others wait for nothing.
  MIROLTA_IFMA_STEP void Step(const Digit52* x, const Digit52* y, const Digit52* multiple,
                              size_t i) {
    const __m512i by = Broadcast(y[i]);
    const __m512i by_next = Broadcast(y[i + 1]);
    // Products take the low 52 bits.
    const __m512i next = _mm512_broadcastq_epi64(_mm512_castsi512_si128(t[0]));
    __m512i carry = Carry();
    for (size_t j = 0; j < kVectors; ++j) {
      const __m512i xj = Load(x, j);
      const __m512i mj = Load(multiple, j);
      __m512i terms = _mm512_madd52hi_epu64(_mm512_setzero_si512(), xj, by);
      terms = _mm512_madd52lo_epu64(terms, xj, by_next);
      terms = _mm512_madd52hi_epu64(terms, mj, quotient);
      if (j == 0) terms = _mm512_add_epi64(terms, carry);
      terms = _mm512_madd52lo_epu64(terms, mj, next);
      t[j] = _mm512_add_epi64(Above(j), terms);
    }
    quotient = next;
  }

  MIROLTA_IFMA_STEP void Last(Digit52* z, const Digit52* x, const Digit52* y,
                              const Radix52Modulus& modulus, size_t i) {
    const __m512i by = Broadcast(y[i]);
    const __m512i product =
        _mm512_madd52lo_epu64(_mm512_setzero_si512(), t[0], Broadcast(modulus.inverse));
    const __m512i last = _mm512_broadcastq_epi64(_mm512_castsi512_si128(product));
    __m512i high[kVectors];
    for (size_t j = 0; j < kVectors; ++j) {
      const __m512i mj = Load(modulus.m, j);
      high[j] = _mm512_madd52hi_epu64(_mm512_setzero_si512(), Load(x, j), by);
      high[j] = _mm512_madd52hi_epu64(high[j], Load(modulus.multiple, j), quotient);
      high[j] = _mm512_madd52hi_epu64(high[j], mj, last);
      t[j] = _mm512_madd52lo_epu64(t[j], mj, last);
    }
    high[0] = _mm512_add_epi64(high[0], Carry());
    for (size_t j = 0; j < kVectors; ++j) t[j] = _mm512_add_epi64(Above(j), high[j]);
    StoreRadix52(z, t);
  }
};

template <size_t kVectors>
MIROLTA_IFMA void Product(Digit52* z, const Digit52* x, const Digit52* y,
                          const Radix52Modulus& modulus, size_t count) {
  Chain<kVectors> chain(x, y);
  for (size_t i = 0; i + 1 < count; ++i) chain.Step(x, y, modulus.multiple, i);
  chain.Last(z, x, y, modulus, count - 1);
}

// The steps of the two products depend on each other within a product only, so that the processor
// overlaps them.
template <size_t kVectors>
MIROLTA_IFMA void PairProduct(Digit52* z, const Digit52* x, const Digit52* y,
                              const Radix52Modulus (&moduli)[2], size_t count) {
  constexpr size_t kNext = kVectors * kRadix52PerVector;
  Chain<kVectors> first(x, y);
  Chain<kVectors> second(x + kNext, y + kNext);
  for (size_t i = 0; i + 1 < count; ++i) {
    first.Step(x, y, moduli[0].multiple, i);
    second.Step(x + kNext, y + kNext, moduli[1].multiple, i);
  }
  // z may be x or y, of which each reads its own half.
  first.Last(z, x, y, moduli[0], count - 1);
  second.Last(z + kNext, x + kNext, y + kNext, moduli[1], count - 1);
}

constexpr Radix52PairProduct kPairProducts[kRadix52MostPairVectors] = {
    PairProduct<1>, PairProduct<2>, PairProduct<3>, PairProduct<4>, PairProduct<5>,
};

// Part of an entry. Every vector is read: the mask applies to the value that was loaded.
template <size_t kVectors>
MIROLTA_IFMA_STEP inline void SelectVectors(Digit52* z, const Digit52* table, size_t entries,
                                            size_t stride, Digit52 index) {
  const __m512i wanted = _mm512_set1_epi64(static_cast<long long>(index));
  const __m512i one = _mm512_set1_epi64(1);
  __m512i entry[kVectors];
  for (size_t j = 0; j < kVectors; ++j) entry[j] = _mm512_setzero_si512();
  __m512i at = _mm512_setzero_si512();
  for (size_t i = 0; i < entries; ++i, table += stride) {
    const __mmask8 is_wanted = _mm512_cmpeq_epi64_mask(at, wanted);
    at = _mm512_add_epi64(at, one);
    for (size_t j = 0; j < kVectors; ++j) {
      const __m512i loaded = _mm512_loadu_si512(table + j * kRadix52PerVector);
      entry[j] = _mm512_mask_mov_epi64(entry[j], is_wanted, loaded);
    }
  }
  for (size_t j = 0; j < kVectors; ++j) _mm512_storeu_si512(z + j * kRadix52PerVector, entry[j]);
}

constexpr Radix52Product kProducts[kRadix52MostVectors] = {
    Product<1>, Product<2>, Product<3>, Product<4>, Product<5>,
    Product<6>, Product<7>, Product<8>, Product<9>, Product<10>,
};

}  // namespace

Radix52Product Radix52ProductFor(size_t vectors) noexcept {
  return kProducts[vectors - 1];
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
