// Montgomery multiplication in radix 2^52 by AVX-512 IFMA. Digits are radix-2^52 digits here.
#include "radix52_ifma.h"

#if MIROLTA_KERNELS_FOR(X86_64)

// gcc 12 warns of values that its own header leaves undefined on purpose.
  #pragma GCC diagnostic ignored "-Wuninitialized"
  #pragma GCC diagnostic ignored "-Wmaybe-uninitialized"

  #include <immintrin.h>

namespace mirolta {

namespace {

  #define MIROLTA_IFMA __attribute__((target("avx512f,avx512dq,avx512vl,avx512ifma,bmi2")))

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
MIROLTA_IFMA inline void StoreRadix52(Limb* z, __m512i (&t)[kVectors]) {
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

  #define MIROLTA_IFMA_INLINE MIROLTA_IFMA __attribute__((always_inline)) inline

// Chain is one product. Each step adds x times one digit of y and the multiple of m that makes the
// lowest digit zero, and drops that digit. Each multiple depends on the one before, and vector
// latency is long, so the three lowest digits are computed in scalar registers: `low` and `next` are
// the sums of the lowest two; the third is `waiting`, its sum in the vectors before the step, plus
// the step's terms. A digit gets four terms below 2^52 a step, in at most 8 * kVectors steps: below
// 2^61.
template <size_t kVectors>
struct Chain {
  __m512i t[kVectors];
  Limb low;
  Limb next;
  Limb waiting;

  // The terms of x in the three lowest digits, for each step, are in kTerms limbs.
  static constexpr size_t kDigits = kVectors * kRadix52PerVector;
  static constexpr size_t kTerms = kRadix52PairTerms / 2 * kDigits;

  MIROLTA_IFMA_INLINE void Begin(Limb* terms, const Limb* x, const Limb* y) {
    for (size_t j = 0; j < kVectors; ++j) t[j] = _mm512_setzero_si512();
    low = next = waiting = 0;
    const __m512i x0 = _mm512_set1_epi64(static_cast<long long>(x[0]));
    const __m512i x1 = _mm512_set1_epi64(static_cast<long long>(x[1]));
    const __m512i x2 = _mm512_set1_epi64(static_cast<long long>(x[2]));
    for (size_t j = 0; j < kVectors; ++j) {
      const __m512i yj = _mm512_loadu_si512(y + j * kRadix52PerVector);
      const __m512i zero = _mm512_setzero_si512();
      const __m512i high0 = _mm512_madd52hi_epu64(zero, yj, x0);
      const __m512i high1 = _mm512_madd52hi_epu64(zero, yj, x1);
      _mm512_store_si512(terms + j * kRadix52PerVector, _mm512_madd52lo_epu64(zero, yj, x0));
      _mm512_store_si512(terms + kDigits + j * kRadix52PerVector,
                         _mm512_madd52lo_epu64(high0, yj, x1));
      _mm512_store_si512(terms + 2 * kDigits + j * kRadix52PerVector,
                         _mm512_madd52lo_epu64(high1, yj, x2));
    }
  }

  MIROLTA_IFMA_INLINE void Step(const Limb* terms, const Limb* x, const Limb* y, const Limb* m,
                                size_t i, Limb inverse) {
    // The factor of m is shifted left by 12, so that its 104-bit products split at bit 64.
    low += terms[i];
    const Limb factor = low * inverse;
    unsigned long long high0, high1;
    _mulx_u64(factor, m[0], &high0);
    const Limb low1 = _mulx_u64(factor, m[1], &high1) >> 12;
    // The multiple of m clears the lowest 52 bits, with a carry unless they were zero.
    low = (low + kRadix52Mask) >> kRadix52Bits;
    low += (next + terms[kDigits + i]) + low1 + high0;
    next = (waiting + terms[2 * kDigits + i]) + ((factor * m[2]) >> 12) + high1;

    const __m512i by_x = _mm512_set1_epi64(static_cast<long long>(y[i]));
    const __m512i by_m = _mm512_set1_epi64(static_cast<long long>(factor >> 12));
    // Separate sums shorten the dependency chain of t to two additions and a shift.
    __m512i high[kVectors];
    for (size_t j = 0; j < kVectors; ++j) {
      const __m512i xj = _mm512_loadu_si512(x + j * kRadix52PerVector);
      const __m512i mj = _mm512_loadu_si512(m + j * kRadix52PerVector);
      const __m512i zero = _mm512_setzero_si512();
      const __m512i sum = _mm512_madd52lo_epu64(_mm512_madd52lo_epu64(zero, xj, by_x), mj, by_m);
      high[j] = _mm512_madd52hi_epu64(_mm512_madd52hi_epu64(zero, xj, by_x), mj, by_m);
      t[j] = _mm512_add_epi64(t[j], sum);
    }
    for (size_t j = 0; j < kVectors; ++j) {
      const __m512i above = j + 1 < kVectors ? t[j + 1] : _mm512_setzero_si512();
      t[j] = _mm512_add_epi64(_mm512_alignr_epi64(above, t[j], 1), high[j]);
    }
    waiting = static_cast<Limb>(
        _mm_cvtsi128_si64(_mm256_extracti128_si256(_mm512_castsi512_si256(t[0]), 1)));
  }

  MIROLTA_IFMA_INLINE void Store(Limb* z) {
    t[0] = _mm512_mask_set1_epi64(t[0], 1, static_cast<long long>(low));
    t[0] = _mm512_mask_set1_epi64(t[0], 2, static_cast<long long>(next));
    StoreRadix52(z, t);
  }
};

template <size_t kVectors>
MIROLTA_IFMA void Product(Limb* z, const Limb* x, const Limb* y, const Limb* m, size_t count,
                          Limb inverse) {
  alignas(64) Limb terms[Chain<kVectors>::kTerms];
  Chain<kVectors> chain;
  chain.Begin(terms, x, y);
  for (size_t i = 0; i < count; ++i) chain.Step(terms, x, y, m, i, inverse);
  chain.Store(z);
  for (size_t j = 0; j < Chain<kVectors>::kTerms; j += kRadix52PerVector) {
    _mm512_store_si512(terms + j, _mm512_setzero_si512());
  }
  // The empty asm claims to read the secrets' memory, so that the zeros are stored.
  __asm__ __volatile__("" : : "r"(terms) : "memory");
}

// The steps of the two products depend on each other within a product only, so that the processor
// overlaps them.
template <size_t kVectors>
MIROLTA_IFMA void PairProduct(Limb* z, const Limb* x, const Limb* y, const Limb* m, size_t count,
                              const Limb (&inverses)[2], Limb* terms) {
  constexpr size_t kNext = kVectors * kRadix52PerVector;
  Limb* const more_terms = terms + Chain<kVectors>::kTerms;
  Chain<kVectors> first;
  Chain<kVectors> second;
  first.Begin(terms, x, y);
  second.Begin(more_terms, x + kNext, y + kNext);
  const Limb inverse0 = inverses[0], inverse1 = inverses[1];
  for (size_t i = 0; i < count; ++i) {
    first.Step(terms, x, y, m, i, inverse0);
    second.Step(more_terms, x + kNext, y + kNext, m + kNext, i, inverse1);
  }
  first.Store(z);
  second.Store(z + kNext);
}

constexpr Radix52PairProduct kPairProducts[kRadix52MostPairVectors] = {
    PairProduct<1>, PairProduct<2>, PairProduct<3>, PairProduct<4>, PairProduct<5>,
};

// Part of an entry. Every vector is read: the mask applies to the value that was loaded.
template <size_t kVectors>
MIROLTA_IFMA_INLINE void SelectVectors(Limb* z, const Limb* table, size_t entries, size_t stride,
                                       Limb index) {
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

MIROLTA_IFMA void Radix52Select(Limb* z, const Limb* table, size_t entries, size_t stride, size_t n,
                                Limb index) noexcept {
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
