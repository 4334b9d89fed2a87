// AES bit-sliced over eight or 32 blocks, with SSE2. No length of key or data looks up tables.
#include <cstring>
#include <utility>

#include "aes_kernels.h"

#if MIROLTA_KERNELS_FOR(X86) && MIROLTA_AES_SSE2

  #include <emmintrin.h>

namespace mirolta {

namespace {

  #define MIROLTA_AES_TARGET __attribute__((target("sse2")))
  #define MIROLTA_AES_STEP __attribute__((target("sse2"), always_inline)) inline

using Vector = __m128i;

constexpr uint32_t kGroup = 8;
// The break-even block count of 32 blocks at once against groups of eight.
constexpr uint32_t kLeastWideBlocks = 17;

MIROLTA_AES_STEP Vector And(Vector a, Vector b) {
  return _mm_and_si128(a, b);
}

MIROLTA_AES_STEP Vector Xor(Vector a, Vector b) {
  return _mm_xor_si128(a, b);
}

MIROLTA_AES_STEP Vector Load(const uint8_t* in) {
  return _mm_loadu_si128(reinterpret_cast<const Vector*>(in));
}

MIROLTA_AES_STEP void Store(Vector v, uint8_t* out) {
  _mm_storeu_si128(reinterpret_cast<Vector*>(out), v);
}

MIROLTA_AES_STEP Vector LoadKey(const uint32_t* words) {
  return _mm_loadu_si128(reinterpret_cast<const Vector*>(words));
}

MIROLTA_AES_STEP Vector Constant(uint8_t byte) {
  return _mm_set1_epi8(static_cast<char>(byte));
}

// Also of 16 and 8 bits in each 32-bit lane.
template <int kShift>
MIROLTA_AES_STEP void Exchange(Vector& a, Vector& b) {
  constexpr uint32_t kLower = ~uint32_t{0} / ((uint32_t{1} << kShift) + 1);
  const Vector mask = _mm_set1_epi32(static_cast<int>(kLower));
  const Vector difference = And(Xor(_mm_srli_epi32(a, kShift), b), mask);
  b = Xor(b, difference);
  a = Xor(a, _mm_slli_epi32(difference, kShift));
}

template <int kBit>
MIROLTA_AES_STEP Vector BitMask(Vector v) {
  const Vector bit = Constant(1 << kBit);
  return _mm_cmpeq_epi8(And(v, bit), bit);
}

// The rows are in the order 0, 2, 1, 3, so that those that turn by an odd number of bytes are one half.
template <int kRows>
MIROLTA_AES_STEP Vector TurnRows(Vector v) {
  static_assert(kRows == 1 || kRows == 2);
  return _mm_shuffle_epi32(v, kRows == 1 ? _MM_SHUFFLE(0, 1, 3, 2) : _MM_SHUFFLE(2, 3, 0, 1));
}

template <int kColumns>
MIROLTA_AES_STEP Vector TurnColumns(Vector v) {
  // Without optimization the instruction's operand must be an enumerator: an array's element is none.
  enum : int {
    kFrom = _MM_SHUFFLE((kColumns + 3) % 4, (kColumns + 2) % 4, (kColumns + 1) % 4, kColumns % 4)
  };
  return _mm_shuffle_epi32(v, kFrom);
}

template <int kBit>
MIROLTA_AES_STEP Vector SpreadBit(Vector v) {
  return _mm_srai_epi32(_mm_slli_epi32(v, 31 - kBit), 31);
}

template <bool kEncrypt>
struct Rows {
  // Transposes the bytes, and exchanges rows 1 and 2.
  static MIROLTA_AES_STEP Vector Enter(Vector v) {
    v = _mm_unpacklo_epi8(v, _mm_srli_si128(v, 8));
    v = _mm_unpacklo_epi8(v, _mm_srli_si128(v, 8));
    return _mm_shuffle_epi32(v, _MM_SHUFFLE(3, 1, 2, 0));
  }
  static MIROLTA_AES_STEP Vector Order(Vector v) { return Enter(v); }
  static MIROLTA_AES_STEP Vector OrderLast(Vector v) { return Enter(v); }
  static MIROLTA_AES_STEP Vector Leave(Vector v) {
    v = _mm_shuffle_epi32(v, _MM_SHUFFLE(3, 1, 2, 0));
    v = _mm_unpacklo_epi8(v, _mm_srli_si128(v, 8));
    return _mm_unpacklo_epi8(v, _mm_srli_si128(v, 8));
  }
  // Row 2, and row 3 or in decryption row 1, turn by two bytes; then rows 1 and 3 by one.
  static MIROLTA_AES_STEP void Shift(Vector (&x)[kGroup]) {
  #pragma GCC unroll 8
    for (uint32_t i = 0; i < kGroup; ++i) {
      Vector v = _mm_shufflelo_epi16(x[i], _MM_SHUFFLE(2, 3, 1, 0));
      v = _mm_shufflehi_epi16(v, kEncrypt ? _MM_SHUFFLE(2, 3, 1, 0) : _MM_SHUFFLE(3, 2, 0, 1));
      const Vector turned = _mm_or_si128(_mm_srli_epi32(v, 8), _mm_slli_epi32(v, 24));
      x[i] = _mm_castpd_si128(_mm_move_sd(_mm_castsi128_pd(turned), _mm_castsi128_pd(v)));
    }
  }
  static MIROLTA_AES_STEP void ShiftLast(Vector (&x)[kGroup]) { Shift(x); }
};

  #include "aes_slices.inc"
  #include "aes_wide_slices.inc"

// Not inlined: one after the other the two need less of the stack, which callers wipe.
template <bool kEncrypt>
MIROLTA_AES_TARGET __attribute__((noinline)) uint32_t TransformWideGroups(
    const uint32_t* words, uint32_t rounds, const uint8_t* in, uint8_t* out, uint32_t block_count) {
  uint32_t done = 0;
  while (block_count - done >= kLeastWideBlocks) {
    const uint32_t left = block_count - done;
    const uint32_t count = left < kWideGroup ? left : kWideGroup;
    TransformWideGroup<kEncrypt>(words, rounds, in + kAesBlockSize * done,
                                 out + kAesBlockSize * done, count);
    done += count;
  }
  return done;
}

template <bool kEncrypt>
MIROLTA_AES_TARGET __attribute__((noinline)) void TransformSmallGroups(
    const uint32_t* words, uint32_t rounds, const uint8_t* in, uint8_t* out, uint32_t block_count) {
  TransformGroups<kEncrypt>(words, rounds, in, out, block_count, 1);
}

template <bool kEncrypt>
void TransformBlocks(const uint32_t* words, uint32_t rounds, const uint8_t* in, uint8_t* out,
                     uint32_t block_count) {
  const uint32_t done = TransformWideGroups<kEncrypt>(words, rounds, in, out, block_count);
  TransformSmallGroups<kEncrypt>(words, rounds, in + kAesBlockSize * done,
                                 out + kAesBlockSize * done, block_count - done);
}

}  // namespace

void AesEncryptSse2(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                    uint32_t block_count) {
  TransformBlocks<true>(schedule.encryption, schedule.rounds, in, out, block_count);
}

void AesDecryptSse2(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                    uint32_t block_count) {
  TransformBlocks<false>(schedule.decryption, schedule.rounds, in, out, block_count);
}

}  // namespace mirolta

#endif
