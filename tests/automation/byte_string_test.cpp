#include "byte_string.h"

#include <gtest/gtest.h>

#include <utility>

#include "memory_watch.h"
#include "test_values.h"

namespace mirolta::test {
namespace {

const Bytes kSecret = BytesOf("the secret of this test");
const auto kCount = static_cast<uint32_t>(kSecret.size());

TEST(ByteString, StartsEmpty) {
  ByteString bytes;
  EXPECT_FALSE(bytes.IsPresent());
  EXPECT_EQ(bytes.Data(), nullptr);
  EXPECT_EQ(bytes.Count(), 0u);
}

TEST(ByteString, NoBytesMayBePresent) {
  ByteString bytes;
  ASSERT_TRUE(bytes.Allocate(0));
  EXPECT_TRUE(bytes.IsPresent());
  EXPECT_EQ(bytes.Count(), 0u);
  ASSERT_TRUE(bytes.Assign(nullptr, 0));
  EXPECT_TRUE(bytes.IsPresent());
  bytes.Clear();
  EXPECT_FALSE(bytes.IsPresent());
}

TEST(ByteString, MovesItsBytes) {
  ByteString a;
  ASSERT_TRUE(a.Assign(kSecret.data(), kCount));
  const uint8_t* place = a.Data();
  ByteString b(std::move(a));
  EXPECT_FALSE(a.IsPresent());
  EXPECT_EQ(b.Data(), place);
  ByteString c;
  ASSERT_TRUE(c.Allocate(3));
  c = std::move(b);
  EXPECT_FALSE(b.IsPresent());
  EXPECT_EQ(c.Data(), place);
  EXPECT_EQ(c.Count(), kCount);
  ByteString* self = &c;
  c = std::move(*self);
  EXPECT_EQ(c.Data(), place);
}

TEST(ByteString, FailedAllocationLeavesItEmpty) {
  ByteString bytes;
  ASSERT_TRUE(bytes.Assign(kSecret.data(), kCount));
  FailAllocationsAfter fail(0);
  const bool assigned = bytes.Assign(kSecret.data(), kCount);
  EXPECT_FALSE(assigned);
  EXPECT_FALSE(bytes.IsPresent());
  EXPECT_EQ(bytes.Count(), 0u);
}

TEST(ByteString, EveryWayOutWipes) {
  WatchFreedMemory watch(kSecret.data() + 4, 8);
  {
    ByteString bytes;
    ASSERT_TRUE(bytes.Assign(kSecret.data(), kCount));
    bytes.Clear();
    ASSERT_TRUE(bytes.Assign(kSecret.data(), kCount));
    ASSERT_TRUE(bytes.Allocate(5));
    ASSERT_TRUE(bytes.Assign(kSecret.data(), kCount));
    bytes.Shorten(2);
    EXPECT_EQ(bytes.Count(), 2u);
    bytes.Shorten(3);
    EXPECT_EQ(bytes.Count(), 2u);
    ASSERT_TRUE(bytes.Assign(kSecret.data(), kCount));
    bytes = ByteString();
    ASSERT_TRUE(bytes.Assign(kSecret.data(), kCount));
  }
  EXPECT_GE(watch.Freed(), 5);
  EXPECT_EQ(watch.FreedWithSecret(), 0);
}

}  // namespace
}  // namespace mirolta::test
