// The transforms of AES blocks, one list a direction.
#pragma once

#include "aes_schedule.h"
#include "platform.h"

namespace mirolta {

// AesTransform transforms each of block_count blocks by itself.
// Shapes: in[16 * block_count], out[16 * block_count]; the schedule as ExpandAesKey fills it.
// Alias:  out is in, or does not overlap it.
// Time:   the portable kernels look up tables at addresses that depend on key and data.
// Source: FIPS-197, 5.1 and 5.3.5.
using AesTransform = void (*)(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                              uint32_t block_count);

// AesExpansion fills the schedule from key[byte_length], which is 16, 24 or 32.
// Time:   the portable kernel looks up tables at addresses that depend on the key.
// Source: FIPS-197, 5.2 and 5.3.5.
using AesExpansion = void (*)(const uint8_t* key, uint32_t byte_length, AesSchedule* schedule);

struct AesExpansionList {
  const Kernel<AesExpansion>* kernels;  // best first, the portable one last
  uint32_t count;
};

struct AesKernelList {
  const Kernel<AesTransform>* kernels;  // best first, the portable one last
  uint32_t count;
};

// The kernels of the key schedule, and those of a direction, that this build has, for tests and
// measurements.
AesExpansionList AesExpansionKernels() noexcept;
AesKernelList AesEncryptKernels() noexcept;
AesKernelList AesDecryptKernels() noexcept;

// The best transform of a direction on this processor.
AesTransform ChosenAesEncrypt() noexcept;
AesTransform ChosenAesDecrypt() noexcept;

void AesExpandPortable(const uint8_t* key, uint32_t byte_length, AesSchedule* schedule);
void AesEncryptPortable(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                        uint32_t block_count);
void AesDecryptPortable(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                        uint32_t block_count);

#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)
void AesExpandAesNi(const uint8_t* key, uint32_t byte_length, AesSchedule* schedule);
void AesEncryptAesNi(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                     uint32_t block_count);
void AesDecryptAesNi(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                     uint32_t block_count);
void AesEncryptVaes256(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                       uint32_t block_count);
void AesDecryptVaes256(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                       uint32_t block_count);
void AesEncryptVaes512(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                       uint32_t block_count);
void AesDecryptVaes512(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                       uint32_t block_count);
#endif

}  // namespace mirolta
