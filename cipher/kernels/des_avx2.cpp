// DES bit-sliced over 256 blocks, with AVX2 (Biham 1997).
#include <new>
#include <utility>

#include "des_kernels.h"
#include "seam/small_stack.h"

#if MIROLTA_KERNELS_FOR(X86)

  #include <immintrin.h>

namespace mirolta {

namespace {

  #define MIROLTA_DES_TARGET __attribute__((target("avx2")))
  #define MIROLTA_DES_BOX __attribute__((target("avx2"), always_inline)) inline
  #define MIROLTA_DES_VECTOR(operation) _mm256_##operation

using Vector = __m256i;

constexpr uint32_t kRowBlocks = 4;
constexpr uint32_t kStates = 2;
// Break-even block counts of a pass against the kernel that takes what passes leave, for single and
// for triple DES. A pass costs the same however few of its blocks are there.
  #if MIROLTA_KERNELS_FOR(X86_64)
constexpr uint32_t kLeastBlocks = 37;
constexpr uint32_t kLeastTripleBlocks = 38;
  #else
constexpr uint32_t kLeastBlocks = 17;
constexpr uint32_t kLeastTripleBlocks = 16;
  #endif
constexpr bool kSpillsMuch = false;

MIROLTA_DES_BOX void StoreMasks(uint32_t word, uint32_t* masks) {
  const Vector words = _mm256_set1_epi32(static_cast<int>(word));
  Vector bits = _mm256_set_epi32(128, 64, 32, 16, 8, 4, 2, 1);
  #pragma GCC unroll 4
  for (uint32_t byte = 0; byte < 4; ++byte, masks += 8) {
    const Vector mask = _mm256_cmpeq_epi32(_mm256_and_si256(words, bits), bits);
    _mm256_storeu_si256(reinterpret_cast<Vector*>(masks), mask);
    bits = _mm256_slli_epi32(bits, 8);
  }
}

struct RoundMasks {};

MIROLTA_DES_BOX const uint32_t* Prepare(const uint32_t* masks, const RoundMasks&) {
  return masks;
}

MIROLTA_DES_BOX void XorKeys(Vector (&in)[6], const uint32_t* masks) {
  #pragma GCC unroll 6
  for (int i = 0; i < 6; ++i) in[i] ^= _mm256_set1_epi32(static_cast<int>(masks[5 - i]));
}

MIROLTA_DES_BOX Vector Load(const uint8_t* in) {
  return _mm256_loadu_si256(reinterpret_cast<const Vector*>(in));
}

MIROLTA_DES_BOX void Store(Vector v, uint8_t* out) {
  _mm256_storeu_si256(reinterpret_cast<Vector*>(out), v);
}

// Masked accesses are many times slower than others.
MIROLTA_DES_BOX Vector FirstMask(uint32_t count) {
  return _mm256_cmpgt_epi64(_mm256_set1_epi64x(count), _mm256_set_epi64x(3, 2, 1, 0));
}

MIROLTA_DES_BOX Vector LoadFirst(const uint8_t* in, uint32_t count) {
  return _mm256_maskload_epi64(reinterpret_cast<const long long*>(in), FirstMask(count));
}

MIROLTA_DES_BOX void StoreFirst(Vector v, uint32_t count, uint8_t* out) {
  _mm256_maskstore_epi64(reinterpret_cast<long long*>(out), FirstMask(count), v);
}

  #include "des_x86_slices.inc"

}  // namespace

void DesEncryptAvx2(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                    uint32_t block_count) {
  Transform<kEncryptRest>(schedule, schedule.encryption, in, out, block_count);
}

void DesDecryptAvx2(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                    uint32_t block_count) {
  Transform<kDecryptRest>(schedule, schedule.decryption, in, out, block_count);
}

}  // namespace mirolta

#endif
