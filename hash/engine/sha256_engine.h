// The SHA-256 engine (FIPS 180-2, 5.3.2: initial values).
#pragma once

#include "block_hash_engine.h"

namespace mirolta {

struct Sha256Primitive {
  static constexpr int kAlgorithm = kHashSha256;
  static constexpr uint32_t kWordCount = 8;
  static constexpr uint32_t kInitial[kWordCount] = {0x6A09E667, 0xBB67AE85, 0x3C6EF372, 0xA54FF53A,
                                                    0x510E527F, 0x9B05688C, 0x1F83D9AB, 0x5BE0CD19};
  static CompressBlocks Kernel() noexcept { return CurrentKernel<kSha256Kernels>(); }
  static FinishDigest Finish() noexcept { return CurrentKernel<kSha256FinishKernels>(); }
  static FinishKeyedDigest FinishKeyed() noexcept {
    return CurrentKernel<kSha256FinishKeyedKernels>();
  }
};

class Sha256Engine final : public BlockHashEngine<Sha256Primitive> {};

}  // namespace mirolta
