// AES bit-sliced over eight blocks, with NEON.
#include <cstring>
#include <utility>

#include "aes_kernels.h"
#include "seam/neon.h"

#if MIROLTA_KERNELS_FOR(NEON)

namespace mirolta {

namespace {

  #define MIROLTA_AES_STEP MIROLTA_NEON __attribute__((always_inline)) inline

using Vector = uint8x16_t;

// The break-even block count, by instructions, of a group against the kernel that takes what groups leave. A
// group costs the same however few of its blocks are there.
  #if MIROLTA_KERNELS_FOR(AARCH64)
constexpr uint32_t kLeastBlocks = 4;
  #else
constexpr uint32_t kLeastBlocks = 6;
  #endif

  #if !MIROLTA_AES_TABLES
constexpr AesTransform kEncryptRest = AesEncryptCompact;
constexpr AesTransform kDecryptRest = AesDecryptCompact;
  #elif MIROLTA_KERNELS_FOR(AARCH64)
constexpr AesTransform kEncryptRest = AesEncryptPortable;
constexpr AesTransform kDecryptRest = AesDecryptPortable;
  #else
constexpr AesTransform kEncryptRest = AesEncryptArm;
constexpr AesTransform kDecryptRest = AesDecryptArm;
  #endif

MIROLTA_AES_STEP Vector And(Vector a, Vector b) {
  return vandq_u8(a, b);
}

MIROLTA_AES_STEP Vector Xor(Vector a, Vector b) {
  return veorq_u8(a, b);
}

MIROLTA_AES_STEP Vector Load(const uint8_t* in) {
  return vld1q_u8(in);
}

MIROLTA_AES_STEP void Store(Vector v, uint8_t* out) {
  vst1q_u8(out, v);
}

MIROLTA_AES_STEP Vector LoadKey(const uint32_t* words) {
  return vreinterpretq_u8_u32(vld1q_u32(words));
}

MIROLTA_AES_STEP Vector Constant(uint8_t byte) {
  return vdupq_n_u8(byte);
}

template <int kShift>
MIROLTA_AES_STEP void Exchange(Vector& a, Vector& b) {
  const Vector upper = a;
  const Vector lower = b;
  if constexpr (kShift == 4) {
    a = vsliq_n_u8(upper, lower, 4);
    b = vsriq_n_u8(lower, upper, 4);
  } else {
    const Vector mask = vdupq_n_u8(0xFF / ((1 << kShift) + 1));
    a = vbslq_u8(mask, upper, vshlq_n_u8(lower, kShift));
    b = vbslq_u8(mask, vshrq_n_u8(upper, kShift), lower);
  }
}

MIROLTA_AES_STEP Vector Permute(Vector v, Vector places) {
  #if defined(__aarch64__)
  return vqtbl1q_u8(v, places);
  #else
  // With intrinsics the compiler copies the halves before and after.
  Vector result;
  __asm__("vtbl.8 %e0, {%e1, %f1}, %e2\n\tvtbl.8 %f0, {%e1, %f1}, %f2"
          : "=&w"(result)
          : "w"(v), "w"(places));
  return result;
  #endif
}

template <int kRows>
MIROLTA_AES_STEP Vector TurnRows(Vector v) {
  return vextq_u8(v, v, 4 * kRows);
}

template <int kBit>
MIROLTA_AES_STEP Vector BitMask(Vector v) {
  return vtstq_u8(v, vdupq_n_u8(1 << kBit));
}

  #include "aes_slices.inc"

// Not inlined: the kernels are not compiled for NEON, and for few blocks they need no frame of vectors.
template <bool kEncrypt>
MIROLTA_NEON __attribute__((noinline)) uint32_t Transform(const uint32_t* words, uint32_t rounds,
                                                          const uint8_t* in, uint8_t* out,
                                                          uint32_t block_count) {
  return TransformGroups<kEncrypt>(words, rounds, in, out, block_count, kLeastBlocks);
}

}  // namespace

void AesEncryptNeon(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                    uint32_t block_count) {
  if (block_count < kLeastBlocks) return kEncryptRest(schedule, in, out, block_count);
  const uint32_t done = Transform<true>(schedule.encryption, schedule.rounds, in, out, block_count);
  kEncryptRest(schedule, in + kAesBlockSize * done, out + kAesBlockSize * done, block_count - done);
}

void AesDecryptNeon(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                    uint32_t block_count) {
  if (block_count < kLeastBlocks) return kDecryptRest(schedule, in, out, block_count);
  const uint32_t done =
      Transform<false>(schedule.decryption, schedule.rounds, in, out, block_count);
  kDecryptRest(schedule, in + kAesBlockSize * done, out + kAesBlockSize * done, block_count - done);
}

}  // namespace mirolta

#endif
