// Montgomery multiplication in radix 2^27 with AVX2.
#include "radix27.h"

#if MIROLTA_KERNELS_FOR(X86_32)

  #include <immintrin.h>

namespace mirolta {

namespace {

  #define MIROLTA_RADIX27 __attribute__((target("avx2")))
  #define MIROLTA_RADIX27_STEP __attribute__((target("avx2"), always_inline)) inline

using Vector = __m256i;

constexpr size_t kLanes = 4;

// Vectors are loaded and stored unaligned.
MIROLTA_RADIX27_STEP Vector Load(const Digit27* x) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(x));
}
MIROLTA_RADIX27_STEP void Store(Digit27* z, Vector x) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(z), x);
}
MIROLTA_RADIX27_STEP __m128i LoadDigit(const Digit27* x) {
  return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(x));
}
MIROLTA_RADIX27_STEP Vector Zero() {
  return _mm256_setzero_si256();
}
MIROLTA_RADIX27_STEP Vector Add(Vector a, Vector b) {
  return _mm256_add_epi64(a, b);
}
MIROLTA_RADIX27_STEP Vector Multiply(Vector a, Vector b) {
  return _mm256_mul_epu32(a, b);
}
MIROLTA_RADIX27_STEP Vector And(Vector a, Vector b) {
  return _mm256_and_si256(a, b);
}
MIROLTA_RADIX27_STEP Vector Or(Vector a, Vector b) {
  return _mm256_or_si256(a, b);
}
MIROLTA_RADIX27_STEP Vector Shift(Vector a) {
  return _mm256_srli_epi64(a, kRadix27Bits);
}
MIROLTA_RADIX27_STEP Vector Spread(__m128i digit) {
  return _mm256_broadcastq_epi64(digit);
}
MIROLTA_RADIX27_STEP Vector Same(Vector a, Vector b) {
  return _mm256_cmpeq_epi32(a, b);
}

  #include "radix27_loops.inc"

}  // namespace

constexpr Radix27Kernels kRadix27Avx2 = {Product, Select};

}  // namespace mirolta

#endif
