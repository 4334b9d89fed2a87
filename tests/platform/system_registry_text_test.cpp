// The text of a registry file: written and read, the editor's form, malformed ones.
#include <ctime>
#include <functional>
#include <vector>

#include "portable/registry_mode.h"
#include "registry_support.h"

namespace mirolta {
namespace {

class RegistryText : public RegistryTest {};

TEST_F(RegistryText, EveryKindOfValueSurvivesTheFile) {
  const std::u16string texts[] = {u"",
                                  u"plain",
                                  u"C:\\path\\\"quoted\"",
                                  u"\u00FC \u65E5 \U0001F600",
                                  u"two\nlines",
                                  u"tab\there",
                                  u"bytes \xDCFF\xDC80",
                                  u"; no comment",
                                  u"dword:1",
                                  std::u16string(300, u'\u00E9') + u'\n'};
  const BYTE bytes[] = {0, 1, 2, 0xFF, 0x80, 0x0A};
  std::vector<BYTE> many(100, 0xAB);
  const DWORD number = 0xDEADBEEF;
  {
    const Key key(u"K");
    DWORD i = 0;
    for (const std::u16string& text : texts) {
      const std::u16string name = u"t\\\"" + Wide(std::to_string(i++));
      EXPECT_EQ(SetText(key, name.c_str(), text), ERROR_SUCCESS);
      EXPECT_EQ(SetText(key, (name + u"x").c_str(), text, REG_EXPAND_SZ), ERROR_SUCCESS);
    }
    EXPECT_EQ(SetText(key, u"@", u"at"), ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExW(key, u"b", 0, REG_BINARY, bytes, 6), ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExW(key, u"e", 0, REG_BINARY, nullptr, 0), ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExW(key, u"m", 0, REG_BINARY, many.data(), 100), ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExW(key, u"n", 0, REG_NONE, bytes, 2), ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExW(key, u"d", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), 4),
              ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExW(key, u"d3", 0, REG_DWORD, bytes, 3), ERROR_SUCCESS);
    EXPECT_EQ(SetText(key, u"multi", std::u16string(u"a\0b\0", 4), 7), ERROR_SUCCESS);
    EXPECT_EQ(SetText(key, u"nul", std::u16string(u"a\0b", 3)), ERROR_SUCCESS);
    EXPECT_EQ(SetText(key, nullptr, u"default"), ERROR_SUCCESS);
  }
  UseCopy();
  const Key key(u"K");
  DWORD i = 0;
  for (const std::u16string& text : texts) {
    const std::u16string name = u"t\\\"" + Wide(std::to_string(i++));
    EXPECT_EQ(GetText(key, name.c_str()), text) << i;
    EXPECT_EQ(GetText(key, (name + u"x").c_str()), text) << i;
  }
  const auto data = [&](const char16_t* name) {
    BYTE got[256];
    DWORD size = sizeof(got);
    DWORD type = 0;
    EXPECT_EQ(RegQueryValueExW(key, name, nullptr, &type, got, &size), ERROR_SUCCESS);
    return std::to_string(type) + ":" + std::string(got, got + size);
  };
  EXPECT_EQ(GetText(key, u"@"), u"at");
  EXPECT_EQ(data(u"b"), "3:" + std::string(bytes, bytes + 6));
  EXPECT_EQ(data(u"e"), "3:");
  EXPECT_EQ(data(u"m"), "3:" + std::string(100, '\xAB'));
  EXPECT_EQ(data(u"n"), "0:" + std::string(bytes, bytes + 2));
  EXPECT_EQ(data(u"d3"), "4:" + std::string(bytes, bytes + 3));
  EXPECT_EQ(data(u"multi").substr(0, 2), "7:");
  EXPECT_EQ(GetText(key, u"multi"), std::u16string(u"a\0b\0", 4));
  EXPECT_EQ(GetText(key, u"nul"), std::u16string(u"a\0b", 3));
  DWORD got = 0;
  DWORD size = 4;
  EXPECT_EQ(RegQueryValueExW(key, u"d", nullptr, nullptr, reinterpret_cast<BYTE*>(&got), &size),
            ERROR_SUCCESS);
  EXPECT_EQ(got, number);
  EXPECT_EQ(ValuesOf(key)[0], "");
  // Written again it is the same file.
  { const Key made(u"L"); }
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"L"), ERROR_SUCCESS);
  EXPECT_EQ(ReadFile(file_ + "2"), ReadFile(file_));
}

