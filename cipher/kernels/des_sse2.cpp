// DES bit-sliced over 128 blocks, with SSE2 (Biham 1997).
#include <new>
#include <utility>

#include "des_kernels.h"
#include "seam/small_stack.h"

#if MIROLTA_KERNELS_FOR(X86) && MIROLTA_DES_SSE2

  #include <immintrin.h>

namespace mirolta {

namespace {

  #define MIROLTA_DES_TARGET __attribute__((target("sse2")))
  #define MIROLTA_DES_BOX __attribute__((target("sse2"), always_inline)) inline
  #define MIROLTA_DES_VECTOR(operation) _mm_##operation

using Vector = __m128i;

constexpr uint32_t kRowBlocks = 2;
constexpr uint32_t kStates = 4;
// Break-even block counts of a pass against the kernel that takes what passes leave, for single and
// for triple DES. A pass costs the same however few of its blocks are there.
  #if MIROLTA_KERNELS_FOR(X86_64)
constexpr uint32_t kLeastBlocks = 41;
constexpr uint32_t kLeastTripleBlocks = 42;
  #else
constexpr uint32_t kLeastBlocks = 18;
constexpr uint32_t kLeastTripleBlocks = 17;
  #endif
constexpr bool kSpillsMuch = false;

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

// To spread a mask over a vector takes two instructions, which four states share. Two bits of each byte of a
// round's words are no key's.
struct RoundMasks {
  Vector spread[64];
};

// Not inlined: each of four kinds of rounds would have a copy.
MIROLTA_DES_TARGET __attribute__((noinline)) const Vector* Prepare(const uint32_t* masks,
                                                                   RoundMasks& round_masks) {
  Vector* const spread = round_masks.spread;
  #pragma GCC unroll 8
  for (Vector* to = spread; to != spread + 64; to += 8, masks += 8) {
    const Vector four = _mm_loadu_si128(reinterpret_cast<const Vector*>(masks));
    const Vector two = _mm_loadl_epi64(reinterpret_cast<const Vector*>(masks + 4));
    to[0] = _mm_shuffle_epi32(four, 0x00);
    to[1] = _mm_shuffle_epi32(four, 0x55);
    to[2] = _mm_shuffle_epi32(four, 0xAA);
    to[3] = _mm_shuffle_epi32(four, 0xFF);
    to[4] = _mm_shuffle_epi32(two, 0x00);
    to[5] = _mm_shuffle_epi32(two, 0x55);
  }
  return spread;
}

MIROLTA_DES_BOX void XorKeys(Vector (&in)[6], const Vector* keys) {
  #pragma GCC unroll 6
  for (int i = 0; i < 6; ++i) in[i] ^= keys[5 - i];
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

  #include "des_x86_slices.inc"

}  // namespace

void DesEncryptSse2(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                    uint32_t block_count) {
  Transform<kEncryptRest>(schedule, schedule.encryption, in, out, block_count);
}

void DesDecryptSse2(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                    uint32_t block_count) {
  Transform<kDecryptRest>(schedule, schedule.decryption, in, out, block_count);
}

}  // namespace mirolta

#endif
