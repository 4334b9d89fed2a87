// DES with 64-bit words and GFNI (FIPS 46-3): one instruction transposes a block's bits, and the
// initial permutation is that transposition and a permutation of the bytes.
#include <cstring>

#include "des_kernels.h"
#include "des_permutations.h"
#include "des_tables.h"

#if MIROLTA_KERNELS_FOR(X86_64)

  #include <immintrin.h>

namespace mirolta {

namespace {

  #define MIROLTA_DES_WORDS64 __attribute__((target("sse4.1,bmi,gfni"), always_inline)) inline

// Exchanges bit i of byte j with bit 7 - j of byte 7 - i.
MIROLTA_DES_WORDS64 __m128i ExchangeBits(__m128i block) {
  return _mm_gf2p8affine_epi64_epi8(_mm_set1_epi64x(0x0102040810204080), block, 0);
}

MIROLTA_DES_WORDS64 __m128i Reorder(__m128i block, long long bytes) {
  return _mm_shuffle_epi8(block, _mm_set1_epi64x(bytes));
}

MIROLTA_DES_WORDS64 Halves PermuteBlock(const uint8_t* block) {
  uint64_t word;
  std::memcpy(&word, block, sizeof word);
  const __m128i rows =
      ExchangeBits(_mm_cvtsi64_si128(static_cast<long long>(__builtin_bswap64(word))));
  const uint64_t both = static_cast<uint64_t>(_mm_cvtsi128_si64(Reorder(rows, 0x0002040601030507)));
  return {std::rotl(static_cast<uint32_t>(both), 1),
          std::rotl(static_cast<uint32_t>(both >> 32), 1)};
}

// The last round leaves the halves exchanged.
MIROLTA_DES_WORDS64 void UnpermuteBlock(Halves halves, uint8_t* block) {
  const uint64_t both = uint64_t{std::rotr(halves.left, 1)} << 32 | std::rotr(halves.right, 1);
  const __m128i rows = Reorder(_mm_cvtsi64_si128(static_cast<long long>(both)), 0x0004010502060307);
  const uint64_t word =
      __builtin_bswap64(static_cast<uint64_t>(_mm_cvtsi128_si64(ExchangeBits(rows))));
  std::memcpy(block, &word, sizeof word);
}

// One instruction instead of two.
template <int kByte>
MIROLTA_DES_WORDS64 uint64_t InnerByte(uint64_t word) {
  return _bextr_u64(word, 8 * kByte, 8);
}

  #include "des_words64.inc"

}  // namespace

__attribute__((target("sse4.1,bmi,gfni"))) void DesEncryptGfni(const DesSchedule& schedule,
                                                               const uint8_t* in, uint8_t* out,
                                                               uint32_t block_count) {
  TransformBlocks(schedule.encryption, schedule.rounds, in, out, block_count);
}

__attribute__((target("sse4.1,bmi,gfni"))) void DesDecryptGfni(const DesSchedule& schedule,
                                                               const uint8_t* in, uint8_t* out,
                                                               uint32_t block_count) {
  TransformBlocks(schedule.decryption, schedule.rounds, in, out, block_count);
}

}  // namespace mirolta

#endif
