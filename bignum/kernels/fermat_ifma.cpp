// Fermat tests in radix 2^52 by AVX-512 IFMA. Digits are radix-2^52 digits here.
#include "fermat_ifma.h"

#if MIROLTA_KERNELS_FOR(X86)

  #include <utility>

// gcc 12 warns of values that its own header leaves undefined on purpose.
  #pragma GCC diagnostic ignored "-Wuninitialized"
  #pragma GCC diagnostic ignored "-Wmaybe-uninitialized"

  #include <immintrin.h>

namespace mirolta {

namespace {

  #define MIROLTA_IFMA __attribute__((target("avx512f,avx512dq,avx512ifma")))

// With eight registers the digits are in memory anyway.
constexpr int kUnrolledDigits = MIROLTA_KERNELS_FOR(X86_64) ? 64 : 1;

MIROLTA_IFMA inline __m512i LoadLanes(const Digit52* x, size_t j) {
  return _mm512_loadu_si512(x + j * kLanes);
}

// t := x * y / 2^(52 kCount) mod m, below 2 m, in digits that are not normalised. A digit gets four
// terms below 2^52 a row, so that with carries it stays below 2^52 * (4 kCount + 1).
template <size_t kCount>
MIROLTA_IFMA inline __attribute__((always_inline)) void LaneProduct(
    __m512i (&t)[kCount], const Digit52* x, const Digit52* y, const Digit52* m, __m512i inverse) {
  const __m512i zero = _mm512_setzero_si512();
  #pragma GCC unroll kUnrolledDigits
  for (size_t j = 0; j < kCount; ++j) t[j] = zero;
  #pragma GCC unroll 1
  for (size_t i = 0; i < kCount; ++i) {
    const __m512i digit = LoadLanes(y, i);
    const __m512i low = _mm512_madd52lo_epu64(t[0], LoadLanes(x, 0), digit);
    const __m512i factor = _mm512_madd52lo_epu64(zero, low, inverse);
    const __m512i carry =
        _mm512_srli_epi64(_mm512_madd52lo_epu64(low, LoadLanes(m, 0), factor), kRadix52Bits);
  #pragma GCC unroll kUnrolledDigits
    for (size_t j = 0; j < kCount; ++j) {
      const __m512i xj = LoadLanes(x, j);
      const __m512i mj = LoadLanes(m, j);
      __m512i sum = j + 1 < kCount ? t[j + 1] : zero;
      sum = _mm512_madd52hi_epu64(sum, xj, digit);
      if (j + 1 < kCount) {
        sum = _mm512_madd52lo_epu64(sum, LoadLanes(x, j + 1), digit);
        sum = _mm512_madd52lo_epu64(sum, LoadLanes(m, j + 1), factor);
      }
      t[j] = _mm512_madd52hi_epu64(sum, mj, factor);
    }
    t[0] = _mm512_add_epi64(t[0], carry);
  }
}

// Normalises the digits to 52 bits and stores them.
template <size_t kCount>
MIROLTA_IFMA inline __attribute__((always_inline)) void StoreLanes(Digit52* z,
                                                                   const __m512i (&t)[kCount]) {
  const __m512i mask = _mm512_set1_epi64(static_cast<long long>(kRadix52Mask));
  __m512i carry = _mm512_setzero_si512();
  #pragma GCC unroll kUnrolledDigits
  for (size_t j = 0; j < kCount; ++j) {
    const __m512i sum = _mm512_add_epi64(t[j], carry);
    carry = _mm512_srli_epi64(sum, kRadix52Bits);
    _mm512_storeu_si512(z + j * kLanes, _mm512_and_si512(sum, mask));
  }
}

template <size_t kCount>
MIROLTA_IFMA uint32_t Test(const FermatLanes& lanes) {
  const __m512i inverse = LoadLanes(lanes.inverse, 0);
  const __m512i base = LoadLanes(lanes.base, 0);
  Digit52* const power = lanes.power;
  __m512i t[kCount];
  for (size_t bit = lanes.bits; bit-- != 0;) {
    LaneProduct(t, power, power, lanes.m, inverse);
    if (bit != 0) {
      const __mmask8 set = _mm512_test_epi64_mask(
          LoadLanes(lanes.m, bit / kRadix52Bits),
          _mm512_set1_epi64(static_cast<long long>(Digit52{1} << (bit % kRadix52Bits))));
      // 7 * 2^52 * (4 * 24 + 1) < 2^62.
  #pragma GCC unroll kUnrolledDigits
      for (size_t j = 0; j < kCount; ++j) t[j] = _mm512_mask_mullo_epi64(t[j], set, t[j], base);
    }
    StoreLanes(power, t);
  }
  // The product with 1 is at most m, so that it is 1 exactly where the power is.
  alignas(64) Digit52 one[kCount * kLanes] = {};
  for (size_t i = 0; i < kLanes; ++i) one[i] = 1;
  LaneProduct(t, power, one, lanes.m, inverse);
  StoreLanes(power, t);
  __m512i other = _mm512_xor_si512(LoadLanes(power, 0), _mm512_set1_epi64(1));
  for (size_t j = 1; j < kCount; ++j) other = _mm512_or_si512(other, LoadLanes(power, j));
  return _mm512_testn_epi64_mask(other, other);
}

template <size_t... kOver>
constexpr FermatLanesTest SelectTest(size_t count, std::index_sequence<kOver...>) {
  constexpr FermatLanesTest kTests[] = {Test<FermatLanesCount(kFermatLeastCount + kOver)>...};
  return kTests[count - kFermatLeastCount];
}

}  // namespace

FermatLanesTest FermatLanesTestFor(size_t count) noexcept {
  return SelectTest(count, std::make_index_sequence<kFermatMostCount - kFermatLeastCount + 1>());
}

}  // namespace mirolta

#endif
