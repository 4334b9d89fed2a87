// Any bytes as 16-bit text and back, which is exact, and any 16-bit text as bytes and back, which is exact
// unless unpaired surrogates stand for bytes that are UTF-8.
#include <algorithm>
#include <cstring>

#include "charsets/escaped_utf8.h"
#include "charsets/utf16_text.h"
#include "fuzz_input.h"

using namespace mirolta;
using namespace mirolta::fuzz;
using namespace mirolta::runtime;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const char* const bytes = reinterpret_cast<const char*>(data);
  WideText wide;
  FUZZ_CHECK(AppendWideFromUtf8(bytes, size, &wide) && wide.Size() <= size);
  RuntimeArray<char> again;
  FUZZ_CHECK(AppendUtf8FromWide(ViewOf(wide), &again));
  FUZZ_CHECK(again.Size() == size && (size == 0 || std::memcmp(again.Data(), bytes, size) == 0));

  std::u16string text;
  bool has_unpaired = false;
  for (size_t i = 0; i + 1 < size; i += 2) {
    text += static_cast<char16_t>(data[i] | data[i + 1] << 8);
  }
  for (size_t at = 0; at < text.size();) {
    uint32_t point = 0;
    at += DecodeUtf16(text.data() + at, text.size() - at, &point);
    has_unpaired |= IsHighSurrogate(point) || IsLowSurrogate(point);
    FUZZ_CHECK(at <= text.size() && point < 0x110000);
  }
  RuntimeArray<char> utf8;
  FUZZ_CHECK(AppendUtf8FromWide(text, &utf8));
  WideText back;
  FUZZ_CHECK(AppendWideFromUtf8(utf8.Data(), utf8.Size(), &back));
  FUZZ_CHECK(has_unpaired || ViewOf(back) == text);
  return 0;
}
