// Numbers from text when the platform's conversion gives zero bytes, which the runtime's never
// does: this program defines the conversion itself.
#include <gtest/gtest.h>

#include <cstring>

#include "big_code_page_text.h"
#include "big_testing.h"
#include "owned_value.h"

extern "C" {

// A character set whose "c" is a zero byte.
INT WideCharToMultiByte(UINT, DWORD, LPCWSTR text, INT length, LPSTR bytes, INT capacity, LPCSTR,
                        BOOL*) {
  for (INT i = 0; i < length && i < capacity; ++i) {
    bytes[i] = text[i] == 'c' ? '\0' : static_cast<char>(text[i]);
  }
  return length;
}
}

namespace mirolta::test {
namespace {

TEST(BigPlatformTest, BytesUpToTheFirstZeroCount) {
  const struct {
    const OLECHAR* text;
    const char* number;
  } kRows[] = {{OLESTR("abcde"), "6162"}, {OLESTR("abc"), "6162"}, {OLESTR("cab"), "0"}};
  for (const auto& row : kRows) {
    const OwnedBstr text(SysAllocString(row.text));
    BigInt n(77);
    ASSERT_EQ(NumberFromCodePageText(n, text.Get(), 1252), S_OK);
    EXPECT_EQ(Hex(n), row.number);
  }
}

}  // namespace
}  // namespace mirolta::test
