#include "des_engine.h"

#include "cipher_algorithms.h"
#include "des_kernels.h"

namespace mirolta {

DesEngine::DesEngine() noexcept
    : CipherEngine(kCipherDes,
                   {RunKernel<DesSchedule, kDesEncryptKernels>, &schedule_, kDesBlockSize},
                   {RunKernel<DesSchedule, kDesDecryptKernels>, &schedule_, kDesBlockSize}) {}

DesEngine::~DesEngine() {
  WipeMemory(&schedule_, sizeof schedule_);
}

bool DesEngine::BuildSchedule(const uint8_t* key, uint32_t length) {
  return ExpandDesKey(key, length, &schedule_);
}

void DesEngine::WipeSchedule() {
  WipeMemory(&schedule_, sizeof schedule_);
}

}  // namespace mirolta
