// The AES engine: blocks of 16 bytes, keys of 16, 24 or 32 bytes (FIPS-197).
#pragma once

#include "aes_kernels.h"
#include "block_cipher_engine.h"

namespace mirolta {

struct AesPrimitive {
  using Schedule = AesSchedule;
  static constexpr LONG kAlgorithm = kCipherAes;
  static constexpr uint32_t kBlockSize = kAesBlockSize;
  static constexpr const auto& kEncryptKernels = kAesEncryptKernels;
  static constexpr const auto& kDecryptKernels = kAesDecryptKernels;
  static constexpr auto kExpand = ExpandAesKey;
};

class AesEngine final : public CipherEngineOf<AesPrimitive> {};

}  // namespace mirolta
