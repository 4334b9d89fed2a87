// DES bit-sliced over 128 blocks, with NEON (Biham 1997).
#include <new>
#include <utility>

#include "des_kernels.h"
#include "seam/neon.h"
#include "seam/small_stack.h"

#if MIROLTA_KERNELS_FOR(NEON)

namespace mirolta {

namespace {

  #define MIROLTA_DES_TARGET MIROLTA_NEON
  #define MIROLTA_DES_BOX MIROLTA_NEON __attribute__((always_inline)) inline
  #define MIROLTA_DES_BOXES "des_boxes_gates.inc"

using Vector = uint32x4_t;

constexpr uint32_t kRowBlocks = 2;
constexpr uint32_t kStates = 1;
constexpr bool kSpillsMuch = false;

// Break-even block counts, by instructions, of a pass against the kernel that takes what passes leave,
// for single and for triple DES. A pass costs the same however few of its blocks are there.
  #if MIROLTA_KERNELS_FOR(AARCH64)
constexpr uint32_t kLeastBlocks = 22;
constexpr uint32_t kLeastTripleBlocks = 20;
constexpr DesTransform kEncryptRest = DesEncryptPortable;
constexpr DesTransform kDecryptRest = DesDecryptPortable;
  #else
constexpr uint32_t kLeastBlocks = 33;
constexpr uint32_t kLeastTripleBlocks = 30;
constexpr DesTransform kEncryptRest = DesEncryptArm;
constexpr DesTransform kDecryptRest = DesDecryptArm;
  #endif

MIROLTA_DES_BOX Vector And(Vector a, Vector b) {
  return vandq_u32(a, b);
}

MIROLTA_DES_BOX Vector AndNot(Vector a, Vector b) {
  return vbicq_u32(b, a);
}

MIROLTA_DES_BOX Vector Or(Vector a, Vector b) {
  return vorrq_u32(a, b);
}

MIROLTA_DES_BOX Vector Xor(Vector a, Vector b) {
  return veorq_u32(a, b);
}

struct RoundMasks {};

MIROLTA_DES_BOX void XorKeys(Vector (&in)[6], const uint32_t* masks) {
  const uint32x4_t low = vld1q_u32(masks);
  const uint32x2_t high = vld1_u32(masks + 4);
  in[0] = veorq_u32(in[0], vdupq_lane_u32(high, 1));
  in[1] = veorq_u32(in[1], vdupq_lane_u32(high, 0));
  in[2] = veorq_u32(in[2], vdupq_lane_u32(vget_high_u32(low), 1));
  in[3] = veorq_u32(in[3], vdupq_lane_u32(vget_high_u32(low), 0));
  in[4] = veorq_u32(in[4], vdupq_lane_u32(vget_low_u32(low), 1));
  in[5] = veorq_u32(in[5], vdupq_lane_u32(vget_low_u32(low), 0));
}

// Hidden, so that the compiler does not keep what a box reads, or its addresses, from one box to the
// next, for which there are not enough registers.
MIROLTA_DES_BOX void BeginBox(Vector*& state, const uint32_t*& masks) {
  __asm__("" : "+r"(state), "+r"(masks));
}

MIROLTA_DES_BOX void StoreMasks(uint32_t word, uint32_t* masks) {
  constexpr uint32_t kBits[4] = {1, 2, 4, 8};
  const Vector bits = vld1q_u32(kBits);
  #pragma GCC unroll 8
  for (uint32_t i = 0; i < 8; ++i) {
    vst1q_u32(masks + 4 * i, vtstq_u32(vdupq_n_u32(word >> 4 * i), bits));
  }
}

template <int kShift>
MIROLTA_DES_BOX void Exchange(Vector& a, Vector& b) {
  if constexpr (kShift == 32) {
    const uint32x4x2_t both = vtrnq_u32(a, b);
    a = both.val[0];
    b = both.val[1];
  } else if constexpr (kShift == 16) {
    const uint16x8x2_t both = vtrnq_u16(vreinterpretq_u16_u32(a), vreinterpretq_u16_u32(b));
    a = vreinterpretq_u32_u16(both.val[0]);
    b = vreinterpretq_u32_u16(both.val[1]);
  } else if constexpr (kShift == 8) {
    const uint8x16x2_t both = vtrnq_u8(vreinterpretq_u8_u32(a), vreinterpretq_u8_u32(b));
    a = vreinterpretq_u32_u8(both.val[0]);
    b = vreinterpretq_u32_u8(both.val[1]);
  } else if constexpr (kShift == 4) {
    const uint8x16_t upper = vreinterpretq_u8_u32(a);
    const uint8x16_t lower = vreinterpretq_u8_u32(b);
    a = vreinterpretq_u32_u8(vsliq_n_u8(upper, lower, 4));
    b = vreinterpretq_u32_u8(vsriq_n_u8(lower, upper, 4));
  } else {
    constexpr uint32_t kLower = ~uint32_t{0} / ((1u << kShift) + 1);
    const Vector mask = vdupq_n_u32(kLower);
    const Vector from_b = vshlq_n_u32(b, kShift);
    b = vbslq_u32(mask, vshrq_n_u32(a, kShift), b);
    a = vbslq_u32(mask, a, from_b);
  }
}

  #include "des_exchange.inc"

MIROLTA_DES_BOX void GatherBytes(Vector* v) {
  ExchangeEight<8>(v);
}

MIROLTA_DES_BOX void ScatterBytes(Vector* v) {
  ExchangeEight<8>(v);
}

MIROLTA_DES_BOX Vector Zero() {
  return vdupq_n_u32(0);
}

MIROLTA_DES_BOX Vector Load(const uint8_t* in) {
  return vreinterpretq_u32_u8(vld1q_u8(in));
}

MIROLTA_DES_BOX void Store(Vector v, uint8_t* out) {
  vst1q_u8(out, vreinterpretq_u8_u32(v));
}

// The first of two blocks.
MIROLTA_DES_BOX Vector LoadFirst(const uint8_t* in, uint32_t) {
  return vreinterpretq_u32_u8(vcombine_u8(vld1_u8(in), vdup_n_u8(0)));
}

MIROLTA_DES_BOX void StoreFirst(Vector v, uint32_t, uint8_t* out) {
  vst1_u8(out, vget_low_u8(vreinterpretq_u8_u32(v)));
}

  #include "des_slices.inc"

}  // namespace

void DesEncryptNeon(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                    uint32_t block_count) {
  Transform<kEncryptRest>(schedule, schedule.encryption, in, out, block_count);
}

void DesDecryptNeon(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                    uint32_t block_count) {
  Transform<kDecryptRest>(schedule, schedule.decryption, in, out, block_count);
}

}  // namespace mirolta

#endif
