// Montgomery multiplication in radix 2^52 by AVX-512 IFMA. Digits are radix-2^52 digits here.
#include "radix52_ifma.h"

#if MIROLTA_KERNELS_FOR(X86)

// gcc 12 warns of values that its own header leaves undefined on purpose.
  #pragma GCC diagnostic ignored "-Wuninitialized"
  #pragma GCC diagnostic ignored "-Wmaybe-uninitialized"

  #include <immintrin.h>

namespace mirolta {

namespace {

  #define MIROLTA_IFMA __attribute__((target("avx512f,avx512dq,avx512vl,avx512ifma,bmi2")))
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

// The sums of the three lowest digits of a product, outside the vectors: see Product.
  #if MIROLTA_KERNELS_FOR(X86_64)

// In scalar registers, whose latency is shorter.
class LowDigits {
 public:
  LowDigits(const Digit52* m, Digit52 inverse)
      : m0_(m[0]), m1_(m[1]), m2_(m[2]), inverse_(inverse) {}

  // Adds the step's terms and returns the multiple of m, in all lanes.
  MIROLTA_IFMA_STEP __m512i Step(const Digit52* term0, const Digit52* term1, const Digit52* term2) {
    // The factor of m is shifted left by 12, so that its 104-bit products split at bit 64.
    low_ += *term0;
    const Digit52 factor = low_ * inverse_;
    unsigned long long high0, high1;
    _mulx_u64(factor, m0_, &high0);
    const Digit52 low1 = _mulx_u64(factor, m1_, &high1) >> 12;
    // The multiple of m clears the lowest 52 bits, with a carry unless they were zero.
    low_ = (low_ + kRadix52Mask) >> kRadix52Bits;
    low_ += (next_ + *term1) + low1 + high0;
    next_ = (waiting_ + *term2) + ((factor * m2_) >> 12) + high1;
    return _mm512_set1_epi64(static_cast<long long>(factor >> 12));
  }

  // Takes over the digit that the next step makes the third.
  MIROLTA_IFMA_STEP void Take(__m512i t) {
    waiting_ = static_cast<Digit52>(
        _mm_cvtsi128_si64(_mm256_extracti128_si256(_mm512_castsi512_si256(t), 1)));
  }

  MIROLTA_IFMA_STEP __m512i PutBack(__m512i t) const {
    t = _mm512_mask_set1_epi64(t, 1, static_cast<long long>(low_));
    return _mm512_mask_set1_epi64(t, 2, static_cast<long long>(next_));
  }

 private:
  const Digit52 m0_, m1_, m2_, inverse_;
  Digit52 low_ = 0;
  Digit52 next_ = 0;
  Digit52 waiting_ = 0;
};

  #else

// In the lowest lanes of vectors: scalar registers have 32 bits.
class LowDigits {
 public:
  MIROLTA_IFMA_STEP LowDigits(const Digit52* m, Digit52 inverse)
      : m0_(Load(m)), m1_(Load(m + 1)), m2_(Load(m + 2)) {
    const Digit52 unshifted = inverse >> 12;
    inverse_ = Load(&unshifted);
    low_ = next_ = waiting_ = _mm_setzero_si128();
  }

  MIROLTA_IFMA_STEP __m512i Step(const Digit52* term0, const Digit52* term1, const Digit52* term2) {
    const __m128i zero = _mm_setzero_si128();
    low_ = _mm_add_epi64(low_, Load(term0));
    const __m128i factor = _mm_madd52lo_epu64(zero, low_, inverse_);
    const __m128i carry = _mm_srli_epi64(_mm_madd52lo_epu64(low_, m0_, factor), kRadix52Bits);
    const __m128i low1 = _mm_madd52lo_epu64(zero, m1_, factor);
    next_ = _mm_madd52hi_epu64(_mm_add_epi64(next_, Load(term1)), m0_, factor);
    low_ = _mm_add_epi64(_mm_add_epi64(low1, carry), next_);
    next_ = _mm_madd52lo_epu64(_mm_add_epi64(waiting_, Load(term2)), m2_, factor);
    next_ = _mm_madd52hi_epu64(next_, m1_, factor);
    return _mm512_maskz_broadcastq_epi64(0xFF, factor);
  }

  MIROLTA_IFMA_STEP void Take(__m512i t) {
    waiting_ = _mm256_extracti128_si256(_mm512_castsi512_si256(t), 1);
  }

  MIROLTA_IFMA_STEP __m512i PutBack(__m512i t) const {
    return _mm512_mask_broadcastq_epi64(_mm512_mask_broadcastq_epi64(t, 1, low_), 2, next_);
  }

 private:
  MIROLTA_IFMA_STEP static __m128i Load(const Digit52* digit) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(digit));
  }

  __m128i m0_, m1_, m2_, inverse_;
  __m128i low_, next_, waiting_;
};

  #endif

// Chain is one product. Each step adds x times one digit of y and the multiple of m that makes the
// lowest digit zero, and drops that digit. Each multiple depends on the one before, and the latency of
// the sums is long, so the three lowest digits are computed apart: two sums, and for the third its sum
// in the vectors before the step, plus the step's terms.
// A digit gets four terms below 2^52 a step, in at most 8 * kVectors steps: below 2^61.
template <size_t kVectors>
struct Chain {
  __m512i t[kVectors];
  LowDigits lowest;

  // The terms of x in the three lowest digits, for each step, are in kTerms digits.
  static constexpr size_t kDigits = kVectors * kRadix52PerVector;
  static constexpr size_t kTerms = kRadix52PairTerms / 2 * kDigits;

  MIROLTA_IFMA_STEP Chain(Digit52* terms, const Digit52* x, const Digit52* y, const Digit52* m,
                          Digit52 inverse)
      : lowest(m, inverse) {
    for (size_t j = 0; j < kVectors; ++j) t[j] = _mm512_setzero_si512();
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

  MIROLTA_IFMA_STEP void Step(const Digit52* terms, const Digit52* x, const Digit52* y,
                              const Digit52* m, size_t i) {
    const __m512i by_m = lowest.Step(terms + i, terms + kDigits + i, terms + 2 * kDigits + i);
    const __m512i by_x = _mm512_set1_epi64(static_cast<long long>(y[i]));
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
    lowest.Take(t[0]);
  }

  MIROLTA_IFMA_STEP void Store(Digit52* z) {
    t[0] = lowest.PutBack(t[0]);
    StoreRadix52(z, t);
  }
};

template <size_t kVectors>
MIROLTA_IFMA void Product(Digit52* z, const Digit52* x, const Digit52* y, const Digit52* m,
                          size_t count, Digit52 inverse) {
  alignas(64) Digit52 terms[Chain<kVectors>::kTerms];
  Chain<kVectors> chain(terms, x, y, m, inverse);
  for (size_t i = 0; i < count; ++i) chain.Step(terms, x, y, m, i);
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
MIROLTA_IFMA void PairProduct(Digit52* z, const Digit52* x, const Digit52* y, const Digit52* m,
                              size_t count, const Digit52 (&inverses)[2], Digit52* terms) {
  constexpr size_t kNext = kVectors * kRadix52PerVector;
  Digit52* const more_terms = terms + Chain<kVectors>::kTerms;
  Chain<kVectors> first(terms, x, y, m, inverses[0]);
  Chain<kVectors> second(more_terms, x + kNext, y + kNext, m + kNext, inverses[1]);
  for (size_t i = 0; i < count; ++i) {
    first.Step(terms, x, y, m, i);
    second.Step(more_terms, x + kNext, y + kNext, m + kNext, i);
  }
  first.Store(z);
  second.Store(z + kNext);
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
