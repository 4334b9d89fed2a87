// The kernels of DES and triple DES: encryption and decryption of blocks.
#pragma once

#include <type_traits>

#include "des_schedule.h"
#include "platform.h"

namespace mirolta {

// DesTransform transforms block_count blocks, each independently (ECB).
// Shapes: in[8 * block_count], out[8 * block_count]; the schedule as ExpandDesKey fills it.
// Alias:  out is in, or does not overlap it.
// Time:   kernels without bit slices, and those with them for their last few blocks, look up tables
//         at addresses that depend on key and data.
// Source: FIPS 46-3.
using DesTransform = void (*)(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                              uint32_t block_count);

extern const KernelList<DesTransform> kDesEncryptKernels;
extern const KernelList<DesTransform> kDesDecryptKernels;

// The kernels of every architecture, for the lists and for tests; defined where their architecture
// is the build's.
using DesTransformKernel = std::remove_pointer_t<DesTransform>;

DesTransformKernel DesEncryptPortable;
DesTransformKernel DesDecryptPortable;

// 32-bit ARM
DesTransformKernel DesEncryptArm;
DesTransformKernel DesDecryptArm;

// NEON
DesTransformKernel DesEncryptNeon;
DesTransformKernel DesDecryptNeon;

// x86-64
DesTransformKernel DesEncryptWords64;
DesTransformKernel DesDecryptWords64;
DesTransformKernel DesEncryptGfni;
DesTransformKernel DesDecryptGfni;

// x86, in both modes
DesTransformKernel DesEncryptAvx2;
DesTransformKernel DesDecryptAvx2;
DesTransformKernel DesEncryptSse2;
DesTransformKernel DesDecryptSse2;
DesTransformKernel DesEncryptAvx512;
DesTransformKernel DesDecryptAvx512;

}  // namespace mirolta
