// The kernels of AES: key expansion, encryption and decryption of blocks.
#pragma once

#include <type_traits>

#include "aes_schedule.h"
#include "platform.h"

namespace mirolta {

// AesTransform transforms block_count blocks, each independently (ECB).
// Shapes: in[16 * block_count], out[16 * block_count]; the schedule as ExpandAesKey fills it.
// Alias:  out is in, or does not overlap it.
// Time:   kernels without AES instructions or bit slices, and those with NEON for their last few blocks,
//         look up tables at addresses that depend on key and data.
// Source: FIPS-197, 5.1 and 5.3.5.
using AesTransform = void (*)(const AesSchedule& schedule, const uint8_t* in, uint8_t* out,
                              uint32_t block_count);

// AesExpansion fills the schedule from key[byte_length], which is 16, 24 or 32.
// Time:   the portable kernels look up tables at addresses that depend on the key.
// Source: FIPS-197, 5.2 and 5.3.5.
using AesExpansion = void (*)(const uint8_t* key, uint32_t byte_length, AesSchedule* schedule);

extern const KernelList<AesExpansion> kAesExpansionKernels;
extern const KernelList<AesTransform> kAesEncryptKernels;
extern const KernelList<AesTransform> kAesDecryptKernels;

// The kernels of every architecture, for the lists and for tests; defined where their architecture
// is the build's.
using AesExpansionKernel = std::remove_pointer_t<AesExpansion>;
using AesTransformKernel = std::remove_pointer_t<AesTransform>;

AesExpansionKernel AesExpandPortable;
AesTransformKernel AesEncryptPortable;
AesTransformKernel AesDecryptPortable;

// For builds without MIROLTA_AES_TABLES, which have them in place of the portable ones.
AesExpansionKernel AesExpandCompact;
AesTransformKernel AesEncryptCompact;
AesTransformKernel AesDecryptCompact;

// 32-bit ARM
AesTransformKernel AesEncryptArm;
AesTransformKernel AesDecryptArm;

// NEON
AesTransformKernel AesEncryptNeon;
AesTransformKernel AesDecryptNeon;

// x86, in both modes
AesExpansionKernel AesExpandAesNi;
AesTransformKernel AesEncryptAesNi;
AesTransformKernel AesDecryptAesNi;
AesExpansionKernel AesExpandSse2;
AesTransformKernel AesEncryptSse2;
AesTransformKernel AesDecryptSse2;
AesTransformKernel AesEncryptVaes256;
AesTransformKernel AesDecryptVaes256;
AesTransformKernel AesEncryptVaes512;
AesTransformKernel AesDecryptVaes512;

// AArch64
AesExpansionKernel AesExpandArmv8;
AesTransformKernel AesEncryptArmv8;
AesTransformKernel AesDecryptArmv8;

}  // namespace mirolta
