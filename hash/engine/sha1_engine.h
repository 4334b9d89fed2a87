// The SHA-1 engine (FIPS 180-2, 5.3.1: initial values).
#pragma once

#include "block_hash_engine.h"

namespace mirolta {

struct Sha1Primitive {
  static constexpr int kAlgorithm = kHashSha1;
  static constexpr uint32_t kWordCount = 5;
  static constexpr uint32_t kInitial[kWordCount] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476,
                                                    0xC3D2E1F0};
  static CompressBlocks Kernel() noexcept { return CurrentKernel<kSha1Kernels>(); }
  static FinishDigest Finish() noexcept { return CurrentKernel<kSha1FinishKernels>(); }
  static FinishKeyedDigest FinishKeyed() noexcept { return nullptr; }
};

class Sha1Engine final : public BlockHashEngine<Sha1Primitive> {};

}  // namespace mirolta
