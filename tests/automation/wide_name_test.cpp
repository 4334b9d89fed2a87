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

int Find(const NameSlot* table, const OLECHAR* name) {
  return FindName(table, name, NameLength(name));
}

TEST(WideName, LengthEndsAtTheFirstZero) {
  EXPECT_EQ(NameLength(nullptr), 0u);
  EXPECT_EQ(NameLength(OLESTR("")), 0u);
  EXPECT_EQ(NameLength(OLESTR("MD5\0x")), 3u);
}

TEST(WideName, ZeroCharactersCount) {
  EXPECT_EQ(FindName(kTable, OLESTR("MD5"), 3), 0);
  EXPECT_EQ(FindName(kTable, OLESTR("MD5"), 4), -1);
  EXPECT_EQ(FindName(kTable, OLESTR("MD5\0"), 5), -1);
  EXPECT_EQ(FindName(kTable, OLESTR("MD5\0x"), 5), -1);
  EXPECT_EQ(FindName(kTable, OLESTR("FIFTEENLETTERSX"), 16), -1);
  EXPECT_EQ(FindName(kTable, OLESTR("FIFTEENLETTERSX\0"), 17), -1);
  EXPECT_EQ(FindName(kTable, OLESTR("MD5\0x"), 3), 0);
  EXPECT_EQ(FindName(kTable, OLESTR("\0MD5"), 4), -1);
  // Read no further than it is long.
  const OLECHAR open[] = {'S', 'H', 'A', '1'};
  EXPECT_EQ(FindName(kTable, open, 4), 1);
  EXPECT_EQ(FindName(kTable, open, 3), -1);
}

TEST(WideName, FindStopsAtTheEmptySlot) {
  EXPECT_EQ(Find(kTable, OLESTR("MD5")), 0);
  EXPECT_EQ(Find(kTable, OLESTR("SHA1")), 1);
  EXPECT_EQ(Find(kTable, OLESTR("FIFTEENLETTERSX")), 2);
  EXPECT_EQ(Find(kTable, OLESTR("md5")), -1);
  EXPECT_EQ(Find(kTable, OLESTR("")), -1);
  EXPECT_EQ(Find(kTable, nullptr), -1);
  EXPECT_EQ(Find(kEmptyTable, OLESTR("MD5")), -1);
  EXPECT_EQ(Find(kEmptyTable, OLESTR("")), -1);
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
