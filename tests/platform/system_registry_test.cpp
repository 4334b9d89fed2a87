#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstring>
#include <ctime>
#include <functional>
#include <thread>
#include <vector>

#include "portable/registry_mode.h"
#include "portable/test_hooks.h"
#include "registry_support.h"

namespace mirolta {
namespace {


class Registry : public RegistryTest {};

TEST_F(Registry, KeysAreCreatedAndOpened) {
  HKEY key = nullptr;
  DWORD disposition = 0;
  EXPECT_EQ(OpenStatus(u"A\\B"), ERROR_FILE_NOT_FOUND);
  ASSERT_EQ(RegCreateKeyExW(HKEY_CLASSES_ROOT, u"A\\B", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                            &key, &disposition),
            ERROR_SUCCESS);
  EXPECT_EQ(disposition, REG_CREATED_NEW_KEY);
  EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
  EXPECT_EQ(RegCloseKey(key), ERROR_INVALID_HANDLE);
  ASSERT_EQ(RegCreateKeyExW(HKEY_CLASSES_ROOT, u"a\\b\\", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                            &key, &disposition),
            ERROR_SUCCESS);
  EXPECT_EQ(disposition, REG_OPENED_EXISTING_KEY);
  RegCloseKey(key);
  EXPECT_EQ(OpenStatus(u"A"), ERROR_SUCCESS);
  EXPECT_EQ(OpenStatus(u"a\\B"), ERROR_SUCCESS);
  EXPECT_EQ(OpenStatus(u""), ERROR_SUCCESS);
  EXPECT_EQ(OpenStatus(u"A\\B", HKEY_CURRENT_USER), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(RegOpenKeyExW(HKEY_CLASSES_ROOT, u"A", 0, KEY_READ, nullptr), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(RegOpenKeyExW(nullptr, u"A", 0, KEY_READ, &key), ERROR_INVALID_HANDLE);
  EXPECT_EQ(RegCloseKey(HKEY_CLASSES_ROOT), ERROR_SUCCESS);
  EXPECT_EQ(ReadFile(file_), "REGEDIT4\n\n[HKEY_CLASSES_ROOT\\A]\n\n[HKEY_CLASSES_ROOT\\A\\B]\n");
}

TEST_F(Registry, NamesHaveLimits) {
  HKEY key = nullptr;
  const auto create = [&](const std::u16string& path) {
    const LONG error = RegCreateKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, nullptr, 0,
                                       KEY_ALL_ACCESS, nullptr, &key, nullptr);
    if (error == ERROR_SUCCESS) RegCloseKey(key);
    return error;
  };
  EXPECT_EQ(create(std::u16string(255, u'x')), ERROR_SUCCESS);
  EXPECT_EQ(create(std::u16string(256, u'x')), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(create(u"made\\a\nb"), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(OpenStatus(u"made"), ERROR_FILE_NOT_FOUND);  // nothing on the way stays
  EXPECT_EQ(create(u"a\xD800"), ERROR_INVALID_PARAMETER);
  std::u16string deep;
  for (int i = 0; i < 511; ++i) deep += u"k\\";
  EXPECT_EQ(create(deep), ERROR_SUCCESS);
  EXPECT_EQ(create(deep + u"k"), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(create(u"a]b [c] ; \"d\" = \u00FC"), ERROR_SUCCESS);
  std::filesystem::copy_file(file_, file_ + "2");
  setenv("MIROLTA_REGISTRY", (file_ + "2").c_str(), 1);
  EXPECT_EQ(OpenStatus(u"A]B [c] ; \"d\" = \u00DC"), ERROR_SUCCESS);
}

TEST_F(Registry, KeysWithSubkeysAreNotDeleted) {
  { const Key key(u"A\\B"); }
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"A"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"A\\C"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u""), ERROR_ACCESS_DENIED);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, nullptr), ERROR_INVALID_PARAMETER);
  {
    const Key key(u"A");
    EXPECT_EQ(RegDeleteKeyW(key, u"B"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyW(key, u""), ERROR_SUCCESS);
    EXPECT_EQ(GetText(key, nullptr), u"<1018>");
    EXPECT_EQ(SetText(key, nullptr, u"x"), ERROR_KEY_DELETED);
  }
  EXPECT_EQ(OpenStatus(u"A"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(ReadFile(file_), "REGEDIT4\n");
}

TEST_F(Registry, ValuesAreSetReadAndDeleted) {
  const Key key(u"K");
  EXPECT_EQ(GetText(key, nullptr), u"<2>");
  EXPECT_EQ(SetText(key, u"Name", u"text"), ERROR_SUCCESS);
  EXPECT_EQ(SetText(key, nullptr, u"default"), ERROR_SUCCESS);
  EXPECT_EQ(GetText(key, u"NAME"), u"text");
  EXPECT_EQ(GetText(key, u""), u"default");
  EXPECT_EQ(SetText(key, u"name", u"other"), ERROR_SUCCESS);
  EXPECT_EQ(GetText(key, u"Name"), u"other");
  EXPECT_EQ(RegDeleteValueW(key, u"nAmE"), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteValueW(key, u"Name"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(GetText(key, u"Name"), u"<2>");
  EXPECT_EQ(RegDeleteValueW(key, nullptr), ERROR_SUCCESS);
  EXPECT_EQ(GetText(key, nullptr), u"<2>");
}

TEST_F(Registry, QueriesTellSizes) {
  const Key key(u"K");
  SetText(key, u"v", u"abc");
  DWORD size = 0;
  DWORD type = 99;
  EXPECT_EQ(RegQueryValueExW(key, u"v", nullptr, &type, nullptr, &size), ERROR_SUCCESS);
  EXPECT_EQ(size, 8u);
  EXPECT_EQ(type, REG_SZ);
  BYTE data[8] = {0x55};
  size = 7;
  EXPECT_EQ(RegQueryValueExW(key, u"v", nullptr, &type, data, &size), ERROR_MORE_DATA);
  EXPECT_EQ(size, 8u);
  EXPECT_EQ(data[0], 0x55);
  EXPECT_EQ(RegQueryValueExW(key, u"v", nullptr, nullptr, data, &size), ERROR_SUCCESS);
  EXPECT_EQ(std::memcmp(data, u"abc", 8), 0);
  EXPECT_EQ(RegQueryValueExW(key, u"v", nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
  EXPECT_EQ(RegQueryValueExW(key, u"v", nullptr, nullptr, data, nullptr), ERROR_INVALID_PARAMETER);
}

TEST_F(Registry, EnumerationKeepsTheOrder) {
  const Key key(u"K");
  for (const char16_t* name : {u"c", u"a", u"b"}) {
    const Key below(name, key);
    SetText(key, name, u"x");
  }
  SetText(key, nullptr, u"description");  // last, but it comes first
  EXPECT_EQ(SubkeysOf(key), (Names{"c", "a", "b"}));
  EXPECT_EQ(ValuesOf(key), (Names{"", "c", "a", "b"}));
  SetText(key, u"a", u"again");
  RegDeleteKeyW(key, u"a");
  EXPECT_EQ(ValuesOf(key), (Names{"", "c", "a", "b"}));
  EXPECT_EQ(SubkeysOf(key), (Names{"c", "b"}));

  WCHAR name[4];
  DWORD length = 1;
  EXPECT_EQ(RegEnumKeyExW(key, 0, name, &length, nullptr, nullptr, nullptr, nullptr),
            ERROR_MORE_DATA);
  length = 4;
  EXPECT_EQ(RegEnumKeyExW(key, 2, name, &length, nullptr, nullptr, nullptr, nullptr),
            ERROR_NO_MORE_ITEMS);
  WCHAR text[16];
  DWORD size = sizeof(text);
  DWORD type = 0;
  EXPECT_EQ(
      RegEnumValueW(key, 0, name, &length, nullptr, &type, reinterpret_cast<BYTE*>(text), &size),
      ERROR_SUCCESS);
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(std::u16string(text), u"description");
  length = 4;
  size = 4;
  EXPECT_EQ(
      RegEnumValueW(key, 0, name, &length, nullptr, &type, reinterpret_cast<BYTE*>(text), &size),
      ERROR_MORE_DATA);
  EXPECT_EQ(size, 24u);
  EXPECT_EQ(length, 4u);
  EXPECT_EQ(RegEnumValueW(key, 4, name, &length, nullptr, nullptr, nullptr, nullptr),
            ERROR_NO_MORE_ITEMS);
}

TEST_F(Registry, HandlesAllowWhatTheyWereOpenedFor) {
  { const Key key(u"K"); }
  HKEY reader = nullptr;
  ASSERT_EQ(RegOpenKeyExW(HKEY_CLASSES_ROOT, u"K", 0, KEY_READ, &reader), ERROR_SUCCESS);
  EXPECT_EQ(SetText(reader, u"v", u"x"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(RegDeleteValueW(reader, u"v"), ERROR_ACCESS_DENIED);
  HKEY below = nullptr;
  EXPECT_EQ(RegCreateKeyExW(reader, u"new", 0, nullptr, 0, KEY_READ, nullptr, &below, nullptr),
            ERROR_ACCESS_DENIED);
  EXPECT_EQ(below, nullptr);
  RegCloseKey(reader);
  const Key writer(u"K", HKEY_CLASSES_ROOT, KEY_WRITE);
  EXPECT_EQ(SetText(writer, u"v", u"x"), ERROR_SUCCESS);
  EXPECT_EQ(GetText(writer, u"v"), u"<5>");
}

TEST_F(Registry, EveryKindOfValueSurvivesTheFile) {
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
  // A second name makes the process read the file again.
  std::filesystem::copy_file(file_, file_ + "2");
  setenv("MIROLTA_REGISTRY", (file_ + "2").c_str(), 1);
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

TEST_F(Registry, TextIsCompletedAndChecked) {
  const Key key(u"K");
  EXPECT_EQ(RegSetValueExW(key, u"v", 0, REG_SZ, reinterpret_cast<const BYTE*>(u"ab"), 4),
            ERROR_SUCCESS);
  EXPECT_EQ(GetText(key, u"v"), u"ab");
  EXPECT_EQ(SetText(key, u"v", u"\xD800"), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(SetText(key, u"a\nb", u"x"), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(RegSetValueExW(key, u"v", 0, REG_SZ, nullptr, 4), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(GetText(key, u"v"), u"ab");
}

TEST_F(Registry, ReadsTheEditorsForm) {
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
TEST_F(Registry, LargeFilesAreReadInLinearTime) {
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

TEST_F(Registry, ManyNamesAreFoundAndGo) {
  const Key key(u"K");
  EXPECT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  for (int i = 0; i < 100; ++i) {
    const std::u16string name = u"Name\u00C4" + Wide(std::to_string(i));
    const Key below(name, key);
    EXPECT_EQ(SetText(key, name.c_str(), Wide(std::to_string(i))), ERROR_SUCCESS);
  }
  for (int i = 0; i < 100; i += 3) {
    const std::u16string name = u"nAME\u00E4" + Wide(std::to_string(i));
    EXPECT_EQ(RegDeleteKeyW(key, name.c_str()), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValueW(key, name.c_str()), ERROR_SUCCESS);
  }
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  Names left;
  for (int i = 0; i < 100; ++i) {
    const std::u16string name = u"NAME\u00E4" + Wide(std::to_string(i));
    const bool gone = i % 3 == 0;
    EXPECT_EQ(OpenStatus(u"k\\" + name), gone ? ERROR_FILE_NOT_FOUND : ERROR_SUCCESS) << i;
    EXPECT_EQ(GetText(key, name.c_str()), gone ? u"<2>" : Wide(std::to_string(i))) << i;
    if (!gone) left.push_back(Narrow(u"Name\u00C4" + Wide(std::to_string(i))));
  }
  EXPECT_EQ(SubkeysOf(key), left);
  EXPECT_EQ(ValuesOf(key), left);
}

TEST_F(Registry, MalformedFilesAreRefusedAndKept) {
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
    HKEY key = nullptr;
    EXPECT_EQ(
        RegCreateKeyExW(HKEY_CLASSES_ROOT, u"K", 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr),
        ERROR_BADDB);
    EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"K"), ERROR_BADDB);
    EXPECT_EQ(MiroltaRegistryBatch(TRUE), ERROR_BADDB);
    EXPECT_EQ(ReadFile(file_), row.text);
  }
  WriteFile(file_, "");  // an empty file is an empty registry
  EXPECT_EQ(OpenStatus(u"K"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(MiroltaRegistryBadLine(), 0u);
}

TEST_F(Registry, AHandleSurvivesAFileThatIsRepaired) {
  const Key key(u"K");
  SetText(key, u"v", u"x");
  const std::string good = ReadFile(file_);
  WriteFile(file_, "damaged");
  EXPECT_EQ(GetText(key, u"v"), u"<1009>");
  WriteFile(file_, good);
  EXPECT_EQ(GetText(key, u"v"), u"x");
}

TEST_F(Registry, OtherProcessesChangesAreSeen) {
  const Key key(u"K");
  SetText(key, u"v", u"one");
  const pid_t child = fork();
  if (child == 0) {
    const Key same(u"K");
    const bool set = SetText(same, u"v", u"two") == ERROR_SUCCESS;
    _exit(set && GetText(same, u"v") == u"two" ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(GetText(key, u"v"), u"two");
  std::filesystem::remove(file_);
  EXPECT_EQ(GetText(key, u"v"), u"<1018>");
}

TEST_F(Registry, ProcessesWritingAtOnceLoseNothing) {
  constexpr int kProcesses = 4;
  constexpr int kEach = 25;
  std::vector<pid_t> children;
  for (int p = 0; p < kProcesses; ++p) {
    const pid_t child = fork();
    if (child == 0) {
      bool good = true;
      for (int i = 0; i < kEach; ++i) {
        const std::u16string path = Wide("P" + std::to_string(p) + "\\K" + std::to_string(i));
        const Key key(path);
        good = SetText(key, nullptr, path) == ERROR_SUCCESS && good;
      }
      _exit(good ? 0 : 1);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }
  for (int p = 0; p < kProcesses; ++p) {
    for (int i = 0; i < kEach; ++i) {
      const std::u16string path = Wide("P" + std::to_string(p) + "\\K" + std::to_string(i));
      HKEY key = nullptr;
      ASSERT_EQ(RegOpenKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, &key), ERROR_SUCCESS);
      EXPECT_EQ(GetText(key, nullptr), path);
      RegCloseKey(key);
    }
  }
}

TEST_F(Registry, ThreadsWritingAtOnceLoseNothing) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([t] {
      for (int i = 0; i < 20; ++i) {
        const Key key(u"T" + Wide(std::to_string(t)));
        EXPECT_EQ(SetText(key, Wide(std::to_string(i)).c_str(), u"x"), ERROR_SUCCESS);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int t = 0; t < 4; ++t) EXPECT_EQ(ValuesOf(Key(u"T" + Wide(std::to_string(t)))).size(), 20u);
}

// A process that is killed while it writes leaves the content before or after one of its changes.
TEST_F(Registry, AKilledWriterLeavesAWholeFile) {
  {
    const Key key(u"K");
    SetText(key, u"a", u"0");
    SetText(key, u"z", std::u16string(20000, u'0'));
  }
  for (int round = 0; round < 20; ++round) {
    const pid_t child = fork();
    if (child == 0) {
      const Key key(u"K");
      for (char16_t c = u'1';; c = c == u'9' ? u'1' : static_cast<char16_t>(c + 1)) {
        SetText(key, u"z", std::u16string(20000, c));
      }
    }
    usleep(static_cast<useconds_t>(1000 + round * 700));
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));
    const Key key(u"K");  // the lock went with its holder
    std::vector<WCHAR> text(20001);
    DWORD size = 40002;
    ASSERT_EQ(
        RegQueryValueExW(key, u"z", nullptr, nullptr, reinterpret_cast<BYTE*>(text.data()), &size),
        ERROR_SUCCESS);
    EXPECT_EQ(size, 40002u);
    EXPECT_EQ(std::u16string(text.data()), std::u16string(20000, text[0]));
    EXPECT_EQ(GetText(key, u"a"), u"0");
    EXPECT_EQ(SetText(key, u"z", std::u16string(20000, u'0')), ERROR_SUCCESS);
  }
}

TEST_F(Registry, FailedWritesChangeNothing) {
  const Key key(u"K");
  SetText(key, u"v", u"old");
  const std::string before = ReadFile(file_);
  // The new file cannot be written over a folder.
  ASSERT_EQ(mkdir((file_ + ".new").c_str(), 0755), 0);
  EXPECT_EQ(SetText(key, u"v", u"new"), ERROR_CANTWRITE);
  HKEY below = nullptr;
  EXPECT_EQ(RegCreateKeyExW(key, u"B", 0, nullptr, 0, KEY_WRITE, nullptr, &below, nullptr),
            ERROR_CANTWRITE);
  EXPECT_EQ(below, nullptr);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"K"), ERROR_CANTWRITE);
  EXPECT_EQ(GetText(key, u"v"), u"old");
  EXPECT_EQ(OpenStatus(u"K\\B"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(ReadFile(file_), before);
  ASSERT_EQ(rmdir((file_ + ".new").c_str()), 0);
  EXPECT_EQ(SetText(key, u"v", u"new"), ERROR_SUCCESS);
}

TEST_F(Registry, LinksAndModesStay) {
  { const Key key(u"K"); }
  const std::string link = folder_.File("link.reg");
  std::filesystem::create_symlink(file_, link);
  chmod(file_.c_str(), 0600);
  setenv("MIROLTA_REGISTRY", link.c_str(), 1);
  { const Key key(u"L"); }
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  struct stat facts = {};
  ASSERT_EQ(stat(file_.c_str(), &facts), 0);
  EXPECT_EQ(facts.st_mode & 0777, 0600u);
  EXPECT_NE(ReadFile(file_).find("L]"), std::string::npos);
}

TEST_F(Registry, ShortMemoryIsReportedAndNothingChanges) {
  const Key key(u"K");
  SetText(key, u"v", u"old");
  LONG allowed = 0;
  for (;; ++allowed) {
    MiroltaFailAllocationAfter(allowed);
    const LONG error = SetText(key, u"new", u"value");
    const bool failed = MiroltaAllocationHasFailed();
    MiroltaFailAllocationAfter(-1);
    if (!failed) {
      EXPECT_EQ(error, ERROR_SUCCESS);
      break;
    }
    EXPECT_EQ(error, ERROR_OUTOFMEMORY) << allowed;
    EXPECT_EQ(ValuesOf(key), (Names{"v"})) << allowed;
  }
  EXPECT_GT(allowed, 3);
  for (allowed = 0;; ++allowed) {
    HKEY below = nullptr;
    MiroltaFailAllocationAfter(allowed);
    const LONG error =
        RegCreateKeyExW(key, u"A\\B\\C", 0, nullptr, 0, KEY_READ, nullptr, &below, nullptr);
    const bool failed = MiroltaAllocationHasFailed();
    MiroltaFailAllocationAfter(-1);
    EXPECT_EQ(error, failed ? ERROR_OUTOFMEMORY : ERROR_SUCCESS);
    if (below != nullptr) RegCloseKey(below);
    if (!failed) break;
  }
}

TEST_F(Registry, InMemoryNothingIsWritten) {
  {
    const Key key(u"K");
    SetText(key, nullptr, u"file");
  }
  const std::string before = ReadFile(file_);
  EXPECT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
  {
    const Key key(u"K");
    EXPECT_EQ(GetText(key, nullptr), u"file");  // starts as the file is
    SetText(key, nullptr, u"memory");
    const Key other(u"Other");
    EXPECT_EQ(GetText(key, nullptr), u"memory");
  }
  EXPECT_EQ(ReadFile(file_), before);
  EXPECT_EQ(MiroltaRegistryInMemory(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(OpenStatus(u"Other"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(GetText(Key(u"K"), nullptr), u"file");

  WriteFile(file_, "damaged");
  EXPECT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
  {
    const Key key(u"New");
    EXPECT_EQ(SubkeysOf(HKEY_CLASSES_ROOT), (Names{"New"}));
  }
  EXPECT_EQ(ReadFile(file_), "damaged");
  EXPECT_EQ(MiroltaRegistryInMemory(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(OpenStatus(u"New"), ERROR_BADDB);
}

TEST_F(Registry, InMemoryNoFileIsNeeded) {
  setenv("MIROLTA_REGISTRY", "/proc/no/such/registry.reg", 1);
  EXPECT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
  {
    const Key key(u"K");
    EXPECT_EQ(SetText(key, nullptr, u"x"), ERROR_SUCCESS);
  }
  EXPECT_EQ(MiroltaRegistryInMemory(FALSE), ERROR_SUCCESS);
  HKEY key = nullptr;
  EXPECT_NE(
      RegCreateKeyExW(HKEY_CLASSES_ROOT, u"K", 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr),
      ERROR_SUCCESS);
}

TEST_F(Registry, ABatchIsOneChange) {
  { const Key key(u"Before"); }
  const std::string before = ReadFile(file_);
  EXPECT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  EXPECT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  { const Key key(u"Batch"); }
  EXPECT_EQ(OpenStatus(u"Batch"), ERROR_SUCCESS);
  EXPECT_EQ(ReadFile(file_), before);
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(ReadFile(file_), before);
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_NE(ReadFile(file_), before);
  EXPECT_EQ(OpenStatus(u"Batch"), ERROR_SUCCESS);
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_INVALID_PARAMETER);
}

// Where the file lies, asked in a process with its own variables.
std::string PlaceWith(const char* own, const char* data, const char* home) {
  const auto set = [](const char* name, const char* value) {
    if (value == nullptr) {
      unsetenv(name);
    } else {
      setenv(name, value, 1);
    }
  };
  const std::string old_home = std::getenv("HOME") == nullptr ? "" : std::getenv("HOME");
  set("MIROLTA_REGISTRY", own);
  set("XDG_DATA_HOME", data);
  set("HOME", home);
  WCHAR file[256] = {};
  const DWORD length = MiroltaRegistryFile(file, 256);
  EXPECT_EQ(length, std::u16string(file).size());
  EXPECT_EQ(MiroltaRegistryFile(file, length), 0u);
  unsetenv("XDG_DATA_HOME");
  setenv("HOME", old_home.c_str(), 1);
  return Narrow(file);
}

TEST_F(Registry, ItsPlaceIsFound) {
  EXPECT_EQ(PlaceWith("/own/file.reg", "/data", "/elsewhere"), "/own/file.reg");
  EXPECT_EQ(PlaceWith("", "/data", "/elsewhere"), "/data/mirolta/registry.reg");
  EXPECT_EQ(PlaceWith(nullptr, nullptr, "/elsewhere"),
            "/elsewhere/.local/share/mirolta/registry.reg");
  EXPECT_EQ(PlaceWith(nullptr, "relative", "/elsewhere"),
            "/elsewhere/.local/share/mirolta/registry.reg");
  EXPECT_EQ(PlaceWith(nullptr, nullptr, nullptr), "");
}

TEST_F(Registry, FoldersAreMade) {
  file_ = folder_.File("deep/down/registry.reg");
  setenv("MIROLTA_REGISTRY", file_.c_str(), 1);
  EXPECT_EQ(OpenStatus(u"K"), ERROR_FILE_NOT_FOUND);
  EXPECT_FALSE(std::filesystem::exists(folder_.File("deep")));  // not by reading
  { const Key key(u"K"); }
  EXPECT_TRUE(std::filesystem::exists(file_));
  EXPECT_EQ(OpenStatus(u"K"), ERROR_SUCCESS);
}

}  // namespace
}  // namespace mirolta