TEST_F(RegistryText, ReadsTheEditorsForm) {
  WriteFile(file_,
            "\xEF\xBB\xBFREGEDIT4\r\n; kept\r\n\r\n[HKEY_CLASSES_ROOT\\K]\r\n"
            "@=\"default\"\r\n; about the next\r\n\"a\\\\b\\\"\"=\"C:\\\\x\"\r\n"
            "\"n\" = dword:0000002A\r\n\"h\"=hex:01,02,\\\r\n  03\r\n"
            "\"x\"=hex(2):25,78,25,00\r\n[HKEY_OTHER\\Kept]\r\n\"v\"=hex(b):01,00");
  EXPECT_EQ(MiroltaRegistryBadLine(), 0u);
  {
    const Key key(u"K");
    EXPECT_EQ(GetText(key, nullptr), u"default");
    EXPECT_EQ(GetText(key, u"a\\b\""), u"C:\\x");
    EXPECT_EQ(GetText(key, u"x"), u"%x%");
    BYTE data[4];
    DWORD size = 4;
    EXPECT_EQ(RegQueryValueExW(key, u"h", nullptr, nullptr, data, &size), ERROR_SUCCESS);
    EXPECT_EQ(size, 3u);
    EXPECT_EQ(ValuesOf(key), (Names{"", "a\\b\"", "n", "h", "x"}));  // comments are no values
    SetText(key, u"new", u"y");
  }
  EXPECT_EQ(ReadFile(file_),
            "REGEDIT4\n; kept\n\n[HKEY_CLASSES_ROOT\\K]\n@=\"default\"\n; about the next\n"
            "\"a\\\\b\\\"\"=\"C:\\\\x\"\n\"n\"=dword:0000002a\n\"h\"=hex:01,02,03\n"
            "\"x\"=hex(2):25,78,25,00\n\"new\"=\"y\"\n\n[HKEY_OTHER\\Kept]\n\"v\"=hex(b):01,00\n");
}

// The time that loading, looking up, enumerating and changing take grows with the file, not with
// its square.
TEST_F(RegistryText, LargeFilesAreReadInLinearTime) {
  constexpr int kCount = 40000;
  const std::function<std::string(int)> lines[] = {
      [](int i) { return "[HKEY_CLASSES_ROOT\\K\\Key" + std::to_string(i) + "]\n@=\"text\"\n"; },
      [](int i) { return "\"Name" + std::to_string(i) + "\"=\"text\"\n"; },
      [](int) { return "; a line that is kept\n"; },
  };
  for (const auto& line : lines) {
    std::string text = "REGEDIT4\n[HKEY_CLASSES_ROOT\\K]\n";
    for (int i = 0; i < kCount; ++i) text += line(i);
    WriteFile(file_, text);
    const std::clock_t begin = std::clock();
    EXPECT_EQ(OpenStatus(u"K"), ERROR_SUCCESS);
    const Key key(u"K");
    EXPECT_EQ(SubkeysOf(key).size() + ValuesOf(key).size(), &line == &lines[2] ? 0u : kCount);
    EXPECT_EQ(SetText(key, u"Name39999", u"other"), ERROR_SUCCESS);
    EXPECT_EQ(GetText(key, u"name39999"), u"other");
    const double seconds = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    EXPECT_LT(seconds, 2) << line(0);
  }
}

TEST_F(RegistryText, MalformedFilesAreRefusedAndKept) {
  const struct {
    const char* text;
    DWORD line;
  } rows[] = {
      {"Windows Registry Editor Version 5.00\n", 1},
      {"\n", 1},
      {"REGEDIT4x\n", 1},
      {"REGEDIT4\n\"v\"=\"before any key\"\n", 2},
      {"REGEDIT4\n[HKEY_CLASSES_ROOT\\K\n", 2},
      {"REGEDIT4\n[-HKEY_CLASSES_ROOT\\K]\n", 2},
      {"REGEDIT4\n[]\n", 2},
      {"REGEDIT4\n[K]\njunk\n", 3},
      {"REGEDIT4\n[K]\n\"v\"=-\n", 3},
      {"REGEDIT4\n[K]\n\"v\"=\"open\n", 3},
      {"REGEDIT4\n[K]\n\"v\"=\"a\" junk\n", 3},
      {"REGEDIT4\n[K]\n\"v\"=\"a\\n\"\n", 3},
      {"REGEDIT4\n[K]\n\"v\"\n", 3},
      {"REGEDIT4\n[K]\n\"\"=\"empty name\"\n", 3},
      {"REGEDIT4\n[K]\n\"v\"=dword:\n", 3},
      {"REGEDIT4\n[K]\n\"v\"=dword:123456789\n", 3},
      {"REGEDIT4\n[K]\n\"v\"=hex:01,\n", 3},
      {"REGEDIT4\n[K]\n\"v\"=hex:0g\n", 3},
      {"REGEDIT4\n[K]\n\"v\"=hex:01,\\\n", 4},
      {"REGEDIT4\n[K]\n\"v\"=hex(:01\n", 3},
      {"REGEDIT4\n\n[K]\n@=\"a\"\n@=\"b\"\n", 5},
      {"REGEDIT4\n[K]\n\"v\"=\"a\"\n\"V\"=\"b\"\n", 4},
  };
  for (const auto& row : rows) {
    WriteFile(file_, row.text);
    EXPECT_EQ(OpenStatus(u"K"), ERROR_BADDB) << row.text;
    EXPECT_EQ(MiroltaRegistryBadLine(), row.line) << row.text;
    EXPECT_EQ(CreateStatus(u"K"), ERROR_BADDB);
    EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"K"), ERROR_BADDB);
    EXPECT_EQ(MiroltaRegistryBatch(TRUE), ERROR_BADDB);
    EXPECT_EQ(ReadFile(file_), row.text);
  }
  WriteFile(file_, "");  // an empty file is an empty registry
  EXPECT_EQ(OpenStatus(u"K"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(MiroltaRegistryBadLine(), 0u);
}

}  // namespace
}  // namespace mirolta
