// DES by table look-ups on 32-bit words, for any processor (FIPS 46-3).
#include "des_kernels.h"
#include "des_permutations.h"
#include "des_tables.h"

namespace mirolta {

namespace {

inline uint32_t RoundFunction(uint32_t half, const uint32_t* key, uint32_t mask) {
  const auto& boxes = kDesTables.substitution;
  const uint32_t odd = (std::rotr(half, 4) ^ key[0]) & mask;
  const uint32_t even = (half ^ key[1]) & mask;
  const uint32_t odd_high = odd >> 16;
  const uint32_t even_high = even >> 16;
  return boxes[3][odd & 255] ^ boxes[2][odd >> 8 & 255] ^ boxes[1][odd_high & 255] ^
         boxes[0][odd_high >> 8] ^ boxes[7][even & 255] ^ boxes[6][even >> 8 & 255] ^
         boxes[5][even_high & 255] ^ boxes[4][even_high >> 8];
}

inline Halves SixteenRounds(Halves halves, const uint32_t* keys, uint32_t mask) {
  for (uint32_t round = 0; round < 16; round += 2, keys += 4) {
    halves.left ^= RoundFunction(halves.right, keys, mask);
    halves.right ^= RoundFunction(halves.left, keys + 2, mask);
  }
  return halves;
}

void TransformBlocks(const uint32_t* keys, uint32_t rounds, const uint8_t* in, uint8_t* out,
                     uint32_t block_count) {
  const uint32_t mask = kDesTables.index_mask;
  for (; block_count != 0; --block_count, in += kDesBlockSize, out += kDesBlockSize) {
    Halves halves = SixteenRounds(PermuteInitially(in), keys, mask);
    // Between two DES operations the final and the initial permutation cancel out; the exchange of
    // the halves remains.
    for (uint32_t done = 16; done != rounds; done += 16) {
      halves = SixteenRounds({halves.right, halves.left}, keys + 2 * done, mask);
    }
    PermuteFinally(halves, out);
  }
}

}  // namespace

void DesEncryptPortable(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                        uint32_t block_count) {
  TransformBlocks(schedule.encryption, schedule.rounds, in, out, block_count);
}

void DesDecryptPortable(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                        uint32_t block_count) {
  TransformBlocks(schedule.decryption, schedule.rounds, in, out, block_count);
}

}  // namespace mirolta
