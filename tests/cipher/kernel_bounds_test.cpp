// No kernel touches what lies before or behind its schedule, input and output.
#include <gtest/gtest.h>

#include "aes_kernels.h"
#include "aes_schedule.h"
#include "des_kernels.h"
#include "des_schedule.h"
#include "guarded_memory.h"
#include "kernel_checks.h"
#include "test_bytes.h"

namespace mirolta {
namespace {

using test::Guard;
using test::GuardedMemory;

template <typename List, typename Schedule>
void ExpectInsideBounds(const List& list, const Schedule& schedule, uint32_t block_size) {
  std::mt19937 random(3);
  const auto portable = list[list.size() - 1].function;
  for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
    const GuardedMemory keys(guard, sizeof(Schedule));
    const Schedule& guarded = *keys.Copy(&schedule);
    for (uint32_t count : {0u,  1u,  2u,   3u,   5u,   8u,   15u,  16u,  17u,  31u,  33u,
                           64u, 65u, 127u, 129u, 255u, 257u, 511u, 513u, 769u, 1025u}) {
      const uint32_t size = count * block_size;
      const Bytes plain = RandomBytes(random, size);
      Bytes expected(size);
      portable(schedule, plain.data(), expected.data(), count);
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

TEST(KernelBounds, AesTransformsStayInside) {
  for (const uint32_t length : {16u, 24u, 32u}) {
    AesSchedule schedule = {};
    ASSERT_TRUE(ExpandAesKey(Bytes(length, 0x3C).data(), length, &schedule));
    ExpectInsideBounds(kAesEncryptKernels, schedule, kAesBlockSize);
    ExpectInsideBounds(kAesDecryptKernels, schedule, kAesBlockSize);
  }
}

TEST(KernelBounds, DesTransformsStayInside) {
  for (const uint32_t length : {8u, 24u}) {
    DesSchedule schedule = {};
    std::mt19937 random(4);
    ASSERT_TRUE(ExpandDesKey(RandomBytes(random, length).data(), length, &schedule));
    ExpectInsideBounds(kDesEncryptKernels, schedule, kDesBlockSize);
    ExpectInsideBounds(kDesDecryptKernels, schedule, kDesBlockSize);
  }
}

TEST(KernelBounds, AesExpansionsStayInside) {
  for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
    for (const uint32_t length : {16u, 24u, 32u}) {
      const Bytes key(length, 0x5A);
      AesSchedule expected = {};
      AesExpandPortable(key.data(), length, &expected);
      const GuardedMemory guarded_key(guard, length);
      guarded_key.Copy(key.data(), length);
      ForEachKernel(kAesExpansionKernels, [&](const Kernel<AesExpansion>& kernel) {
        const GuardedMemory memory(guard, sizeof(AesSchedule));
        const AesSchedule empty = {};
        AesSchedule* const schedule = memory.Copy(&empty);
        kernel.function(guarded_key.data(), length, schedule);
        EXPECT_EQ(std::memcmp(schedule, &expected, sizeof expected), 0) << length;
      });
    }
  }
}

}  // namespace
}  // namespace mirolta
