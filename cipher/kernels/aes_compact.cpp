// AES with the S-boxes as its only tables, for devices where 8 KB are much (FIPS-197, 5.1 and 5.3.5).
#include "aes_kernels.h"
#include "aes_mix.h"
#include "aes_tables.h"

namespace mirolta {

namespace {

// SubBytes and ShiftRows: one column of the state from the four that its rows come from.
inline uint32_t SubstitutedColumn(const uint8_t (&box)[256], uint32_t a, uint32_t b, uint32_t c,
                                  uint32_t d) {
  return box[a & 0xFF] | uint32_t{box[b >> 8 & 0xFF]} << 8 | uint32_t{box[c >> 16 & 0xFF]} << 16 |
         uint32_t{box[d >> 24]} << 24;
}

// kStep is where the second row comes from: ShiftRows takes it from the next column, InvShiftRows from the
// one before.
template <uint32_t kStep, typename Mix>
inline void TransformBlocks(const uint8_t (&box)[256], uint32_t rounds, const uint32_t* keys,
                            const uint8_t* in, uint8_t* out, uint32_t block_count, Mix mix) {
  for (; block_count != 0; --block_count, in += kAesBlockSize, out += kAesBlockSize) {
    const uint32_t* key = keys;
    uint32_t state[4];
    for (uint32_t i = 0; i < 4; ++i) state[i] = LoadLittleEndian32(in + 4 * i) ^ key[i];
    for (uint32_t round = 1; round <= rounds; ++round) {
      key += 4;
      uint32_t next[4];
      for (uint32_t i = 0; i < 4; ++i) {
        const uint32_t column = SubstitutedColumn(box, state[i], state[(i + kStep) & 3],
                                                  state[(i + 2) & 3], state[(i + 3 * kStep) & 3]);
        // The last round has no MixColumns.
        next[i] = (round == rounds ? column : mix(column)) ^ key[i];
      }
      for (uint32_t i = 0; i < 4; ++i) state[i] = next[i];
    }
    for (uint32_t i = 0; i < 4; ++i) StoreLittleEndian32(out + 4 * i, state[i]);
  }
}

}  // namespace

void AesEncryptCompact(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                       uint32_t block_count) {
  TransformBlocks<1>(SharedAesBoxes().substitution, schedule.rounds, schedule.encryption, in, out,
                     block_count, MixColumn);
}

void AesDecryptCompact(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                       uint32_t block_count) {
  TransformBlocks<3>(SharedAesBoxes().inverse_substitution, schedule.rounds, schedule.decryption,
                     in, out, block_count, UnmixColumn);
}

}  // namespace mirolta
