// What must hold for every kernel of a block cipher, whatever the cipher.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "bytes.h"
#include "guarded_memory.h"
#include "kernel_rows.h"
#include "platform.h"

namespace mirolta::test {

// Small counts all, large ones around what vectors of 128 to 512 bits take at once, with and
// without a rest that fills part of one.
inline std::vector<uint32_t> CheckedCounts() {
  std::vector<uint32_t> counts;
  for (uint32_t count = 0; count <= 70; ++count) counts.push_back(count);
  for (uint32_t middle : {96u, 128u, 192u, 256u, 448u, 512u, 768u, 1024u}) {
    for (uint32_t count = middle - 2; count <= middle + 2; ++count) counts.push_back(count);
  }
  for (uint32_t count : {100u, 147u, 148u, 149u, 150u, 157u, 158u, 160u, 161u, 285u, 286u, 287u,
                         288u, 533u, 534u, 535u, 536u, 600u, 1100u}) {
    counts.push_back(count);
  }
  return counts;
}

// Compares each kernel with the portable one: the counts above, unaligned input and output, in
// place, and nothing written beyond the last block.
template <typename List, typename Schedule>
void ExpectKernelsAgree(const List& list, const Schedule& schedule, uint32_t block_size,
                        std::mt19937& random) {
  constexpr uint8_t kGuard = 0x5C;
  ForEachKernel(list, [&](const auto& kernel) {
    for (uint32_t count : CheckedCounts()) {
      const uint32_t size = count * block_size;
      const uint32_t offset = Below(random, 16);
      const Bytes in = RandomBytes(random, offset + size);
      Bytes expected(size);
      PortableOf(list)(schedule, in.data() + offset, expected.data(), count);

      Bytes out(offset + size + block_size, kGuard);
      kernel.function(schedule, in.data() + offset, out.data() + offset, count);
      EXPECT_EQ(out, Bytes(offset, kGuard) + expected + Bytes(block_size, kGuard)) << count;

      Bytes place = in + Bytes{kGuard};
      kernel.function(schedule, place.data() + offset, place.data() + offset, count);
      EXPECT_EQ(place, Head(in, offset) + expected + Bytes{kGuard}) << count;
    }
  });
}

// Runs each kernel with pages that cannot be touched before or behind schedule, input and output.
template <typename List, typename Schedule>
void ExpectInsideBounds(const List& list, const Schedule& schedule, uint32_t block_size) {
  std::mt19937 random(3);
  for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
    const GuardedMemory keys(guard, sizeof(Schedule));
    const Schedule& guarded = *keys.Copy(&schedule);
    for (uint32_t count : {0u,  1u,  2u,   3u,   5u,   8u,   15u,  16u,  17u,  31u,  33u,
                           64u, 65u, 127u, 129u, 255u, 257u, 511u, 513u, 769u, 1025u}) {
      const uint32_t size = count * block_size;
      const Bytes plain = RandomBytes(random, size);
      Bytes expected(size);
      PortableOf(list)(schedule, plain.data(), expected.data(), count);
      const GuardedMemory in(guard, size);
      const GuardedMemory out(guard, size);
      in.Copy(plain.data(), size);
      ForEachKernel(list, [&](const auto& kernel) {
        kernel.function(guarded, in.data(), out.data(), count);
        EXPECT_EQ(Bytes(out.data(), out.data() + size), expected) << count;
      });
    }
  }
}

// Expects each kernel to turn one byte string of whole blocks into another.
template <typename List, typename Schedule>
void ExpectTransforms(const List& list, const Schedule& schedule, uint32_t block_size,
                      const Bytes& in, const Bytes& expected) {
  ForEachKernel(list, [&](const auto& kernel) {
    Bytes out(in.size());
    kernel.function(schedule, in.data(), out.data(), static_cast<uint32_t>(in.size() / block_size));
    EXPECT_EQ(out, expected);
  });
}

}  // namespace mirolta::test
