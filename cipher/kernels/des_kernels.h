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

}  // namespace mirolta
