// DES bit-sliced over 128 blocks, with SSE2 (Biham 1997).
#include <utility>

#include "des_kernels.h"

#if MIROLTA_KERNELS_FOR(X86_32)

  #include <emmintrin.h>

  #include "seam/x86_vectors.h"

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

// The transposition counts the bits of a byte from the lowest, the standard from the highest.
constexpr int Slot(int n) {
  return n ^ 7;
}

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

template <int kShift>
MIROLTA_DES_BOX Vector ShiftRight(Vector a) {
  return _mm_srli_epi64(a, kShift);
}

template <int kShift>
MIROLTA_DES_BOX Vector ShiftLeft(Vector a) {
  return _mm_slli_epi64(a, kShift);
}

MIROLTA_DES_BOX Vector Repeat(long long word) {
  return _mm_set1_epi64x(word);
}

MIROLTA_DES_BOX Vector XorKey(Vector bit, const uint32_t* mask) {
  return _mm_xor_si128(bit, _mm_set1_epi32(static_cast<int>(*mask)));
}

  #include "des_rounds.inc"
// Needs the rounds.
  #include "des_passes.inc"

MIROLTA_DES_BOX void MakeMasks(const uint32_t* words, uint32_t rounds, uint32_t* masks) {
  for (uint32_t i = 0; i < 2 * rounds; ++i) {
    const Vector word = _mm_set1_epi32(static_cast<int>(RoundWord(words, i)));
    Vector bits = _mm_set_epi32(8, 4, 2, 1);
  #pragma GCC unroll 8
    for (uint32_t nibble = 0; nibble < 8; ++nibble, masks += 4) {
      const Vector mask = _mm_cmpeq_epi32(_mm_and_si128(word, bits), bits);
      _mm_storeu_si128(reinterpret_cast<Vector*>(masks), mask);
      bits = _mm_slli_epi32(bits, 4);
    }
  }
}

// A row of in[block_count], two blocks; blocks beyond the last are zero.
MIROLTA_DES_BOX Vector LoadRow(const uint8_t* in, uint32_t row, uint32_t block_count) {
  const uint32_t before = row * kRowBlocks;
  const Vector* const place = reinterpret_cast<const Vector*>(in + size_t{kDesBlockSize} * before);
  if (block_count >= before + kRowBlocks) return _mm_loadu_si128(place);
  if (block_count <= before) return _mm_setzero_si128();
  return _mm_loadl_epi64(place);
}

MIROLTA_DES_BOX void StoreRow(Vector v, uint32_t row, uint32_t block_count, uint8_t* out) {
  const uint32_t before = row * kRowBlocks;
  Vector* const place = reinterpret_cast<Vector*>(out + size_t{kDesBlockSize} * before);
  if (block_count >= before + kRowBlocks) {
    _mm_storeu_si128(place, v);
  } else if (block_count > before) {
    _mm_storel_epi64(place, v);
  }
}

  #include "des_gates_slices.inc"

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
