// Digits in the lanes of vectors with SSE2: Montgomery multiplication in radix 2^27, products in radix 2^28.
#include "radix27.h"
#include "radix28.h"

#if MIROLTA_KERNELS_FOR(X86_32)

  #include <emmintrin.h>

namespace mirolta {

namespace {

  #define MIROLTA_LANES __attribute__((target("sse2")))
  #define MIROLTA_LANES_STEP __attribute__((target("sse2"), always_inline)) inline

using Vector = __m128i;

constexpr size_t kLanes = 2;

// Vectors are loaded and stored unaligned.
MIROLTA_LANES_STEP Vector Load(const Digit27* x) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(x));
}
MIROLTA_LANES_STEP void Store(Digit27* z, Vector x) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(z), x);
}
MIROLTA_LANES_STEP __m128i LoadDigit(const Digit27* x) {
  return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(x));
}
MIROLTA_LANES_STEP Vector Zero() {
  return _mm_setzero_si128();
}
MIROLTA_LANES_STEP Vector Add(Vector a, Vector b) {
  return _mm_add_epi64(a, b);
}
MIROLTA_LANES_STEP Vector Multiply(Vector a, Vector b) {
  return _mm_mul_epu32(a, b);
}
MIROLTA_LANES_STEP Vector And(Vector a, Vector b) {
  return _mm_and_si128(a, b);
}
MIROLTA_LANES_STEP Vector Or(Vector a, Vector b) {
  return _mm_or_si128(a, b);
}
MIROLTA_LANES_STEP Vector Shift(Vector a) {
  return _mm_srli_epi64(a, kRadix27Bits);
}
MIROLTA_LANES_STEP Vector Spread(__m128i digit) {
  return _mm_unpacklo_epi64(digit, digit);
}
MIROLTA_LANES_STEP Vector Same(Vector a, Vector b) {
  return _mm_cmpeq_epi32(a, b);
}

  #include "radix27_loops.inc"
  #include "radix28_loops.inc"

}  // namespace

constexpr Radix27Kernels kRadix27Sse2 = {Product, Select};

MIROLTA_LANES void MultiplyRadix28Sse2(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n) {
  Columns(z, x, m, y, n);
}

}  // namespace mirolta

#endif
