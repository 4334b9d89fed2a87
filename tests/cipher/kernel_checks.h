// What must hold for every kernel of a block cipher, whatever the cipher.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <vector>

#include "platform.h"
#include "test_bytes.h"

namespace mirolta {

// Runs check(kernel) for each kernel of a list that this processor can run, and names the others.
template <typename List, typename Check>
void ForEachKernel(const List& list, const Check& check) {
  ASSERT_GE(list.size(), 1u);
  EXPECT_EQ(list[list.size() - 1].needs, 0u) << "the last kernel must be portable";
  for (size_t i = 0; i < list.size(); ++i) {
    const auto& kernel = list[i];
    if ((kernel.needs & ~ProcessorFeatures()) != 0) {
      std::printf("skipped, the processor lacks it: %s\n", kernel.name);
      continue;
    }
    SCOPED_TRACE(kernel.name);
    check(kernel);
  }
}

// Small counts all, large ones around what vectors of 128 to 512 bits take at once, with and
// without a rest that fills part of one.
inline std::vector<uint32_t> CheckedCounts() {
  std::vector<uint32_t> counts;
  for (uint32_t count = 0; count <= 70; ++count) counts.push_back(count);
  for (uint32_t middle : {96u, 128u, 192u, 256u, 448u, 512u, 768u, 1024u}) {
    for (uint32_t count = middle - 2; count <= middle + 2; ++count) counts.push_back(count);
  }
  for (uint32_t count : {100u, 285u, 286u, 287u, 288u, 533u, 534u, 535u, 536u, 600u, 1100u}) {
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
  const auto portable = list[list.size() - 1].function;
  ForEachKernel(list, [&](const auto& kernel) {
    for (uint32_t count : CheckedCounts()) {
      const uint32_t size = count * block_size;
      const uint32_t offset = Below(random, 16);
      const Bytes in = RandomBytes(random, offset + size);
      Bytes expected(size + 1);
      portable(schedule, in.data() + offset, expected.data(), count);

      Bytes out(offset + size + block_size, kGuard);
      kernel.function(schedule, in.data() + offset, out.data() + offset, count);
      EXPECT_EQ(Part(out, offset, size), Part(expected, 0, size)) << count;
      EXPECT_EQ(Part(out, offset + size, block_size), Bytes(block_size, kGuard)) << count;
      EXPECT_EQ(Part(out, 0, offset), Bytes(offset, kGuard)) << count;

      Bytes place = in;
      place.push_back(kGuard);
      kernel.function(schedule, place.data() + offset, place.data() + offset, count);
      EXPECT_EQ(Part(place, offset, size), Part(expected, 0, size)) << count;
      EXPECT_EQ(place.back(), kGuard);
    }
  });
}

}  // namespace mirolta
