// The compression functions of the digests, one list a primitive.
#pragma once

#include "platform.h"

namespace mirolta {

constexpr uint32_t kHashBlockSize = 64;

// CompressBlocks absorbs block_count blocks, straight from the caller's memory, into the chaining
// words.
// Shapes: state[4] for MD5, [5] for SHA-1, [8] for SHA-256; blocks[64 * block_count], any
// alignment. Alias:  blocks and state do not overlap. Time:   depends on block_count only. Source:
// RFC 1321, 3.4; FIPS 180-2, 6.1.2 and 6.2.2.
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
// outer computation's. Source: RFC 2104.
using FinishKeyedDigest = void (*)(uint32_t* state, const uint32_t* outer, const uint8_t* block,
                                   uint32_t waiting, uint64_t bit_count, uint8_t* digest);

struct HashKernelList {
  const Kernel<CompressBlocks>* kernels;  // best first, the portable one last
  size_t count;
};

// The kernels of a primitive that this build has, for tests and measurements.
HashKernelList Md5Kernels() noexcept;
HashKernelList Sha1Kernels() noexcept;
HashKernelList Sha256Kernels() noexcept;

// The best kernel of a primitive on this processor.
CompressBlocks ChosenMd5() noexcept;
CompressBlocks ChosenSha1() noexcept;
CompressBlocks ChosenSha256() noexcept;

// The same for the last block; null where the processor has nothing better than padding in memory.
FinishDigest ChosenSha1Finish() noexcept;
FinishDigest ChosenSha256Finish() noexcept;
FinishKeyedDigest ChosenSha256FinishKeyed() noexcept;

void Md5Portable(uint32_t* state, const uint8_t* blocks, size_t block_count);
void Sha1Portable(uint32_t* state, const uint8_t* blocks, size_t block_count);
void Sha256Portable(uint32_t* state, const uint8_t* blocks, size_t block_count);

#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)
void Sha1ShaNi(uint32_t* state, const uint8_t* blocks, size_t block_count);
void Sha256ShaNi(uint32_t* state, const uint8_t* blocks, size_t block_count);
void Sha1ShaNiFinish(uint32_t* state, const uint8_t* block, uint32_t waiting, uint64_t bit_count,
                     uint8_t* digest);
void Sha256ShaNiFinish(uint32_t* state, const uint8_t* block, uint32_t waiting, uint64_t bit_count,
                       uint8_t* digest);
void Sha256ShaNiFinishKeyed(uint32_t* state, const uint32_t* outer, const uint8_t* block,
                            uint32_t waiting, uint64_t bit_count, uint8_t* digest);
#endif

}  // namespace mirolta
