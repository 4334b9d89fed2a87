#include "aes_engine.h"

#include "aes_kernels.h"
#include "cipher_algorithms.h"

namespace mirolta {

AesEngine::AesEngine() noexcept
    : CipherEngine(kCipherAes,
                   {RunKernel<AesSchedule, kAesEncryptKernels>, &schedule_, kAesBlockSize},
                   {RunKernel<AesSchedule, kAesDecryptKernels>, &schedule_, kAesBlockSize}) {}

AesEngine::~AesEngine() {
  WipeMemory(&schedule_, sizeof schedule_);
}

bool AesEngine::BuildSchedule(const uint8_t* key, uint32_t length) {
  return ExpandAesKey(key, length, &schedule_);
}

void AesEngine::WipeSchedule() {
  WipeMemory(&schedule_, sizeof schedule_);
}

}  // namespace mirolta
