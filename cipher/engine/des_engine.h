// The DES engine: blocks of 8 bytes, keys of 8 (single DES), 16 or 24 bytes (triple DES; FIPS
// 46-3).
#pragma once

#include "block_cipher_engine.h"
#include "des_kernels.h"

namespace mirolta {

struct DesPrimitive {
  using Schedule = DesSchedule;
  static constexpr LONG kAlgorithm = kCipherDes;
  static constexpr uint32_t kBlockSize = kDesBlockSize;
  static constexpr const auto& kEncryptKernels = kDesEncryptKernels;
  static constexpr const auto& kDecryptKernels = kDesDecryptKernels;
  static constexpr auto kExpand = ExpandDesKey;
};

class DesEngine final : public CipherEngineOf<DesPrimitive> {};

}  // namespace mirolta
