// AES by table look-ups on 32-bit words, for any processor (FIPS-197, 5.1 and 5.3.5; the tables are
// those of the Rijndael proposal, 5.2.1).
#include "aes_kernels.h"
#include "aes_tables.h"

namespace mirolta {

namespace {

// The four columns of a block. ShiftRows shifts to the left by 0, 1, 2, 3 columns, InvShiftRows to
// the right. To have one round for both, a state keeps the columns in the order in which the rows
// of the new first column come from them: 0, 1, 2, 3 in encryption, 0, 3, 2, 1 in decryption.
// kSecond and kFourth are the column numbers of b and d.
struct State {
  uint32_t a, b, c, d;
};

inline uint32_t RoundColumn(const uint32_t (&tables)[4][256], uint32_t a, uint32_t b, uint32_t c,
                            uint32_t d, uint32_t key) {
  return tables[0][a & 0xFF] ^ tables[1][b >> 8 & 0xFF] ^ tables[2][c >> 16 & 0xFF] ^
         tables[3][d >> 24] ^ key;
}

// The last round has no MixColumns.
inline uint32_t LastColumn(const uint8_t (&box)[256], uint32_t a, uint32_t b, uint32_t c,
                           uint32_t d, uint32_t key) {
  return (box[a & 0xFF] | uint32_t{box[b >> 8 & 0xFF]} << 8 | uint32_t{box[c >> 16 & 0xFF]} << 16 |
          uint32_t{box[d >> 24]} << 24) ^
         key;
}

template <uint32_t kSecond, uint32_t kFourth>
inline State Round(const uint32_t (&tables)[4][256], const State& s, const uint32_t* key) {
  return {RoundColumn(tables, s.a, s.b, s.c, s.d, key[0]),
          RoundColumn(tables, s.b, s.c, s.d, s.a, key[kSecond]),
          RoundColumn(tables, s.c, s.d, s.a, s.b, key[2]),
          RoundColumn(tables, s.d, s.a, s.b, s.c, key[kFourth])};
}

template <uint32_t kSecond, uint32_t kFourth>
inline void TransformBlock(const uint32_t (&tables)[4][256], const uint8_t (&box)[256],
                           uint32_t rounds, const uint32_t* key, const uint8_t* in, uint8_t* out) {
  State s = {LoadLittleEndian32(in) ^ key[0], LoadLittleEndian32(in + 4 * kSecond) ^ key[kSecond],
             LoadLittleEndian32(in + 8) ^ key[2],
             LoadLittleEndian32(in + 4 * kFourth) ^ key[kFourth]};
  // 10, 12 or 14 rounds: one before the loop, pairs in it, and the last one after it.
  const uint32_t* const last = key + 4 * rounds;
  key += 4;
  s = Round<kSecond, kFourth>(tables, s, key);
  do {
    s = Round<kSecond, kFourth>(tables, s, key + 4);
    s = Round<kSecond, kFourth>(tables, s, key + 8);
    key += 8;
  } while (key + 4 != last);
  StoreLittleEndian32(out, LastColumn(box, s.a, s.b, s.c, s.d, last[0]));
  StoreLittleEndian32(out + 4 * kSecond, LastColumn(box, s.b, s.c, s.d, s.a, last[kSecond]));
  StoreLittleEndian32(out + 8, LastColumn(box, s.c, s.d, s.a, s.b, last[2]));
  StoreLittleEndian32(out + 4 * kFourth, LastColumn(box, s.d, s.a, s.b, s.c, last[kFourth]));
}

}  // namespace

void AesEncryptPortable(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                        uint32_t block_count) {
  const AesTables& tables = SharedAesTables();
  for (; block_count != 0; --block_count, in += kAesBlockSize, out += kAesBlockSize) {
    TransformBlock<1, 3>(tables.forward, tables.substitution, schedule.rounds, schedule.encryption,
                         in, out);
  }
}

void AesDecryptPortable(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                        uint32_t block_count) {
  const AesTables& tables = SharedAesTables();
  for (; block_count != 0; --block_count, in += kAesBlockSize, out += kAesBlockSize) {
    TransformBlock<3, 1>(tables.inverse, tables.inverse_substitution, schedule.rounds,
                         schedule.decryption, in, out);
  }
}

}  // namespace mirolta
