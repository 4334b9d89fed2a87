// The MD5 engine (RFC 1321, 3.3: initial values).
#pragma once

#include "block_hash_engine.h"

namespace mirolta {

struct Md5Primitive {
  static constexpr int kAlgorithm = kHashMd5;
  static constexpr uint32_t kWordCount = 4;
  static constexpr uint32_t kInitial[kWordCount] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
  static CompressBlocks Kernel() noexcept { return CurrentKernel<kMd5Kernels>(); }
  static FinishDigest Finish() noexcept { return CurrentKernel<kMd5FinishKernels>(); }
  static FinishKeyedDigest FinishKeyed() noexcept { return nullptr; }
};

class Md5Engine final : public BlockHashEngine<Md5Primitive> {};

}  // namespace mirolta
