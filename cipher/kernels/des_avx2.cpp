// DES bit-sliced over 256 blocks, with AVX2 (Biham 1997).
#include <utility>

#include "des_kernels.h"

#if MIROLTA_KERNELS_FOR(X86)

  #include <immintrin.h>

  #include "seam/x86_vectors.h"

namespace mirolta {

namespace {

  #define MIROLTA_DES_TARGET __attribute__((target("avx2")))
  #define MIROLTA_DES_BOX __attribute__((target("avx2"), always_inline)) inline
  #define MIROLTA_DES_BOXES "des_boxes_gates.inc"

using Vector = __m256i;

constexpr uint32_t kRowBlocks = 4;
// Break-even block counts of a pass against the kernel that takes what passes leave, for single and
// for triple DES. A pass costs the same however few of its blocks are there.
constexpr uint32_t kLeastBlocks = 37;
constexpr uint32_t kLeastTripleBlocks = 39;

// The transposition counts the bits of a byte from the lowest, the standard from the highest.
constexpr int Slot(int n) {
  return n ^ 7;
}

MIROLTA_DES_BOX Vector And(Vector a, Vector b) {
  return _mm256_and_si256(a, b);
}

MIROLTA_DES_BOX Vector AndNot(Vector a, Vector b) {
  return _mm256_andnot_si256(a, b);
}

MIROLTA_DES_BOX Vector Or(Vector a, Vector b) {
  return _mm256_or_si256(a, b);
}

MIROLTA_DES_BOX Vector Xor(Vector a, Vector b) {
  return _mm256_xor_si256(a, b);
}

template <int kShift>
MIROLTA_DES_BOX Vector ShiftRight(Vector a) {
  return _mm256_srli_epi64(a, kShift);
}

template <int kShift>
MIROLTA_DES_BOX Vector ShiftLeft(Vector a) {
  return _mm256_slli_epi64(a, kShift);
}

MIROLTA_DES_BOX Vector Repeat(long long word) {
  return _mm256_set1_epi64x(word);
}

MIROLTA_DES_BOX Vector XorKey(Vector bit, const uint32_t* mask) {
  return _mm256_xor_si256(bit, _mm256_set1_epi32(static_cast<int>(*mask)));
}

  #include "des_rounds.inc"
// Needs the rounds.
  #include "des_passes.inc"

MIROLTA_DES_BOX void MakeMasks(const uint32_t* words, uint32_t rounds, uint32_t* masks) {
  for (uint32_t i = 0; i < 2 * rounds; ++i) {
    const Vector word = _mm256_set1_epi32(static_cast<int>(RoundWord(words, i)));
    Vector bits = _mm256_set_epi32(128, 64, 32, 16, 8, 4, 2, 1);
  #pragma GCC unroll 4
    for (uint32_t byte = 0; byte < 4; ++byte, masks += 8) {
      const Vector mask = _mm256_cmpeq_epi32(_mm256_and_si256(word, bits), bits);
      _mm256_storeu_si256(reinterpret_cast<Vector*>(masks), mask);
      bits = _mm256_slli_epi32(bits, 8);
    }
  }
}

// The mask of the first left < kRowBlocks blocks of a row.
MIROLTA_DES_BOX Vector RowMask(uint32_t left) {
  return _mm256_cmpgt_epi64(_mm256_set1_epi64x(left), _mm256_set_epi64x(3, 2, 1, 0));
}

// A row of in[block_count]; blocks beyond the last are zero. Only a partial row takes a masked
// access, which is many times slower.
MIROLTA_DES_BOX Vector LoadRow(const uint8_t* in, uint32_t row, uint32_t block_count) {
  const uint32_t before = row * kRowBlocks;
  const uint8_t* const place = in + size_t{kDesBlockSize} * before;
  if (block_count >= before + kRowBlocks) {
    return _mm256_loadu_si256(reinterpret_cast<const Vector*>(place));
  }
  if (block_count <= before) return _mm256_setzero_si256();
  return _mm256_maskload_epi64(reinterpret_cast<const long long*>(place),
                               RowMask(block_count - before));
}

MIROLTA_DES_BOX void StoreRow(Vector v, uint32_t row, uint32_t block_count, uint8_t* out) {
  const uint32_t before = row * kRowBlocks;
  uint8_t* const place = out + size_t{kDesBlockSize} * before;
  if (block_count >= before + kRowBlocks) {
    _mm256_storeu_si256(reinterpret_cast<Vector*>(place), v);
  } else if (block_count > before) {
    _mm256_maskstore_epi64(reinterpret_cast<long long*>(place), RowMask(block_count - before), v);
  }
}

  #include "des_gates_slices.inc"

}  // namespace

void DesEncryptAvx2(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                    uint32_t block_count) {
  Transform<OfMode(DesEncryptWords64, DesEncryptPortable)>(schedule, schedule.encryption, in, out,
                                                           block_count);
}

void DesDecryptAvx2(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                    uint32_t block_count) {
  Transform<OfMode(DesDecryptWords64, DesDecryptPortable)>(schedule, schedule.decryption, in, out,
                                                           block_count);
}

}  // namespace mirolta

#endif
