// The kernels of the digests: compression functions, and functions that finish a digest.
#pragma once

#include <type_traits>

#include "platform.h"

namespace mirolta {

constexpr uint32_t kHashBlockSize = 64;
// Where the bit length is in the last block.
constexpr uint32_t kHashLengthOffset = kHashBlockSize - 8;

// CompressBlocks absorbs block_count blocks, read without copying, into the chaining value.
// Shapes: state[4] for MD5, [5] for SHA-1, [8] for SHA-256; blocks[64 * block_count] at any
//         alignment.
// Alias:  blocks and state do not overlap.
// Time:   depends on block_count only.
// Source: RFC 1321, 3.4; FIPS 180-2, 6.1.2 and 6.2.2.
using CompressBlocks = void (*)(uint32_t* state, const uint8_t* blocks, size_t block_count);

// FinishDigest pads the last partial block of a message, absorbs it and writes the digest.
// Shapes: state as above, afterwards the chaining value after the padding; block[64], whose first
//         waiting < 64 bytes are the message's and whose others may be overwritten; bit_count, the
//         bits of the whole message modulo 2^64; digest[4 * words of state].
// Alias:  none of them overlap.
// Time:   depends on waiting only.
// Source: RFC 1321, 3.1 and 3.2; FIPS 180-2, 5.1.1.
using FinishDigest = void (*)(uint32_t* state, uint8_t* block, uint32_t waiting, uint64_t bit_count,
                              uint8_t* digest);

// FinishKeyedDigest ends both computations of an HMAC: it is FinishDigest for the inner message and
// then for the outer one, which is the outer pad and the inner digest.
// Shapes: as FinishDigest, but waiting < 56; outer[words of state], the chaining value after the
//         outer pad. state afterwards is that of the outer computation.
// Alias:  none of them overlap.
// Time:   does not depend on the data.
// Source: RFC 2104, 2.
using FinishKeyedDigest = void (*)(uint32_t* state, const uint32_t* outer, uint8_t* block,
                                   uint32_t waiting, uint64_t bit_count, uint8_t* digest);

extern const KernelList<CompressBlocks> kMd5Kernels;
extern const KernelList<CompressBlocks> kSha1Kernels;
extern const KernelList<CompressBlocks> kSha256Kernels;

extern const KernelList<FinishDigest> kMd5FinishKernels;
extern const KernelList<FinishDigest> kSha1FinishKernels;
extern const KernelList<FinishDigest> kSha256FinishKernels;

// The last row is null: the two computations end one after the other.
extern const KernelList<FinishKeyedDigest> kSha256FinishKeyedKernels;

// The kernels of every architecture, for the lists and for tests; defined where their architecture
// is the build's.
using CompressKernel = std::remove_pointer_t<CompressBlocks>;
using FinishKernel = std::remove_pointer_t<FinishDigest>;
using FinishKeyedKernel = std::remove_pointer_t<FinishKeyedDigest>;

CompressKernel Md5Portable;
CompressKernel Sha1Portable;
CompressKernel Sha256Portable;

// x86, in both modes
CompressKernel Sha1ShaNi;
CompressKernel Sha256ShaNi;
FinishKernel Sha1ShaNiFinish;
FinishKernel Sha256ShaNiFinish;
FinishKeyedKernel Sha256ShaNiFinishKeyed;

// AArch64
CompressKernel Sha1Armv8;
CompressKernel Sha256Armv8;
FinishKernel Sha1Armv8Finish;
FinishKernel Sha256Armv8Finish;

// ARMv7
CompressKernel Sha1Neon;
CompressKernel Sha256Neon;

}  // namespace mirolta
