// Loops over limbs for 32-bit x86 with SSE2: sums and products of a row are in 64-bit lanes of vectors, where
// a carry is a shift away. In general registers each limb needs two additions with carry, and compilers spill
// the sums of columns.
#include "limb_kernel_tables.h"
#include "operand_scanning.h"

#if MIROLTA_KERNELS_FOR(X86_32)

  #include <emmintrin.h>

namespace mirolta {

namespace {

  #define MIROLTA_SSE2 __attribute__((target("sse2")))
  #define MIROLTA_SSE2_STEP __attribute__((target("sse2"), always_inline)) inline

static_assert(kLimbBits == 32);

MIROLTA_SSE2_STEP __m128i Lane(Limb x) {
  return _mm_cvtsi32_si128(static_cast<int>(x));
}

MIROLTA_SSE2_STEP Limb LowLimb(__m128i lane) {
  return static_cast<Limb>(_mm_cvtsi128_si32(lane));
}

enum class Row : uint8_t { kSet, kAdd, kSubtract };

// One limb of a row; carry is that of the limb before, below B, and becomes this limb's.
// (B - 1)^2 + 2 (B - 1) = B^2 - 1: no sum overflows. A difference z - p is ~(~z + p).
template <Row kRow>
MIROLTA_SSE2_STEP void Step(Limb* z, Limb x, __m128i y, __m128i* carry) {
  __m128i p = _mm_mul_epu32(Lane(x), y);
  if (kRow == Row::kAdd) p = _mm_add_epi64(p, Lane(*z));
  if (kRow == Row::kSubtract) p = _mm_add_epi64(p, Lane(~*z));
  const __m128i sum = _mm_add_epi64(p, *carry);
  *z = kRow == Row::kSubtract ? ~LowLimb(sum) : LowLimb(sum);
  *carry = _mm_srli_epi64(sum, 32);
}

template <Row kRow>
MIROLTA_SSE2 Limb RunRow(Limb* z, const Limb* x, size_t n, Limb y) {
  const __m128i factor = Lane(y);
  __m128i carry = _mm_setzero_si128();
  for (; n >= 4; n -= 4, x += 4, z += 4) {
    Step<kRow>(z, x[0], factor, &carry);
    Step<kRow>(z + 1, x[1], factor, &carry);
    Step<kRow>(z + 2, x[2], factor, &carry);
    Step<kRow>(z + 3, x[3], factor, &carry);
  }
  for (; n != 0; --n) Step<kRow>(z++, *x++, factor, &carry);
  return LowLimb(carry);
}

struct Sse2Rows : RowLoops<WideProducts> {
  static Limb Mul1(Limb* z, const Limb* x, size_t n, Limb y) {
    return RunRow<Row::kSet>(z, x, n, y);
  }
  static Limb MulAdd1(Limb* z, const Limb* x, size_t n, Limb y) {
    return RunRow<Row::kAdd>(z, x, n, y);
  }
  static Limb MulSub1(Limb* z, const Limb* x, size_t n, Limb y) {
    return RunRow<Row::kSubtract>(z, x, n, y);
  }
};

bool NoMontgomerySse2(Limb*, const Limb*, const Limb*, const Limb*, size_t, Limb) {
  return false;
}

using Blocks = OperandScanningLoops<Sse2Rows>;

}  // namespace

constexpr LimbKernels kSse2Kernels = {Sse2Rows::Add,     Sse2Rows::Subtract, Sse2Rows::Mul1,
                                      Sse2Rows::MulAdd1, Sse2Rows::MulSub1,  Blocks::Multiply,
                                      Blocks::Square,    Blocks::Reduce,     NoMontgomerySse2};

}  // namespace mirolta

#endif
