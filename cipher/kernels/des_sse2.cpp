// DES bit-sliced over 128 blocks, with SSE2 (Biham 1997).
#include <new>
#include <utility>

#include "des_kernels.h"
#include "seam/small_stack.h"

#if MIROLTA_KERNELS_FOR(X86_32)

  #include <emmintrin.h>

namespace mirolta {

namespace {

  #define MIROLTA_DES_TARGET __attribute__((target("sse2")))
  #define MIROLTA_DES_BOX __attribute__((target("sse2"), always_inline)) inline
  #define MIROLTA_DES_BOXES "des_boxes_gates.inc"

using Vector = __m128i;

constexpr uint32_t kRowBlocks = 2;
// Break-even block counts of a pass against the kernel that takes what passes leave, for single and
// for triple DES. A pass costs the same however few of its blocks are there.
constexpr uint32_t kLeastBlocks = 37;
constexpr uint32_t kLeastTripleBlocks = 39;
constexpr bool kSpillsMuch = false;

MIROLTA_DES_BOX Vector And(Vector a, Vector b) {
  return _mm_and_si128(a, b);
}

MIROLTA_DES_BOX Vector AndNot(Vector a, Vector b) {
  return _mm_andnot_si128(a, b);
}

MIROLTA_DES_BOX Vector Or(Vector a, Vector b) {
  return _mm_or_si128(a, b);
}

MIROLTA_DES_BOX Vector Xor(Vector a, Vector b) {
  return _mm_xor_si128(a, b);
}

MIROLTA_DES_BOX void XorKeys(Vector (&in)[6], const uint32_t* masks) {
  #pragma GCC unroll 6
  for (int i = 0; i < 6; ++i) {
    in[i] = _mm_xor_si128(in[i], _mm_set1_epi32(static_cast<int>(masks[5 - i])));
  }
}

// Nothing is hidden: operands in memory cost no instruction.
MIROLTA_DES_BOX void BeginBox(Vector*, const uint32_t*) {}

MIROLTA_DES_BOX void StoreMasks(uint32_t word, uint32_t* masks) {
  const Vector words = _mm_set1_epi32(static_cast<int>(word));
  Vector bits = _mm_set_epi32(8, 4, 2, 1);
  #pragma GCC unroll 8
  for (uint32_t nibble = 0; nibble < 8; ++nibble, masks += 4) {
    const Vector mask = _mm_cmpeq_epi32(_mm_and_si128(words, bits), bits);
    _mm_storeu_si128(reinterpret_cast<Vector*>(masks), mask);
    bits = _mm_slli_epi32(bits, 4);
  }
}

// Exchanges, in each 64-bit lane, the bits of a whose index has the bit kShift set with the bits of
// b at indexes kShift lower.
template <int kShift>
MIROLTA_DES_BOX void Exchange(Vector& a, Vector& b) {
  constexpr uint64_t kLower = ~uint64_t{0} / ((uint64_t{1} << kShift) + 1);
  const Vector mask = _mm_set1_epi64x(static_cast<long long>(kLower));
  const Vector difference = And(Xor(_mm_srli_epi64(a, kShift), b), mask);
  b = Xor(b, difference);
  a = Xor(a, _mm_slli_epi64(difference, kShift));
}

MIROLTA_DES_BOX Vector Zero() {
  return _mm_setzero_si128();
}

MIROLTA_DES_BOX Vector Load(const uint8_t* in) {
  return _mm_loadu_si128(reinterpret_cast<const Vector*>(in));
}

MIROLTA_DES_BOX void Store(Vector v, uint8_t* out) {
  _mm_storeu_si128(reinterpret_cast<Vector*>(out), v);
}

// The first of two blocks.
MIROLTA_DES_BOX Vector LoadFirst(const uint8_t* in, uint32_t) {
  return _mm_loadl_epi64(reinterpret_cast<const Vector*>(in));
}

MIROLTA_DES_BOX void StoreFirst(Vector v, uint32_t, uint8_t* out) {
  _mm_storel_epi64(reinterpret_cast<Vector*>(out), v);
}

  #include "des_slices.inc"

}  // namespace

void DesEncryptSse2(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                    uint32_t block_count) {
  Transform<DesEncryptPortable>(schedule, schedule.encryption, in, out, block_count);
}

void DesDecryptSse2(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                    uint32_t block_count) {
  Transform<DesDecryptPortable>(schedule, schedule.decryption, in, out, block_count);
}

}  // namespace mirolta

#endif
