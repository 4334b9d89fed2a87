// The transforms of DES and triple-DES blocks, one list a direction.
#pragma once

#include "des_schedule.h"
#include "platform.h"

namespace mirolta {

// DesTransform transforms each of block_count blocks by itself.
// Shapes: in[8 * block_count], out[8 * block_count]; the schedule as ExpandDesKey fills it.
// Alias:  out is in, or does not overlap it.
// Time:   the portable kernels look up tables at addresses that depend on key and data.
// Source: FIPS 46-3.
using DesTransform = void (*)(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                              uint32_t block_count);

struct DesKernelList {
  const Kernel<DesTransform>* kernels;  // best first, the portable one last
  uint32_t count;
};

// The kernels of a direction that this build has, for tests and measurements.
DesKernelList DesEncryptKernels() noexcept;
DesKernelList DesDecryptKernels() noexcept;

// The best transform of a direction on this processor.
DesTransform ChosenDesEncrypt() noexcept;
DesTransform ChosenDesDecrypt() noexcept;

void DesEncryptPortable(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                        uint32_t block_count);
void DesDecryptPortable(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                        uint32_t block_count);

#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)
void DesEncryptWords64(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                       uint32_t block_count);
void DesDecryptWords64(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                       uint32_t block_count);
void DesEncryptGfni(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                    uint32_t block_count);
void DesDecryptGfni(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                    uint32_t block_count);
// These read tables only where few blocks are left.
void DesEncryptAvx2(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                    uint32_t block_count);
void DesDecryptAvx2(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                    uint32_t block_count);
void DesEncryptAvx512(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                      uint32_t block_count);
void DesDecryptAvx512(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                      uint32_t block_count);
#endif

}  // namespace mirolta
