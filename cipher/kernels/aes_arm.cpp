// AES by look-ups in one table, for 32-bit ARM, which rotates an operand for nothing (FIPS-197, 5.1 and
// 5.3.5; the table is that of the Rijndael proposal, 5.2.1).
#include <bit>

#include "aes_kernels.h"
#include "aes_tables.h"
#include "arm_lookup.h"

#if MIROLTA_KERNELS_FOR(ARM)

namespace mirolta {

namespace {

// The columns of a block, in the order in which ShiftRows takes them: 0, 1, 2, 3 in encryption and
// 0, 3, 2, 1 in decryption, as in aes_portable.cpp.
struct State {
  uint32_t a, b, c, d;
};

// The tables of one direction. In the last round, entry v of `box` is the byte at v << kBoxScale.
struct Lookup {
  const uint32_t* table;
  const uint8_t* box;
  uint32_t mask;      // of the offset of a word in the table
  uint32_t box_mask;  // of the offset in the box
};

inline uint32_t RoundColumn(const Lookup& lookup, uint32_t a, uint32_t b, uint32_t c, uint32_t d,
                            uint32_t key) {
  const uint32_t* const table = lookup.table;
  const uint32_t mask = lookup.mask;
  return key ^ WordAt(table, MaskedField<0, 2>(a, mask)) ^
         std::rotl(WordAt(table, MaskedField<1, 2>(b, mask)), 8) ^
         std::rotl(WordAt(table, MaskedField<2, 2>(c, mask)), 16) ^
         std::rotl(WordAt(table, MaskedField<3, 2>(d, mask)), 24);
}

// The last round has no MixColumns.
template <int kScale>
inline uint32_t LastColumn(const Lookup& lookup, uint32_t a, uint32_t b, uint32_t c, uint32_t d,
                           uint32_t key) {
  const uint8_t* const box = lookup.box;
  const uint32_t mask = lookup.box_mask;
  return key ^ uint32_t { box[MaskedField<0, kScale>(a, mask)] } ^
         uint32_t { box[MaskedField<1, kScale>(b, mask)] } << 8 ^
         uint32_t { box[MaskedField<2, kScale>(c, mask)] } << 16 ^
         uint32_t { box[MaskedField<3, kScale>(d, mask)] } << 24;
}

template <uint32_t kSecond, uint32_t kFourth>
inline State Round(const Lookup& lookup, const State& s, const uint32_t* key) {
  return {RoundColumn(lookup, s.a, s.b, s.c, s.d, key[0]),
          RoundColumn(lookup, s.b, s.c, s.d, s.a, key[kSecond]),
          RoundColumn(lookup, s.c, s.d, s.a, s.b, key[2]),
          RoundColumn(lookup, s.d, s.a, s.b, s.c, key[kFourth])};
}

template <uint32_t kSecond, uint32_t kFourth, int kBoxScale>
inline State AllRounds(const Lookup& lookup, State s, uint32_t rounds, const uint32_t* key) {
  s = {s.a ^ key[0], s.b ^ key[kSecond], s.c ^ key[2], s.d ^ key[kFourth]};
  // 10, 12 or 14 rounds: one before the loop, pairs in it, and the last one after it.
  const uint32_t* const last = key + 4 * rounds;
  key += 4;
  s = Round<kSecond, kFourth>(lookup, s, key);
  do {
    s = Round<kSecond, kFourth>(lookup, s, key + 4);
    s = Round<kSecond, kFourth>(lookup, s, key + 8);
    key += 8;
  } while (key + 4 != last);
  return {LastColumn<kBoxScale>(lookup, s.a, s.b, s.c, s.d, last[0]),
          LastColumn<kBoxScale>(lookup, s.b, s.c, s.d, s.a, last[kSecond]),
          LastColumn<kBoxScale>(lookup, s.c, s.d, s.a, s.b, last[2]),
          LastColumn<kBoxScale>(lookup, s.d, s.a, s.b, s.c, last[kFourth])};
}

template <uint32_t kSecond, uint32_t kFourth, int kBoxScale>
inline void TransformBlocks(const Lookup& lookup, uint32_t rounds, const uint32_t* key,
                            const uint8_t* in, uint8_t* out, uint32_t block_count) {
  const bool is_aligned = IsWordAligned(in) && IsWordAligned(out);
  for (; block_count != 0; --block_count, in += kAesBlockSize, out += kAesBlockSize) {
    State s;
    if (is_aligned) {
      s = {LoadAlignedLittleEndian32(in), LoadAlignedLittleEndian32(in + 4 * kSecond),
           LoadAlignedLittleEndian32(in + 8), LoadAlignedLittleEndian32(in + 4 * kFourth)};
    } else {
      s = {LoadLittleEndian32(in), LoadLittleEndian32(in + 4 * kSecond), LoadLittleEndian32(in + 8),
           LoadLittleEndian32(in + 4 * kFourth)};
    }
    s = AllRounds<kSecond, kFourth, kBoxScale>(lookup, s, rounds, key);
    if (is_aligned) {
      StoreAlignedLittleEndian32(out, s.a);
      StoreAlignedLittleEndian32(out + 4 * kSecond, s.b);
      StoreAlignedLittleEndian32(out + 8, s.c);
      StoreAlignedLittleEndian32(out + 4 * kFourth, s.d);
    } else {
      StoreLittleEndian32(out, s.a);
      StoreLittleEndian32(out + 4 * kSecond, s.b);
      StoreLittleEndian32(out + 8, s.c);
      StoreLittleEndian32(out + 4 * kFourth, s.d);
    }
  }
}

}  // namespace

void AesEncryptArm(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                   uint32_t block_count) {
  const uint32_t* const table = SharedAesTables().forward[0];
  const uint32_t mask = OpaqueMask(255 << 2);
  // The second byte of a word of the table is the S-box's.
  const uint8_t* const box = reinterpret_cast<const uint8_t*>(table) + 1;
  TransformBlocks<1, 3, 2>({table, box, mask, mask}, schedule.rounds, schedule.encryption, in, out,
                           block_count);
}

void AesDecryptArm(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                   uint32_t block_count) {
  const AesTables& tables = SharedAesTables();
  TransformBlocks<3, 1, 0>(
      {tables.inverse[0], tables.inverse_substitution, OpaqueMask(255 << 2), OpaqueMask(255)},
      schedule.rounds, schedule.decryption, in, out, block_count);
}

}  // namespace mirolta

#endif
