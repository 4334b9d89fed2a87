// The kernels of the digests: compression functions, and functions that finish a digest.
#pragma once

#include <type_traits>

#include "platform.h"

namespace mirolta {

constexpr uint32_t kHashBlockSize = 64;

// CompressBlocks absorbs block_count blocks, read without copying, into the chaining value.
// Shapes: state[4] for MD5, [5] for SHA-1, [8] for SHA-256; blocks[64 * block_count], any alignment.
// Alias:  blocks and state do not overlap.
// Time:   depends on block_count only.
// Source: RFC 1321, 3.4; FIPS 180-2, 6.1.2 and 6.2.2.
using CompressBlocks = void (*)(uint32_t* state, const uint8_t* blocks, size_t block_count);

// FinishDigest pads the last waiting bytes of a message, absorbs them and writes the digest. It
// keeps the padded block in registers: one gathered in memory from pieces would make wide loads
// wait until all of the computation before it is done.
// Shapes: state as above; block[64], of which waiting < 56 bytes count; digest[4 * words].
// Source: FIPS 180-2, 5.1.1.
using FinishDigest = void (*)(uint32_t* state, const uint8_t* block, uint32_t waiting,
                              uint64_t bit_count, uint8_t* digest);

// FinishKeyedDigest is FinishDigest for the inner message of an HMAC and then, of the digest that
// this gives, for the outer one: it goes on from the outer chain with the inner words as they stand
// in registers.
// Shapes: as FinishDigest; outer[words], the chain behind the outer pad. state, at last, holds the
// outer computation's.
// Source: RFC 2104.
using FinishKeyedDigest = void (*)(uint32_t* state, const uint32_t* outer, const uint8_t* block,
                                   uint32_t waiting, uint64_t bit_count, uint8_t* digest);

extern const KernelList<CompressBlocks> kMd5Kernels;
extern const KernelList<CompressBlocks> kSha1Kernels;
extern const KernelList<CompressBlocks> kSha256Kernels;

// Their last row is null: the processor has nothing better than padding in memory.
extern const KernelList<FinishDigest> kSha1Finishes;
extern const KernelList<FinishDigest> kSha256Finishes;
extern const KernelList<FinishKeyedDigest> kSha256KeyedFinishes;

// The kernels of every architecture, for the lists and for tests; defined where their architecture
// is the build's.
using CompressKernel = std::remove_pointer_t<CompressBlocks>;
using FinishKernel = std::remove_pointer_t<FinishDigest>;
using FinishKeyedKernel = std::remove_pointer_t<FinishKeyedDigest>;

CompressKernel Md5Portable;
CompressKernel Sha1Portable;
CompressKernel Sha256Portable;

// x86-64
CompressKernel Sha1ShaNi;
CompressKernel Sha256ShaNi;
FinishKernel Sha1ShaNiFinish;
FinishKernel Sha256ShaNiFinish;
FinishKeyedKernel Sha256ShaNiFinishKeyed;

}  // namespace mirolta
