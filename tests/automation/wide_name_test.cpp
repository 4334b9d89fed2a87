#include "wide_name.h"

#include <gtest/gtest.h>

namespace mirolta::test {
namespace {

constexpr NameSlot kTable[] = {OLESTR("MD5"), OLESTR("SHA1"), OLESTR("FIFTEENLETTERSX"),
                               OLESTR("")};
constexpr NameSlot kEmptyTable[] = {OLESTR("")};

TEST(WideName, SameNameIsExact) {
  const OLECHAR a[] = OLESTR("SHA1");
  const OLECHAR b[] = OLESTR("SHA1");
  EXPECT_TRUE(SameWideName(a, a));
  EXPECT_TRUE(SameWideName(a, b));
  EXPECT_TRUE(SameWideName(nullptr, nullptr));
  EXPECT_FALSE(SameWideName(a, nullptr));
  EXPECT_FALSE(SameWideName(nullptr, a));
  EXPECT_TRUE(SameWideName(OLESTR(""), b + 4));
  for (const OLECHAR* other : {OLESTR("sha1"), OLESTR("SHA"), OLESTR("SHA12"), OLESTR("SHA-1"),
                               OLESTR(" SHA1"), OLESTR("SHA1 "), OLESTR("")}) {
    EXPECT_FALSE(SameWideName(a, other));
    EXPECT_FALSE(SameWideName(other, a));
  }
}

TEST(WideName, FindStopsAtTheEmptySlot) {
  EXPECT_EQ(FindName(kTable, OLESTR("MD5")), 0);
  EXPECT_EQ(FindName(kTable, OLESTR("SHA1")), 1);
  EXPECT_EQ(FindName(kTable, OLESTR("FIFTEENLETTERSX")), 2);
  EXPECT_EQ(FindName(kTable, OLESTR("md5")), -1);
  EXPECT_EQ(FindName(kTable, OLESTR("")), -1);
  EXPECT_EQ(FindName(kTable, nullptr), -1);
  EXPECT_EQ(FindName(kEmptyTable, OLESTR("MD5")), -1);
  EXPECT_EQ(FindName(kEmptyTable, OLESTR("")), -1);
}

TEST(WideName, CopyLooksAtCapacitiesFromOneOn) {
  OLECHAR buffer[8];
  const auto clear = [&] {
    for (OLECHAR& c : buffer) c = 'x';
  };
  for (const LONG capacity : {1, 2, 3, 4}) {
    clear();
    EXPECT_EQ(CopyName(kTable[1], buffer, capacity), E_OUTOFMEMORY);
    EXPECT_EQ(buffer[0], 'x');
  }
  for (const LONG capacity : {5, 64, 0, -1}) {
    clear();
    EXPECT_EQ(CopyName(kTable[1], buffer, capacity), S_OK);
    EXPECT_TRUE(SameWideName(buffer, kTable[1]));
    EXPECT_EQ(buffer[5], 'x');
  }
  EXPECT_EQ(CopyName(kTable[1], nullptr, 64), E_OUTOFMEMORY);
}

}  // namespace
}  // namespace mirolta::test
