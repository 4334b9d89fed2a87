// DES by table look-ups, for 32-bit ARM, whose operands are shifted for nothing (FIPS 46-3).
#include "arm_lookup.h"
#include "des_kernels.h"
#include "des_permutations.h"
#include "des_tables.h"

#if MIROLTA_KERNELS_FOR(ARM)

namespace mirolta {

namespace {

// The inputs of four S-boxes leave two bits of every byte free. They hold the number of the box, so
// that one address serves four tables: S-boxes 1, 3, 5, 7 or 2, 4, 6, 8, the highest byte first.
constexpr uint32_t kInputs = 0x3F3F3F3F;
constexpr uint32_t kBoxNumbers = 0x004080C0;

struct Masks {
  uint32_t inputs;  // kInputs
  uint32_t numbers;
  uint32_t offset;  // of a word in four tables
};

inline uint32_t FourBoxes(const uint32_t* table, uint32_t in, uint32_t half, uint32_t mask) {
  half ^= WordAt(table, MaskedField<0, 2>(in, mask));
  half ^= WordAt(table, MaskedField<1, 2>(in, mask));
  half ^= WordAt(table, MaskedField<2, 2>(in, mask));
  return half ^ WordAt(table, MaskedField<3, 2>(in, mask));
}

// Returns changed ^ f(half, key).
inline uint32_t Round(uint32_t changed, uint32_t half, const uint32_t* key, const Masks& masks) {
  const auto& boxes = kDesTables.substitution;
  const uint32_t odd = ((key[0] ^ std::rotr(half, 4)) & masks.inputs) | masks.numbers;
  const uint32_t even = ((key[1] ^ half) & masks.inputs) | masks.numbers;
  changed = FourBoxes(boxes[0], odd, changed, masks.offset);
  return FourBoxes(boxes[4], even, changed, masks.offset);
}

inline Halves SixteenRounds(Halves halves, const uint32_t* keys, const Masks& masks) {
  const uint32_t* const end = keys + 32;
  do {
    halves.left = Round(halves.left, halves.right, keys, masks);
    halves.right = Round(halves.right, halves.left, keys + 2, masks);
    keys += 4;
  } while (keys != end);
  return halves;
}

void TransformBlocks(const uint32_t* keys, uint32_t rounds, const uint8_t* in, uint8_t* out,
                     uint32_t block_count) {
  const Masks masks = {OpaqueMask(kInputs), OpaqueMask(kBoxNumbers), OpaqueMask(255 << 2)};
  const bool is_aligned = IsWordAligned(in) && IsWordAligned(out);
  for (; block_count != 0; --block_count, in += kDesBlockSize, out += kDesBlockSize) {
    Halves halves =
        is_aligned ? PermuteInitially(LoadAlignedBigEndian32(in), LoadAlignedBigEndian32(in + 4))
                   : PermuteInitially(in);
    halves = SixteenRounds(halves, keys, masks);
    // Between two DES operations the final and the initial permutation cancel out; the exchange of
    // the halves remains.
    for (uint32_t done = 16; done != rounds; done += 16) {
      halves = SixteenRounds({halves.right, halves.left}, keys + 2 * done, masks);
    }
    if (is_aligned) {
      const Halves words = PermuteFinally(halves);
      StoreAlignedBigEndian32(out, words.left);
      StoreAlignedBigEndian32(out + 4, words.right);
    } else {
      PermuteFinally(halves, out);
    }
  }
}

}  // namespace

void DesEncryptArm(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                   uint32_t block_count) {
  TransformBlocks(schedule.encryption, schedule.rounds, in, out, block_count);
}

void DesDecryptArm(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                   uint32_t block_count) {
  TransformBlocks(schedule.decryption, schedule.rounds, in, out, block_count);
}

}  // namespace mirolta

#endif
