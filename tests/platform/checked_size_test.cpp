// Sizes that do not fit the type that counts them.
#include "seam/checked_size.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

// The fake allocator: it remembers what it was asked for last and gives nothing while it refuses.
bool refuses = false;
size_t asked_times = 0;
size_t asked_bytes = 0;

}  // namespace

void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  ++asked_times;
  asked_bytes = size;
  return refuses ? nullptr : std::malloc(size != 0 ? size : 1);
}
__attribute__((noinline)) void operator delete[](void* memory) noexcept {
  std::free(memory);
}
__attribute__((noinline)) void operator delete[](void* memory, size_t) noexcept {
  std::free(memory);
}

namespace mirolta {
namespace {

// Every pair of counts, by a size that has eight bits.
TEST(CheckedSizeTest, SumsAndProductsAreTrueOrTooLarge) {
  using Size = BasicCheckedSize<uint8_t>;
  for (uint32_t a = 0; a < 256; ++a) {
    for (uint32_t b = 0; b < 256; ++b) {
      const uint8_t x = static_cast<uint8_t>(a);
      const uint8_t y = static_cast<uint8_t>(b);
      ASSERT_EQ((Size(x) + Size(y)).Value(), std::min(a + b, 255u)) << a << " + " << b;
      ASSERT_EQ((Size(x) * Size(y)).Value(), std::min(a * b, 255u)) << a << " * " << b;
    }
  }
}

// The working memory of a power by a modulus of n limbs, as a processor of 32 bits counts it.
constexpr uint32_t PowerLimbs(uint32_t n) {
  using Size = BasicCheckedSize<uint32_t>;
  return (Size(n) * 79 + 512).Value();
}

TEST(CheckedSizeTest, ASizeOf32BitsDoesNotWrap) {
  constexpr uint32_t kMost = (UINT32_MAX - 512) / 79;
  static_assert(PowerLimbs(kMost) == kMost * 79 + 512);
  static_assert(PowerLimbs(kMost + 1) == UINT32_MAX);
  // Unchecked, these are as few limbs as a stack holds.
  static_assert(static_cast<uint32_t>((kMost + 1) * 79 + 512) < 96);
  for (uint32_t n = kMost + 1; n > kMost; n += 9'999'991) EXPECT_EQ(PowerLimbs(n), UINT32_MAX) << n;
}

TEST(CheckedSizeTest, WhatIsTooLargeStaysSo) {
  using Size = BasicCheckedSize<uint32_t>;
  const uint32_t half = 0x80000000u;
  const Size large = Size(half) + Size(half);
  EXPECT_EQ(large.Value(), Size::kTooLarge);
  EXPECT_EQ((large + 1).Value(), Size::kTooLarge);
  EXPECT_EQ((2 * large).Value(), Size::kTooLarge);
  EXPECT_EQ((large * large + large).Value(), Size::kTooLarge);
}

TEST(CheckedSizeTest, ACountThatIsWiderIsNotCut) {
  using Size = BasicCheckedSize<uint32_t>;
  const uint64_t fits = UINT32_MAX - 1;
  const uint64_t wide = uint64_t{1} << 32;
  EXPECT_EQ(Size(fits).Value(), UINT32_MAX - 1);
  EXPECT_EQ(Size(wide).Value(), Size::kTooLarge);
}

TEST(CheckedSizeTest, ArraysThatAreTooLargeAreNotAskedFor) {
  refuses = false;
  const size_t few = 3;
  asked_times = 0;
  uint32_t* const array = NewArray<uint32_t>(CheckedSize(few));
  ASSERT_NE(array, nullptr);
  EXPECT_EQ(asked_times, 1u);
  EXPECT_EQ(asked_bytes, 12u);
  delete[] array;

  refuses = true;
  const size_t most = kMostArrayBytes / 4;
  EXPECT_EQ(NewArray<uint32_t>(CheckedSize(most)), nullptr);
  EXPECT_EQ(asked_times, 2u);
  EXPECT_EQ(asked_bytes, most * 4);

  for (const size_t count : {most + 1, SIZE_MAX / 4 + 2, SIZE_MAX}) {
    EXPECT_EQ(NewArray<uint32_t>(CheckedSize(count)), nullptr) << count;
  }
  EXPECT_EQ(NewArray<uint8_t>(4 * CheckedSize(few) * CheckedSize(most)), nullptr);
  EXPECT_EQ(asked_times, 2u);
  refuses = false;
}

}  // namespace
}  // namespace mirolta
