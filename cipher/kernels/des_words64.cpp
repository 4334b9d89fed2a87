// DES with 64-bit words, on any x86-64 processor (FIPS 46-3).
#include <cstring>

#include "des_kernels.h"
#include "des_permutations.h"
#include "des_tables.h"

#if MIROLTA_KERNELS_FOR(X86_64)

namespace mirolta {

namespace {

  #define MIROLTA_DES_WORDS64 inline

MIROLTA_DES_WORDS64 Halves PermuteBlock(const uint8_t* block) {
  return PermuteInitially(block);
}

MIROLTA_DES_WORDS64 void UnpermuteBlock(Halves halves, uint8_t* block) {
  PermuteFinally(halves, block);
}

template <int kByte>
MIROLTA_DES_WORDS64 uint64_t InnerByte(uint64_t word) {
  return word >> 8 * kByte & 255;
}

  #include "des_words64.inc"

}  // namespace

void DesEncryptWords64(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                       uint32_t block_count) {
  TransformBlocks(schedule.encryption, schedule.rounds, in, out, block_count);
}

void DesDecryptWords64(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                       uint32_t block_count) {
  TransformBlocks(schedule.decryption, schedule.rounds, in, out, block_count);
}

}  // namespace mirolta

#endif
