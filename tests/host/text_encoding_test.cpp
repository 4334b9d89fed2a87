#include "values/text_encoding.h"

#include <gtest/gtest.h>

namespace mirolta::host {
namespace {

TEST(TextEncoding, EveryUnitSurvivesARoundTripThroughTheEngine) {
  Units all;
  for (uint32_t unit = 0; unit <= 0xFFFF; ++unit) all.push_back(static_cast<OLECHAR>(unit));
  const std::string bytes = EngineFromUnits(all);
  EXPECT_EQ(bytes.size(), EngineByteLength(all.data(), all.size()));
  EXPECT_EQ(bytes.size(), 0x80u + 2 * (0x800u - 0x80u) + 3 * (0x10000u - 0x800u));
  EXPECT_EQ(UnitsFromEngine(bytes), all);
}

TEST(TextEncoding, AsciiIsNarrowedAndOneOtherUnitAnywhereIsNoticed) {
  for (size_t count = 0; count <= 70; ++count) {
    Units units;
    for (size_t i = 0; i < count; ++i)
      units.push_back(static_cast<OLECHAR>((i * 37 + count) % 128));
    std::string bytes(count, '?');
    ASSERT_TRUE(NarrowAscii(units.data(), count, bytes.data())) << count;
    EXPECT_EQ(bytes, EngineFromUnits(units));
    for (size_t i = 0; i < count; ++i) {
      for (const OLECHAR other :
           {OLECHAR{0x80}, OLECHAR{0x100}, OLECHAR{0x4100}, OLECHAR{0xFF7F}}) {
        Units changed = units;
        changed[i] = other;
        ASSERT_FALSE(NarrowAscii(changed.data(), count, bytes.data())) << count << " " << i;
      }
    }
  }
}

TEST(TextEncoding, TheEngineEncodesEachSurrogateOnItsOwn) {
  EXPECT_EQ(EngineFromUnits(u"\U0001F600"), "\xED\xA0\xBD\xED\xB8\x80");
  EXPECT_EQ(UnitsFromEngine("\xF0\x9F\x98\x80"), Units(u"\U0001F600"));
}

TEST(TextEncoding, MalformedEngineBytesBecomeReplacementCharacters) {
  EXPECT_EQ(UnitsFromEngine("a\x80z"), Units(u"a\uFFFDz"));
  EXPECT_EQ(UnitsFromEngine("\xC0\x80"), Units(u"\uFFFD\uFFFD"));
  EXPECT_EQ(UnitsFromEngine("\xE2\x82"), Units(u"\uFFFD\uFFFD"));
  EXPECT_EQ(UnitsFromEngine("\xFFHidden"), Units(u"\uFFFDHidden"));
}

TEST(TextEncoding, EveryFileNameSurvivesARoundTrip) {
  std::string name;
  for (int byte = 1; byte < 256; ++byte) name.push_back(static_cast<char>(byte));
  EXPECT_EQ(SystemFromUnits(UnitsFromSystem(name)), name);
  for (const char* one : {"", "plain", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", "\xED\xA0\x80",
                          "\xF5\x80\x80\x80", "\xE2\x82", "\xC3"}) {
    EXPECT_EQ(SystemFromUnits(UnitsFromSystem(one)), one);
  }
}

TEST(TextEncoding, SystemTextIsUtf8AndOtherBytesAreLoneSurrogates) {
  EXPECT_EQ(UnitsFromSystem("\xC3\xA9\xF0\x9F\x98\x80"), Units(u"\u00E9\U0001F600"));
  EXPECT_EQ(UnitsFromSystem("\xFF"), Units(1, OLECHAR{0xDCFF}));
  EXPECT_EQ(SystemFromUnits(Units(1, OLECHAR{0xD800})), "\xEF\xBF\xBD");
  EXPECT_EQ(SystemFromUnits(Units(1, OLECHAR{0xDC00})), "\xEF\xBF\xBD");
}

}  // namespace
}  // namespace mirolta::host
