#include "source/script_source.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "files/full_path.h"
#include "locale_charset.h"
#include "open_converters.h"
#include "source/charset_decoder.h"
#include "source/script_kind.h"

namespace mirolta::host {
namespace {

using std::string;
using std::string_view;
using namespace std::string_literals;
using namespace std::string_view_literals;

// The text of a script, or the problem after "!".
string Load(string_view bytes, const string& charset = "") {
  ScriptText script;
  string problem;
  if (!ScriptFromBytes("x.js", bytes, {charset}, &script, &problem)) return "!" + problem;
  EXPECT_EQ(script.name, "x.js");
  EXPECT_EQ(script.full_path, "");
  return script.text;
}

string Utf16(string_view ascii, bool is_big) {
  string bytes;
  for (char c : ascii) {
    if (is_big) bytes.push_back('\0');
    bytes.push_back(c);
    if (!is_big) bytes.push_back('\0');
  }
  return bytes;
}

// Sets the locale of the environment in its scope.
class LocaleSetting {
 public:
  explicit LocaleSetting(const char* name) { setenv("LC_ALL", name, 1); }
  LocaleSetting(const LocaleSetting&) = delete;
  LocaleSetting& operator=(const LocaleSetting&) = delete;
  ~LocaleSetting() { unsetenv("LC_ALL"); }
};

struct EncodedCase {
  const char* name;
  string bytes;
  string charset;
  string text;
};

TEST(ScriptSource, EncodingsAreDetectedOrChosen) {
  const string text = "x = '\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80'";  // é, euro, a face
  const string little = "x\0 \0=\0 \0'\0\xE9\0\xAC\x20\x3D\xD8\x00\xDE'\0"s;
  const string big = "\0x\0 \0=\0 \0'\0\xE9\x20\xAC\xD8\x3D\xDE\x00\0'"s;
  const string utf32 = "x\0\0\0'\0\0\0\xE9\0\0\0\0\xF6\x01\0'\0\0\0"s;
  const EncodedCase kCases[] = {
      {"empty", "", "", ""},
      {"ASCII", "x = 1", "", "x = 1"},
      {"UTF-8", text, "", text},
      {"UTF-8 with mark", "\xEF\xBB\xBF" + text, "", text},
      {"UTF-16LE", little, "", text},
      {"UTF-16LE with mark", "\xFF\xFE" + little, "", text},
      {"UTF-16BE", big, "", text},
      {"UTF-16BE with mark", "\xFE\xFF" + big, "", text},
      {"UTF-32LE with mark", "\xFF\xFE\0\0"s + utf32, "", "x'\xC3\xA9\xF0\x9F\x98\x80'"},
      {"only the mark of UTF-8", "\xEF\xBB\xBF", "", ""},
      {"only the mark of UTF-16LE", "\xFF\xFE", "", ""},
      {"only the mark of UTF-16BE", "\xFE\xFF", "", ""},
      {"two marks", "\xEF\xBB\xBF\xEF\xBB\xBFx", "", "\xEF\xBB\xBFx"},
      {"windows-1252", "x = '\xE9\x80'", "", "x = '\xC3\xA9\xE2\x82\xAC'"},
      {"chosen UTF-8", text, "utf-8", text},
      {"chosen UTF8", text, "utf8", text},
      {"chosen UTF-16LE", little, "UTF-16LE", text},
      {"chosen UTF-16BE", big, "utf-16be", text},
      {"chosen UTF-16, detected", big, "UTF-16", text},
      {"chosen UTF-16, little", "\x22\x21"s, "UTF-16", "\xE2\x84\xA2"},
      {"chosen 1200", little, "1200", text},
      {"chosen 1201", big, "1201", text},
      {"chosen 65001", text, "65001", text},
      {"chosen 12000", utf32, "12000", "x'\xC3\xA9\xF0\x9F\x98\x80'"},
      {"chosen 1252", "'\xE9\x80'", "1252", "'\xC3\xA9\xE2\x82\xAC'"},
      {"chosen windows-1252", "'\xE9\x80'", "windows-1252", "'\xC3\xA9\xE2\x82\xAC'"},
      {"chosen cp1252, though it is UTF-8", "'\xC3\xA9'", "cp1252", "'\xC3\x83\xC2\xA9'"},
      {"chosen 1251", "'\xC6'", "1251", "'\xD0\x96'"},
      {"chosen 437", "'\x82'", "437", "'\xC3\xA9'"},
      {"chosen 850", "'\x82'", "850", "'\xC3\xA9'"},
      {"chosen 932", "'\x83\x5C'", "932", "'\xE3\x82\xBD'"},
      {"chosen Shift_JIS keeps the backslash", "'\\n'", "Shift_JIS", "'\\n'"},
      {"chosen 28591", "'\xE9'", "28591", "'\xC3\xA9'"},
      {"chosen 28605", "'\xA4'", "28605", "'\xE2\x82\xAC'"},
      {"chosen ISO-8859-15", "'\xA4'", "ISO-8859-15", "'\xE2\x82\xAC'"},
      {"chosen 20866", "'\xC1'", "20866", "'\xD0\xB0'"},
      {"chosen 54936", "'\xB0\xA1'", "54936", "'\xE5\x95\x8A'"},
      {"a mark tells more than the choice", "\xEF\xBB\xBF'\xC3\xA9'", "1252", "'\xC3\xA9'"},
      {"a mark of UTF-16 tells more than the choice", "\xFF\xFEx\0"s, "UTF-16BE", "x"},
      {"white space of ES5", "\f\v\xC2\xA0\xEF\xBB\xBF\xE2\x80\xA8\xE2\x80\xA9;", "",
       "\f\v\xC2\xA0\xEF\xBB\xBF\xE2\x80\xA8\xE2\x80\xA9;"},
  };
  for (const char* locale : {"C.UTF-8", "C"}) {
    const LocaleSetting setting(locale);
    for (const EncodedCase& one : kCases) {
      EXPECT_EQ(Load(one.bytes, one.charset), one.text) << one.name;
    }
  }
}

TEST(ScriptSource, BytesWithoutAMarkHaveTheLocalesCharsetUnlessTheyAreUtf8) {
  const struct {
    const char* locale;
    const char* bytes;
    const char* text;
  } kCases[] = {
      {"KOI8-R", "\xF6", "\xD0\x96"},     {"KOI8-R", "\xD0\x96", "\xD0\x96"},
      {"ISO-8859-2", "\xB1", "\xC4\x85"}, {"UTF-8", "\xF6", "\xC3\xB6"},
      {"utf8", "\x80", "\xE2\x82\xAC"},   {"ANSI_X3.4-1968", "\x80", "\xE2\x82\xAC"},
      {"US-ASCII", "\xF6", "\xC3\xB6"},   {"ascii", "\xF6", "\xC3\xB6"},
      {"", "\xF6", "\xC3\xB6"},
  };
  for (const auto& one : kCases) {
    test::SetLocaleCharset(one.locale);
    EXPECT_EQ(Load(one.bytes), one.text) << one.locale;
  }
  test::SetLocaleCharset("UTF-8");
}

TEST(ScriptSource, EveryByteOfWindows1252IsDecodedOrRefused) {
  const LocaleSetting setting("C.UTF-8");
  for (int byte = 0x80; byte < 0x100; ++byte) {
    const string loaded = Load("'"s + static_cast<char>(byte) + "'");
    const bool is_undefined =
        byte == 0x81 || byte == 0x8D || byte == 0x8F || byte == 0x90 || byte == 0x9D;
    EXPECT_EQ(loaded[0] == '!', is_undefined) << byte;
    if (is_undefined) continue;
    EXPECT_EQ(loaded, Load("'"s + static_cast<char>(byte) + "'", "1252"));
    if (byte >= 0xA0) {
      const string utf8 = {static_cast<char>(0xC0 | byte >> 6),
                           static_cast<char>(0x80 | (byte & 0x3F))};
      EXPECT_EQ(loaded, "'" + utf8 + "'");
    }
  }
}

constexpr char kHint[] = "; --charset NAME chooses the character set, for example windows-1252";
constexpr char kChosen[] = ", the character set chosen";
constexpr char kNul[] = "? --charset NAME chooses it";

TEST(ScriptSource, BytesThatAreNotValidAreAnErrorWithTheirOffset) {
  const LocaleSetting setting("C.UTF-8");
  const string nul = "!x.js(1): the NUL character at offset ";
  const string not_part = " cannot be part of a script; is the character set not ";
  const EncodedCase kCases[] = {
      {"damaged UTF-8", "'\xC3\xA9'\n\n'\xE9'", "",
       "!x.js(3): the byte 0xE9 at offset 7 is not valid UTF-8"s + kHint},
      {"0xFF in UTF-8", "'\xC3\xA9\xFF'", "",
       "!x.js(1): the byte 0xFF at offset 3 is not valid UTF-8"s + kHint},
      {"UTF-8 cut at the end", "'\xC3\xA9'\n'\xE2\x82", "",
       "!x.js(2): the byte 0xE2 at offset 6 is not valid UTF-8"s + kHint},
      {"an overlong form", "'\xC3\xA9\xC0\x80'", "",
       "!x.js(1): the byte 0xC0 at offset 3 is not valid UTF-8"s + kHint},
      {"not the UTF-8 that its mark tells", "\xEF\xBB\xBF'\n'\xE9'", "",
       "!x.js(2): the byte 0xE9 at offset 6 is not valid UTF-8"s + kHint},
      {"not the UTF-8 chosen", "'\xE9'", "utf-8",
       "!x.js(1): the byte 0xE9 at offset 1 is not valid utf-8"s + kChosen},
      {"an encoded surrogate", "'\xED\xA0\x80'", "utf-8",
       "!x.js(1): the byte 0xED at offset 1 is not valid utf-8"s + kChosen},
      {"not in windows-1252", "'\x81'", "",
       "!x.js(1): the byte 0x81 at offset 1 is not valid windows-1252"s + kHint},
      {"not in ASCII", "x;\r\n\r\n'\xE9'", "20127",
       "!x.js(3): the byte 0xE9 at offset 7 is not valid 20127"s + kChosen},
      {"UTF-16 cut in a unit", "x\0\n\0y"s, "",
       "!x.js(2): the character at offset 4 is incomplete: the text is not valid UTF-16LE"s +
           kHint},
      {"UTF-16 cut in a pair", "\xFF\xFEx\0\x3D\xD8"s, "",
       "!x.js(1): the character at offset 4 is incomplete: the text is not valid UTF-16LE"s +
           kHint},
      {"a lone high surrogate", "\xFE\xFF\0x\0\n\xD8\x00\0x"s, "",
       "!x.js(2): the byte 0xD8 at offset 6 is not valid UTF-16BE"s + kHint},
      {"a lone low surrogate", "\0x\xDC\x00"s, "",
       "!x.js(1): the byte 0xDC at offset 2 is not valid UTF-16BE"s + kHint},
      {"932 cut in a character", "'\x83", "932",
       "!x.js(1): the character at offset 1 is incomplete: the text is not valid 932"s + kChosen},
      {"NUL", "x = 1\0"s, "", nul + "5" + not_part + "UTF-8" + kNul},
      {"NUL after a mark", "\xEF\xBB\xBFx\0"s, "", nul + "4" + not_part + "UTF-8" + kNul},
      {"NUL at once", "\0"s, "", nul + "0" + not_part + "UTF-8" + kNul},
      {"NUL in UTF-16", "x\0\xE9\0\0\0x\0"s, "", nul + "4" + not_part + "UTF-16LE" + kNul},
      {"NUL after other characters", "'\xE9\xE9'\0x"s, "1252",
       nul + "4" + not_part + "1252" + kNul},
      {"unknown name", "x", "no-such-set",
       "!unknown character set no-such-set; the names are those of iconv --list, and numbers of "
       "code pages such as 1252"},
      {"unknown number", "x", "99999",
       "!unknown character set 99999; the names are those of iconv --list, and numbers of code "
       "pages such as 1252"},
      {"options of iconv", "x", "ASCII//IGNORE",
       "!unknown character set ASCII//IGNORE; the names are those of iconv --list, and numbers of "
       "code pages such as 1252"},
  };
  for (const EncodedCase& one : kCases) {
    EXPECT_EQ(Load(one.bytes, one.charset), one.text) << one.name;
  }
}

TEST(ScriptSource, WholeAsciiTextsInUtf16AreDetected) {
  for (const char* text : {"x", "// c\r\nx()", "\n\n\tx"}) {
    for (bool is_big : {false, true}) EXPECT_EQ(Load(Utf16(text, is_big)), text);
  }
}

TEST(ScriptSource, RandomBytesAreTextOrAnError) {
  const char* kCharsets[] = {"", "UTF-8", "UTF-16", "1252", "932", "UTF-7", "ISO-2022-JP", "12000"};
  const string_view kPieces[] = {"\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF", "\0"sv, "\xD8\x00"sv,
                                 "\xE2\x80\xA8", "\x1B$B",   "\r\n",     "x",    "\xC3"};
  std::minstd_rand random(1);
  size_t text_count = 0;
  for (int i = 0; i < 20000; ++i) {
    string bytes;
    for (auto left = random() % 6; left > 0; --left) {
      const auto choice = random() % (std::size(kPieces) + 4);
      if (choice < std::size(kPieces)) {
        bytes += kPieces[choice];
      } else {
        bytes += static_cast<char>(random() >> 8 & 0xFF);
      }
    }
    ScriptText script;
    string problem, again;
    size_t offset = 0;
    const char* charset = kCharsets[random() % std::size(kCharsets)];
    if (!ScriptFromBytes("x.js", bytes, {charset}, &script, &problem)) {
      EXPECT_NE(problem, "");
      continue;
    }
    ++text_count;
    EXPECT_EQ(DecodeText("UTF-8", script.text, &again, &offset), Decoding::kDone) << charset;
    EXPECT_EQ(script.text.find('\0'), string::npos) << charset;
  }
  EXPECT_GT(text_count, 1000u);
  EXPECT_LT(text_count, 19000u);
}

TEST(ScriptSource, AnInterpreterLineBecomesAComment) {
  EXPECT_EQ(Load("#!/usr/bin/env mirolta-host\nx"), "///usr/bin/env mirolta-host\nx");
  EXPECT_EQ(Load("\xEF\xBB\xBF#!a\nx"), "//a\nx");
  EXPECT_EQ(Load("#!a\rx"), "//a\rx");
  EXPECT_EQ(Load(" #!a"), " #!a");
}

TEST(ScriptSource, TheOriginalIsKeptIfTheTextIsRewritten) {
  ScriptText script;
  string problem;
  ASSERT_TRUE(ScriptFromBytes("-e", "o.T(1) = 2", {}, &script, &problem));
  EXPECT_EQ(script.Original(), "o.T(1) = 2");
  EXPECT_EQ(script.text, "o[\"T()=\"](1).value = 2");
  ASSERT_TRUE(ScriptFromBytes("-e", "o.T(1)", {}, &script, &problem));
  EXPECT_EQ(script.Original(), "o.T(1)");
  EXPECT_EQ(script.original, "");
}

class ScriptFiles : public testing::Test {
 protected:
  void SetUp() override {
    string path = testing::TempDir() + "/script-source-XXXXXX";
    ASSERT_NE(mkdtemp(path.data()), nullptr);
    folder_ = FullPath(path);
  }
  void TearDown() override {
    for (const string& path : files_) unlink(path.c_str());
    rmdir(folder_.c_str());
  }
  string Make(const string& name, string_view bytes) {
    const string path = folder_ + "/" + name;
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    EXPECT_EQ(write(file, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    close(file);
    files_.push_back(path);
    return path;
  }
  // The problem of loading, "" if there is none.
  static string ProblemOf(const string& path) {
    ScriptText script;
    string problem;
    return LoadScript(path, {}, &script, &problem) ? "" : problem;
  }

  string folder_;
  std::vector<string> files_;
};

TEST_F(ScriptFiles, AFileHasANameAndAnAbsolutePath) {
  const string path = Make("a.js", "x");
  ScriptText script;
  string problem;
  ASSERT_TRUE(LoadScript(folder_ + "/./a.js", {}, &script, &problem)) << problem;
  EXPECT_EQ(script.name, folder_ + "/./a.js");
  EXPECT_EQ(script.full_path, path);
  EXPECT_EQ(script.text, "x");
}

TEST_F(ScriptFiles, OtherLanguagesAreRefused) {
  const string end = "; mirolta-host runs JScript (ECMAScript 5) in .js files";
  const struct {
    const char* name;
    const char* what;
  } kCases[] = {
      {"a.vbs", "a VBScript script"},
      {"a.VBS", "a VBScript script"},
      {"a.js.Vbe", "an encoded VBScript script"},
      {"a.jse", "an encoded script"},
      {"a.wsf", "a script in XML, which may mix languages"},
      {"a.wsc", "a script component in XML"},
      {"a.wsh", "a file of script settings"},
      {"a.hta", "an HTML application"},
      {"a.mjs", "an ECMAScript module"},
      {"a.ts", "a TypeScript source file"},
      {"a.py", "a Python script"},
      {"a.pl", "a Perl script"},
      {"a.sh", "a shell script"},
      {"a.ps1", "a PowerShell script"},
      {"a.bat", "a batch file"},
      {"a.cmd", "a batch file"},
  };
  for (const auto& one : kCases) {
    const string path = Make(one.name, "x");
    EXPECT_EQ(ProblemOf(path), "cannot run " + path + ": this is " + one.what + end);
  }
  const string encoded = Make("encoded.js", "#@~^CwAAAA==");
  EXPECT_EQ(ProblemOf(encoded), "cannot run " + encoded + ": this is an encoded script" + end);
}

TEST_F(ScriptFiles, OtherNamesAreScripts) {
  for (const char* name :
       {"a.js", "a.JS", "a", "a.vbs.js", ".vbs", "vbs", "a.es5", "a.b.", "a vbs"}) {
    EXPECT_EQ(ProblemOf(Make(name, "x")), "") << name;
  }
  EXPECT_EQ(RefusalOf("folder.vbs/script", "x"), "");
}

TEST_F(ScriptFiles, AMissingFileIsMissingWhateverItsName) {
  EXPECT_EQ(ProblemOf("/no/such.vbs"),
            "cannot read the script /no/such.vbs: No such file or directory");
}

TEST_F(ScriptFiles, AScriptOfMoreThan256MegabytesIsRefused) {
  const string path = Make("large.js", "");
  ASSERT_EQ(truncate(path.c_str(), (off_t{256} << 20) + 1), 0);
  EXPECT_EQ(ProblemOf(path), "cannot read the script " + path + ": File too large");
}

TEST(CharsetDecoder, AFailureKeepsTheTextBefore) {
  string text = "before: ";
  size_t offset = 0;
  EXPECT_EQ(DecodeText("UTF-8", "ab\xFF", &text, &offset), Decoding::kMalformed);
  EXPECT_EQ(text, "before: ab");
  EXPECT_EQ(offset, 2u);
}

TEST(CharsetDecoder, LongTextsAreDecodedInBlocks) {
  string bytes, expected;
  for (int i = 0; i < 20000; ++i) {
    bytes += "\xE9\x80";
    expected += "\xC3\xA9\xE2\x82\xAC";
  }
  string text;
  size_t offset = 0;
  EXPECT_EQ(DecodeText("1252", bytes + "\x81", &text, &offset), Decoding::kMalformed);
  EXPECT_EQ(text, expected);
  EXPECT_EQ(offset, bytes.size());
}

TEST(CharsetDecoder, ClosesItsConverters) {
  const long opened = test::OpenedConverters(), closed = test::ClosedConverters();
  string text;
  size_t offset = 0;
  EXPECT_EQ(DecodeText("KOI8-R", "\xF6", &text, &offset), Decoding::kDone);
  EXPECT_EQ(DecodeText("KOI8-R", "\xF6\xF7", &text, &offset), Decoding::kDone);
  EXPECT_EQ(DecodeText("no set", "\xF6", &text, &offset), Decoding::kUnknownSet);
  EXPECT_EQ(test::OpenedConverters() - opened, 2);
  EXPECT_EQ(test::ClosedConverters() - closed, 2);
}

TEST(CharsetDecoder, TheOffsetOfTextIsTheNumberOfItsBytes) {
  EXPECT_EQ(OffsetOfText("1252", "a\xE9\x80z", 0), 0u);
  EXPECT_EQ(OffsetOfText("1252", "a\xE9\x80z", 3), 2u);
  EXPECT_EQ(OffsetOfText("1252", "a\xE9\x80z", 6), 3u);
  EXPECT_EQ(OffsetOfText("932", "\x83\x5C\x83\x5C", 3), 2u);
}

}  // namespace
}  // namespace mirolta::host
