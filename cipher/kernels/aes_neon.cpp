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

constexpr uint32_t kGroup = 8;

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

// ShiftRows puts the bytes in the order of rows, and back.
struct Places {
  uint8_t of[kAesBlockSize];
};
constexpr uint8_t PlaceByColumns(uint32_t row, uint32_t column) {
  return static_cast<uint8_t>(4 * column + row);
}
constexpr uint8_t PlaceByRows(uint32_t row, uint32_t column) {
  return static_cast<uint8_t>(4 * row + column);
}
using PlaceOf = uint8_t (*)(uint32_t row, uint32_t column);

// kStep is the number of columns by which each row turns further than the one above it.
template <PlaceOf kFrom, PlaceOf kTo, uint32_t kStep>
constexpr Places MakePlaces() {
  Places places = {};
  for (uint32_t row = 0; row < 4; ++row) {
    for (uint32_t column = 0; column < 4; ++column) {
      places.of[kTo(row, column)] = kFrom(row, (column + kStep * row) % 4);
    }
  }
  return places;
}

// ShiftRows of the first round, of those between, and of the last one. InvShiftRows turns the other way.
template <bool kEncrypt>
constexpr uint32_t kTurn = kEncrypt ? 1 : 3;
template <bool kEncrypt>
constexpr Places kFirstPlaces = MakePlaces<PlaceByColumns, PlaceByRows, kTurn<kEncrypt>>();
template <bool kEncrypt>
constexpr Places kMiddlePlaces = MakePlaces<PlaceByRows, PlaceByRows, kTurn<kEncrypt>>();
template <bool kEncrypt>
constexpr Places kLastPlaces = MakePlaces<PlaceByRows, PlaceByColumns, kTurn<kEncrypt>>();
constexpr Places kKeyPlaces = MakePlaces<PlaceByColumns, PlaceByRows, 0>();

MIROLTA_AES_STEP void ShiftRows(Vector (&x)[kGroup], const Places& places) {
  const Vector from = Load(places.of);
  #pragma GCC unroll 8
  for (uint32_t i = 0; i < kGroup; ++i) x[i] = Permute(x[i], from);
}

template <bool kEncrypt>
struct Rows {
  static MIROLTA_AES_STEP Vector Enter(Vector v) { return v; }
  static MIROLTA_AES_STEP Vector Order(Vector v) { return Permute(v, Load(kKeyPlaces.of)); }
  static MIROLTA_AES_STEP Vector OrderLast(Vector v) { return v; }
  static MIROLTA_AES_STEP Vector Leave(Vector v) { return v; }
  MIROLTA_AES_STEP void Shift(Vector (&x)[kGroup]) {
    ShiftRows(x, *places);
    places = &kMiddlePlaces<kEncrypt>;
  }
  static MIROLTA_AES_STEP void ShiftLast(Vector (&x)[kGroup]) {
    ShiftRows(x, kLastPlaces<kEncrypt>);
  }

  const Places* places = &kFirstPlaces<kEncrypt>;
};

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
