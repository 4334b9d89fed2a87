// The AES key expansion by table look-ups, for any processor (FIPS-197, 5.2 and 5.3.5).
#include "aes_kernels.h"
#include "aes_mix.h"
#include "aes_tables.h"

namespace mirolta {

namespace {

uint32_t SubstituteWord(const AesBoxes& tables, uint32_t word) {
  return uint32_t{tables.substitution[word >> 24]} << 24 |
         uint32_t{tables.substitution[word >> 16 & 0xFF]} << 16 |
         uint32_t{tables.substitution[word >> 8 & 0xFF]} << 8 | tables.substitution[word & 0xFF];
}

// InvMixColumns of a column, by the tables: they include the inverse S-box, which the S-box cancels.
uint32_t UnmixedColumn(const AesTables& tables, uint32_t word) {
  return tables.inverse[0][tables.substitution[word & 0xFF]] ^
         tables.inverse[1][tables.substitution[word >> 8 & 0xFF]] ^
         tables.inverse[2][tables.substitution[word >> 16 & 0xFF]] ^
         tables.inverse[3][tables.substitution[word >> 24]];
}
uint32_t UnmixedColumn(const AesBoxes&, uint32_t word) {
  return UnmixColumn(word);
}

template <typename Tables>
inline void Expand(const Tables& tables, const uint8_t* key, uint32_t byte_length,
                   AesSchedule* schedule) {
  const uint32_t key_words = byte_length / 4;
  const uint32_t rounds = key_words + 6;
  schedule->rounds = rounds;

  uint32_t* const words = schedule->encryption;
  for (uint32_t i = 0; i < key_words; ++i) words[i] = LoadLittleEndian32(key + 4 * i);
  // phase is i modulo key_words; the constants used are 4 * (rounds + 1) / key_words <= 10.
  uint32_t phase = 0;
  const uint32_t* constant = tables.round_constants;
  for (uint32_t i = key_words; i < 4 * (rounds + 1); ++i) {
    uint32_t word = words[i - 1];
    if (phase == 0) {
      word = SubstituteWord(tables, word >> 8 | word << 24) ^ *constant++;
    } else if (key_words == 8 && phase == 4) {
      word = SubstituteWord(tables, word);
    }
    words[i] = words[i - key_words] ^ word;
    if (++phase == key_words) phase = 0;
  }

  for (uint32_t round = 0; round <= rounds; ++round) {
    const bool outer = round == 0 || round == rounds;
    for (uint32_t column = 0; column < 4; ++column) {
      const uint32_t word = words[4 * (rounds - round) + column];
      schedule->decryption[4 * round + column] = outer ? word : UnmixedColumn(tables, word);
    }
  }
}

}  // namespace

void AesExpandPortable(const uint8_t* key, uint32_t byte_length, AesSchedule* schedule) {
  Expand(SharedAesTables(), key, byte_length, schedule);
}

void AesExpandCompact(const uint8_t* key, uint32_t byte_length, AesSchedule* schedule) {
  Expand(SharedAesBoxes(), key, byte_length, schedule);
}

}  // namespace mirolta
