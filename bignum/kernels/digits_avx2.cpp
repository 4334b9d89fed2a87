// Digits in the lanes of vectors with AVX2: Montgomery multiplication in radix 2^27, products in radix 2^28.
#include "radix27.h"
#include "radix28.h"

#if MIROLTA_KERNELS_FOR(X86_32)

  #include <immintrin.h>

namespace mirolta {

namespace {

  #define MIROLTA_LANES __attribute__((target("avx2")))
  #define MIROLTA_LANES_STEP __attribute__((target("avx2"), always_inline)) inline

using Vector = __m256i;

constexpr size_t kLanes = 4;

// Vectors are loaded and stored unaligned.
MIROLTA_LANES_STEP Vector Load(const Digit27* x) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(x));
}
MIROLTA_LANES_STEP void Store(Digit27* z, Vector x) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(z), x);
}
MIROLTA_LANES_STEP __m128i LoadDigit(const Digit27* x) {
  return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(x));
}
MIROLTA_LANES_STEP Vector Zero() {
  return _mm256_setzero_si256();
}
MIROLTA_LANES_STEP Vector Add(Vector a, Vector b) {
  return _mm256_add_epi64(a, b);
}
MIROLTA_LANES_STEP Vector Multiply(Vector a, Vector b) {
  return _mm256_mul_epu32(a, b);
}
MIROLTA_LANES_STEP Vector And(Vector a, Vector b) {
  return _mm256_and_si256(a, b);
}
MIROLTA_LANES_STEP Vector Or(Vector a, Vector b) {
  return _mm256_or_si256(a, b);
}
MIROLTA_LANES_STEP Vector Shift(Vector a) {
  return _mm256_srli_epi64(a, kRadix27Bits);
}
MIROLTA_LANES_STEP Vector Spread(__m128i digit) {
  return _mm256_broadcastq_epi64(digit);
}
MIROLTA_LANES_STEP Vector Same(Vector a, Vector b) {
  return _mm256_cmpeq_epi32(a, b);
}

  #include "radix27_loops.inc"
  #include "radix28_loops.inc"

}  // namespace

constexpr Radix27Kernels kRadix27Avx2 = {Product, Select};

MIROLTA_LANES void MultiplyRadix28Avx2(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n) {
  Columns(z, x, m, y, n);
}

}  // namespace mirolta

#endif
