// Units and bytes of exact lengths: nothing beyond them is read or written.
#include "utf16_bytes.h"

#include <gtest/gtest.h>

#include <vector>

#include "guarded_memory.h"

namespace mirolta::test {
namespace {

TEST(Utf16Bytes, StayInsideTheirArguments) {
  for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
    for (const size_t length : {0u, 1u, 2u, 33u}) {
      std::vector<OLECHAR> units(length);
      for (size_t i = 0; i < length; ++i) units[i] = static_cast<OLECHAR>(0x1234 + 0x0F0E * i);
      const GuardedMemory text(guard, length * sizeof(OLECHAR));
      const GuardedMemory bytes(guard, 2 * length);
      const OLECHAR* const from = text.Copy(units.data(), length);
      for (const UnitOrder order : {UnitOrder::kLowFirst, UnitOrder::kHighFirst}) {
        const size_t low = order == UnitOrder::kLowFirst ? 0 : 1;
        WriteUnits(from, length, order, bytes.data());
        for (size_t i = 0; i < length; ++i) {
          EXPECT_EQ(bytes.data()[2 * i + low], units[i] & 0xFF);
          EXPECT_EQ(bytes.data()[2 * i + 1 - low], units[i] >> 8);
        }
        const std::vector<OLECHAR> zeros(length);
        OLECHAR* const to = text.Copy(zeros.data(), length);
        ReadUnits(bytes.data(), length, order, to);
        EXPECT_EQ(std::vector<OLECHAR>(to, to + length), units);
      }
    }
  }
}

}  // namespace
}  // namespace mirolta::test
