#include "all_at_once.h"
#include "child_process.h"
#include "locale_charset.h"
#include "mirolta/system.h"
#include "open_converters.h"
#include "system_support.h"

namespace mirolta {
namespace {

// Converts with a size query first; "!" if the two lengths differ.
std::string Encode(UINT set, const std::u16string& text, const char* missing = nullptr) {
  const INT length = static_cast<INT>(text.size());
  const INT needed = WideCharToMultiByte(set, 0, text.data(), length, nullptr, 0, missing, nullptr);
  std::string bytes(static_cast<size_t>(needed), '#');
  if (needed == 0) return bytes;
  const INT got =
      WideCharToMultiByte(set, 0, text.data(), length, bytes.data(), needed, missing, nullptr);
  return got == needed ? bytes : "!";
}

std::u16string Decode(UINT set, const std::string& bytes) {
  const INT length = static_cast<INT>(bytes.size());
  const INT needed = MultiByteToWideChar(set, 0, bytes.data(), length, nullptr, 0);
  std::u16string text(static_cast<size_t>(needed), u'#');
  if (needed == 0) return text;
  const INT got = MultiByteToWideChar(set, 0, bytes.data(), length, text.data(), needed);
  return got == needed ? text : u"!";
}

struct Sample {
  UINT set;
  const char* bytes;
  const char16_t* text;
};

class CharacterSetSample : public testing::TestWithParam<Sample> {};

TEST_P(CharacterSetSample, ConvertsBothWays) {
  const Sample& sample = GetParam();
  EXPECT_EQ(Encode(sample.set, sample.text), sample.bytes);
  EXPECT_EQ(Decode(sample.set, sample.bytes), sample.text);
}

INSTANTIATE_TEST_SUITE_P(
    All, CharacterSetSample,
    testing::Values(
        Sample{20127, "abc~", u"abc~"}, Sample{437, "\x81\x9B", u"\u00FC\u00A2"},
        Sample{850, "\x81\xBD", u"\u00FC\u00A2"}, Sample{1250, "\x8A\xB9", u"\u0160\u0105"},
        Sample{1251, "\xCF\xF0", u"\u041F\u0440"},
        Sample{1252, "\x80\xFC\x81", u"\u20AC\u00FC\u0081"},
        Sample{1253, "\xC1\xE1\xAA", u"\u0391\u03B1\uF8F9"},
        Sample{1254, "\xF0\xFD", u"\u011F\u0131"},
        Sample{1255, "\xE0\xC7\xD9", u"\u05D0\u05B7\uF88D"},
        Sample{1256, "\xC7\x81", u"\u0627\u067E"}, Sample{1257, "\xC0\xA1", u"\u0104\uF8FC"},
        Sample{1258, "\x41\xCC\xD0", u"A\u0300\u0110"}, Sample{28591, "\xE9\x80", u"\u00E9\u0080"},
        Sample{28592, "\xA1", u"\u0104"}, Sample{28593, "\xA1", u"\u0126"},
        Sample{28594, "\xA1", u"\u0104"}, Sample{28595, "\xB0", u"\u0410"},
        Sample{28596, "\xC7", u"\u0627"}, Sample{28597, "\xC1", u"\u0391"},
        Sample{28598, "\xE0", u"\u05D0"}, Sample{28599, "\xF0", u"\u011F"},
        Sample{28600, "\xA1", u"\u0104"}, Sample{28601, "\xA1", u"\u0E01"},
        Sample{28603, "\xC0", u"\u0104"}, Sample{28604, "\xA1", u"\u1E02"},
        Sample{28605, "\xA4", u"\u20AC"}, Sample{932, "\x82\xA0\xB1z", u"\u3042\uFF71z"},
        Sample{936, "\xC4\xE3\xBA\xC3", u"\u4F60\u597D"},
        Sample{949, "\xB0\xA1\x81\x41", u"\uAC00\uAC02"},
        Sample{950, "\xA4\xA4\xA4\xE5", u"\u4E2D\u6587"}, Sample{65000, "A+ImI-b", u"A\u2262b"},
        Sample{65001, "\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80", u"\u00FC\u20AC\U0001F600"},
        Sample{54936, "\x81\x30\x81\x30", u"\u0080"}, Sample{737, "\xE0", u"\u03C9"},
        Sample{775, "\x83", u"\u0101"}, Sample{852, "\x88", u"\u0142"},
        Sample{855, "\xE9", u"\u0436"}, Sample{857, "\x8D", u"\u0131"},
        Sample{858, "\xD5", u"\u20AC"}, Sample{860, "\x94", u"\u00F5"},
        Sample{862, "\x80", u"\u05D0"}, Sample{863, "\x8E", u"\u00C0"},
        Sample{864, "\xC7", u"\uFE8D"}, Sample{865, "\x9B", u"\u00F8"},
        Sample{866, "\xA6", u"\u0436"}, Sample{869, "\xFA", u"\u03C9"},
        Sample{874, "\xA1", u"\u0E01"}, Sample{10000, "\x8E", u"\u00E9"},
        Sample{20866, "\xD6", u"\u0436"}, Sample{21866, "\xA7", u"\u0457"},
        Sample{1361, "\x88\x61", u"\uAC00"}, Sample{51932, "\xB0\xA1", u"\u4E9C"},
        Sample{51949, "\xB0\xA1", u"\uAC00"}),
    [](const testing::TestParamInfo<Sample>& sample) {
      return "set" + std::to_string(sample.param.set);
    });

TEST(CharacterSets, EverySetOfOneBytePerCharacterReturnsToItself) {
  for (const UINT set : {437u, 850u, 1250u, 1251u, 1252u, 1253u, 1254u, 1255u, 1256u, 1257u, 1258u,
                         28591u, 28592u, 28595u, 28597u, 28599u, 28605u}) {
    for (unsigned byte = 0; byte < 256; ++byte) {
      const std::string bytes(1, static_cast<char>(byte));
      const std::u16string text = Decode(set, bytes);
      ASSERT_EQ(text.size(), 1u) << set << " " << byte;
      if (text != u"?") {
        EXPECT_EQ(Encode(set, text), bytes) << set << " " << byte;
      }
    }
  }
}

TEST(CharacterSets, UnknownNumbersGiveZero) {
  for (const UINT set : {1200u, 1201u, 12000u, 12001u, 28602u, 28606u, 42u, 99999u, 0xFFFFFFFFu}) {
    char bytes[8] = "#######";
    WCHAR text[8] = u"#######";
    EXPECT_EQ(WideCharToMultiByte(set, 0, u"a", 1, nullptr, 0, nullptr, nullptr), 0) << set;
    EXPECT_EQ(WideCharToMultiByte(set, 0, u"a", 1, bytes, 8, nullptr, nullptr), 0) << set;
    EXPECT_EQ(MultiByteToWideChar(set, 0, "a", 1, nullptr, 0), 0) << set;
    EXPECT_EQ(MultiByteToWideChar(set, 0, "a", 1, text, 8), 0) << set;
    EXPECT_STREQ(bytes, "#######");
  }
}

TEST(CharacterSets, MissingCharactersBecomeTheDefault) {
  EXPECT_EQ(Encode(1252, u"a\u0416b"), "a?b");
  EXPECT_EQ(Encode(1252, u"a\u0416b", "*"), "a*b");
  EXPECT_EQ(Encode(20127, u"\u00E9"), "?");
  EXPECT_EQ(Encode(1252, u"\U0001F600"), "??");  // two units, two defaults
  EXPECT_EQ(Encode(932, u"a\U0001F600b"), "a??b");
  EXPECT_EQ(Encode(932, u"a\u0E01b"), "a?b");
  EXPECT_EQ(Encode(1252, u"x\xFFFFy"), "x?y");

  BOOL used = 7;
  char byte = 0;
  EXPECT_EQ(WideCharToMultiByte(1252, 0, u"a", 1, &byte, 1, nullptr, &used), 1);
  EXPECT_EQ(used, FALSE);
  EXPECT_EQ(WideCharToMultiByte(1252, 0, u"\u0416", 1, &byte, 1, nullptr, &used), 1);
  EXPECT_EQ(used, TRUE);
}

TEST(CharacterSets, CompleteSetsTakeNoDefault) {
  BOOL used = FALSE;
  char bytes[8];
  for (const UINT set : {65000u, 65001u}) {
    EXPECT_EQ(WideCharToMultiByte(set, 0, u"a", 1, bytes, 8, "?", nullptr), 0);
    EXPECT_EQ(WideCharToMultiByte(set, 0, u"a", 1, bytes, 8, nullptr, &used), 0);
  }
}

TEST(CharacterSets, UnpairedSurrogatesAreReplaced) {
  const std::string replacement = "\xEF\xBF\xBD";
  EXPECT_EQ(Encode(65001, u"a\xD800"), "a" + replacement);
  EXPECT_EQ(Encode(65001, u"\xDC00z"), replacement + "z");
  EXPECT_EQ(Encode(65001, u"\xD800\xD83D\xDE00"), replacement + "\xF0\x9F\x98\x80");
  EXPECT_EQ(Encode(1252, u"a\xD800z"), "a?z");
  EXPECT_EQ(Encode(932, u"a\xD800z"), "a?z");
  EXPECT_EQ(Encode(932, u"\xDC00"), "?");
  EXPECT_EQ(WideCharToMultiByte(65001, 0x80, u"\xD800", 1, nullptr, 0, nullptr, nullptr), 0);
}

TEST(CharacterSets, BytesThatAreNoCharacterAreReplaced) {
  EXPECT_EQ(Decode(65001, "a\xC3"), u"a\uFFFD");
  EXPECT_EQ(Decode(65001, "\xE2\x82z"), u"\uFFFDz");
  EXPECT_EQ(Decode(65001, "\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD");  // a surrogate is none
  EXPECT_EQ(Decode(65001, "\xC0\x80"), u"\uFFFD\uFFFD");            // nor an overlong form
  EXPECT_EQ(Decode(65001, "\xF4\x90\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(Decode(20127, "a\xE9"), u"a?");
  EXPECT_EQ(Decode(874, "\x81\x9F\xA1"), u"\u0081\u009F\u0E01");
  EXPECT_EQ(Decode(932, "a\x82"), u"a\u30FB");
  EXPECT_EQ(Decode(949, "\xFFz"), u"?z");
  EXPECT_EQ(MultiByteToWideChar(65001, 8, "\xC3", 1, nullptr, 0), 0);
  EXPECT_EQ(MultiByteToWideChar(932, 8, "\x82", 1, nullptr, 0), 0);
  EXPECT_EQ(MultiByteToWideChar(1252, 8, "\x81", 1, nullptr, 0), 1);
}

// ASCII is converted in runs: each length of run, before and behind another character, in every
// capacity.
TEST(CharacterSets, Utf8ConvertsRunsOfAsciiAsSingleCharacters) {
  static constexpr struct {
    const char16_t* text;
    const char* bytes;
  } kOthers[] = {
      {u"\x80", "\xC2\x80"}, {u"\u20AC", "\xE2\x82\xAC"}, {u"\xD83D\xDE00", "\xF0\x9F\x98\x80"}};
  for (const auto& other : kOthers) {
    for (size_t run = 0; run <= 35; ++run) {
      std::string bytes;
      std::u16string text;
      for (size_t i = 0; i < run; ++i) {
        bytes += static_cast<char>(127 - i);
        text += static_cast<char16_t>(127 - i);
      }
      const size_t behind = run + std::string(other.bytes).size();
      bytes += other.bytes + bytes;
      text += other.text + text;
      ASSERT_EQ(Encode(65001, text), bytes) << run;
      ASSERT_EQ(Decode(65001, bytes), text) << run;
      for (size_t capacity = 1; capacity < bytes.size(); ++capacity) {
        std::string written(bytes.size(), '#');
        ASSERT_EQ(WideCharToMultiByte(65001, 0, text.data(), static_cast<INT>(text.size()),
                                      written.data(), static_cast<INT>(capacity), nullptr, nullptr),
                  0);
        // A character that does not fit whole is not written, nor what follows it.
        const size_t kept = capacity > run && capacity < behind ? run : capacity;
        ASSERT_EQ(written, bytes.substr(0, kept) + std::string(bytes.size() - kept, '#'));
      }
    }
  }
}

TEST(CharacterSets, ConversionsKeepToLengthsAndCapacities) {
  char bytes[8] = "#######";
  EXPECT_EQ(WideCharToMultiByte(1252, 0, u"abc", -1, nullptr, 0, nullptr, nullptr), 4);
  EXPECT_EQ(WideCharToMultiByte(1252, 0, u"abc", -1, bytes, 8, nullptr, nullptr), 4);
  EXPECT_STREQ(bytes, "abc");
  EXPECT_EQ(WideCharToMultiByte(1252, 0, u"abc", 3, bytes, 2, nullptr, nullptr), 0);
  EXPECT_EQ(WideCharToMultiByte(1252, 0, u"abc", 0, bytes, 8, nullptr, nullptr), 0);
  EXPECT_EQ(WideCharToMultiByte(1252, 0, nullptr, 3, bytes, 8, nullptr, nullptr), 0);
  EXPECT_EQ(WideCharToMultiByte(1252, 0, u"abc", 3, nullptr, 8, nullptr, nullptr), 0);
  EXPECT_EQ(WideCharToMultiByte(1252, 0, u"abc", 3, bytes, -1, nullptr, nullptr), 0);
  EXPECT_EQ(WideCharToMultiByte(65001, 0, u"\u20AC", 1, bytes, 2, nullptr, nullptr), 0);
  EXPECT_EQ(WideCharToMultiByte(932, 0, u"\u3042", 1, bytes, 1, nullptr, nullptr), 0);
  WCHAR text[8] = u"#######";
  EXPECT_EQ(MultiByteToWideChar(1252, 0, "abc", -1, nullptr, 0), 4);
  EXPECT_EQ(MultiByteToWideChar(1252, 0, "abc", -1, text, 4), 4);
  EXPECT_EQ(std::u16string(text), u"abc");
  EXPECT_EQ(MultiByteToWideChar(1252, 0, "abc", 3, text, 2), 0);
  EXPECT_EQ(MultiByteToWideChar(65001, 0, "\xF0\x9F\x98\x80", 4, text, 1), 0);
  EXPECT_EQ(MultiByteToWideChar(1252, 0, "abc", 0, text, 8), 0);
  EXPECT_EQ(MultiByteToWideChar(1252, 0, nullptr, 3, text, 8), 0);
  EXPECT_EQ(Encode(1252, std::u16string(u"a\0b", 3)), std::string("a\0b", 3));
}

TEST(CharacterSets, ConvertersAreClosed) {
  const long opened = test::OpenedConverters(), closed = test::ClosedConverters();
  EXPECT_EQ(Decode(932, Encode(932, u"\u3042")), u"\u3042");
  EXPECT_EQ(Encode(932, u"\xD800"), "?");
  EXPECT_EQ(Decode(28602, "a"), u"");
  EXPECT_GT(test::OpenedConverters(), opened);
  EXPECT_EQ(test::ClosedConverters() - closed, test::OpenedConverters() - opened);
}

// Set 861 is used nowhere else here: the table of a set is made at its first use.
TEST(CharacterSets, WithoutAConverterNothingIsConverted) {
  const long closed = test::ClosedConverters();
  test::RefuseConverters(true);
  WCHAR text[8] = {};
  char bytes[8] = {};
  for (const UINT set : {932u, 861u}) {
    EXPECT_EQ(MultiByteToWideChar(set, 0, "\x83\x5C", 2, text, 8), 0) << set;
    EXPECT_EQ(WideCharToMultiByte(set, 0, u"\x3042", 1, bytes, 8, nullptr, nullptr), 0) << set;
  }
  test::RefuseConverters(false);
  EXPECT_EQ(test::ClosedConverters(), closed);
  EXPECT_EQ(Decode(932, "\x82\xA0"), u"\x3042");
  EXPECT_EQ(Decode(861, "\x95"), u"\u00FE");
}

TEST(CharacterSets, LongTextsCrossTheBlocks) {
  std::u16string text;
  for (unsigned i = 0; i < 5000; ++i) text += static_cast<char16_t>(0x3041 + i % 80);
  for (const UINT set : {932u, 65000u, 65001u, 54936u}) {
    EXPECT_EQ(Decode(set, Encode(set, text)), text) << set;
  }
}

// Set 0 in a process of its own that has the given locale.
bool LocaleSetIsUtf8(const char* name, const char* value) {
  return test::Succeeds(test::Fork([=] {
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) unsetenv(variable);
    if (value != nullptr) setenv(name, value, 1);
    return Encode(0, u"\u00FC") == "\xC3\xBC" && Decode(0, "\xC3\xBC") == u"\u00FC";
  }));
}

TEST(CharacterSets, SetZeroIsTheLocales) {
  EXPECT_TRUE(LocaleSetIsUtf8("LANG", nullptr));
  EXPECT_TRUE(LocaleSetIsUtf8("LC_ALL", "C"));
  EXPECT_TRUE(LocaleSetIsUtf8("LC_ALL", "POSIX"));
  EXPECT_TRUE(LocaleSetIsUtf8("LC_ALL", "C.UTF-8"));
  EXPECT_TRUE(LocaleSetIsUtf8("LC_ALL", "no_such_locale"));
}

// The C library's names of the sets of locales, each in a process of its own.
TEST(CharacterSets, SetZeroIsTheOneThatTheLocaleNames) {
  const struct {
    const char* name;
    const char* bytes;
    const WCHAR* text;
  } kCases[] = {
      {"GBK", "\xC4\xE3", u"\u4F60"},         {"GB2312", "\xC4\xE3", u"\u4F60"},
      {"BIG5", "\xA4\xA4", u"\u4E2D"},        {"SHIFT_JIS", "\x82\xA0", u"\u3042"},
      {"TIS-620", "\xA1", u"\u0E01"},         {"UHC", "\xB0\xA1", u"\uAC00"},
      {"UTF8", "\xC3\xBC", u"\u00FC"},        {"US-ASCII", "\xC3\xBC", u"\u00FC"},
      {"ascii", "\xC3\xBC", u"\u00FC"},       {"ANSI_X3.4-1968", "\xC3\xBC", u"\u00FC"},
      {"KOI8-R", "\xD6", u"\u0436"},          {"iso-8859-2", "\xB1", u"\u0105"},
      {"no-such-set", "\xC3\xBC", u"\u00FC"},
  };
  for (const auto& one : kCases) {
    EXPECT_TRUE(test::Succeeds(test::Fork([&] {
      test::SetLocaleCharset(one.name);
      return Decode(0, one.bytes) == one.text && Encode(0, one.text) == one.bytes;
    }))) << one.name;
  }
}

TEST(CharacterSets, ThreadsMayStartTogether) {
  test::AllAtOnce(8, [](unsigned) {
    for (const UINT set : {1251u, 866u, 932u, 21866u}) {
      EXPECT_EQ(Decode(set, Encode(set, u"\u041F\u0440")), u"\u041F\u0440") << set;
    }
  });
}

}  // namespace
}  // namespace mirolta
