// Keys and values of the registry.
#include <cstring>

#include "portable/registry_mode.h"
#include "registry_support.h"
#include "runtime_allocations.h"

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
  EXPECT_EQ(CreateStatus(std::u16string(255, u'x')), ERROR_SUCCESS);
  EXPECT_EQ(CreateStatus(std::u16string(256, u'x')), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(CreateStatus(u"made\\a\nb"), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(OpenStatus(u"made"), ERROR_FILE_NOT_FOUND);  // nothing on the way stays
  EXPECT_EQ(CreateStatus(u"a\xD800"), ERROR_INVALID_PARAMETER);
  std::u16string deep;
  for (int i = 0; i < 511; ++i) deep += u"k\\";
  EXPECT_EQ(CreateStatus(deep), ERROR_SUCCESS);
  EXPECT_EQ(CreateStatus(deep + u"k"), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(CreateStatus(u"a]b [c] ; \"d\" = \u00FC"), ERROR_SUCCESS);
  UseCopy();
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
  EXPECT_EQ(CreateStatus(u"new", reader, KEY_READ), ERROR_ACCESS_DENIED);
  RegCloseKey(reader);
  // A handle for any use at all opens what is below.
  { const Key below(u"K\\L"); }
  HKEY asker = nullptr, below = nullptr;
  ASSERT_EQ(RegOpenKeyExW(HKEY_CLASSES_ROOT, u"K", 0, KEY_QUERY_VALUE, &asker), ERROR_SUCCESS);
  EXPECT_EQ(RegOpenKeyExW(asker, u"L", 0, KEY_READ, &below), ERROR_SUCCESS);
  RegCloseKey(below);
  RegCloseKey(asker);
  const Key writer(u"K", HKEY_CLASSES_ROOT, KEY_WRITE);
  EXPECT_EQ(SetText(writer, u"v", u"x"), ERROR_SUCCESS);
  EXPECT_EQ(GetText(writer, u"v"), u"<5>");
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

TEST_F(Registry, ShortMemoryIsReportedAndNothingChanges) {
  const Key key(u"K");
  SetText(key, u"v", u"old");
  const auto set = [&] { return SetText(key, u"new", u"value"); };
  const auto check = [&](LONG error, bool failed) {
    EXPECT_EQ(error, failed ? ERROR_OUTOFMEMORY : ERROR_SUCCESS);
    if (failed) {
      EXPECT_EQ(ValuesOf(key), (Names{"v"}));
    }
  };
  EXPECT_GT(test::FailEachAllocation(set, check), 3);
  test::FailEachAllocation([&] { return CreateStatus(u"A\\B\\C", key, KEY_READ); },
                           [](LONG error, bool failed) {
                             EXPECT_EQ(error, failed ? ERROR_OUTOFMEMORY : ERROR_SUCCESS);
                           });
}

// The lists of names grow meanwhile.
TEST_F(Registry, ShortMemoryIsReportedForEachOfManyNames) {
  const Key key(u"K");
  EXPECT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  Names names;
  for (int i = 0; i < 70; ++i) {
    const std::string name = "v" + std::to_string(i);
    test::FailEachAllocation([&] { return SetText(key, Wide(name).c_str(), u"x"); },
                             [&](LONG error, bool failed) {
                               EXPECT_EQ(error, failed ? ERROR_OUTOFMEMORY : ERROR_SUCCESS) << name;
                             });
    names.push_back(name);
    ASSERT_EQ(ValuesOf(key), names);
  }
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(ValuesOf(key), names);
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
  EXPECT_NE(CreateStatus(u"K"), ERROR_SUCCESS);
}

}  // namespace
}  // namespace mirolta
