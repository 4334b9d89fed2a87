// The system-wide registries below the user's: look-up, writing, and files that are refused.
#include <sys/stat.h>

#include "portable/registry_mode.h"
#include "portable/test_hooks.h"
#include "registry_support.h"

namespace mirolta {
namespace {

std::string OneKey(const std::string& path, const std::string& values = "") {
  return "REGEDIT4\n\n[HKEY_CLASSES_ROOT\\" + path + "]\n" + values;
}

class RegistryLayers : public RegistryTest {
 protected:
  RegistryLayers() {
    unsetenv("MIROLTA_REGISTRY");
    setenv("XDG_DATA_HOME", folder_.File("home").c_str(), 1);
    setenv("MIROLTA_SYSTEM_REGISTRY", system_.c_str(), 1);
    setenv("XDG_DATA_DIRS", (folder_.File("first") + ":" + folder_.File("second")).c_str(), 1);
    for (const std::string& file : {user_, system_, first_, second_}) {
      std::filesystem::create_directories(std::filesystem::path(file).parent_path());
    }
  }
  ~RegistryLayers() override {
    for (const char* name : {"XDG_DATA_HOME", "MIROLTA_SYSTEM_REGISTRY", "XDG_DATA_DIRS"}) {
      unsetenv(name);
    }
  }

  const std::string user_ = folder_.File("home/mirolta/registry.reg");
  const std::string system_ = folder_.File("etc/registry.reg");
  const std::string first_ = folder_.File("first/mirolta/registry.reg");
  const std::string second_ = folder_.File("second/mirolta/registry.reg");
};

HKEY Opened(const std::u16string& path) {
  HKEY key = nullptr;
  EXPECT_EQ(RegOpenKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_ALL_ACCESS, &key), 0);
  return key;
}

// A key that must exist, closed at the end of its scope.
class Existing {
 public:
  explicit Existing(const std::u16string& path) : key_(Opened(path)) {}
  Existing(const Existing&) = delete;
  Existing& operator=(const Existing&) = delete;
  ~Existing() { RegCloseKey(key_); }
  operator HKEY() const { return key_; }

 private:
  HKEY key_;
};

std::u16string TextOf(const std::u16string& path, const char16_t* name = nullptr) {
  return GetText(Existing(path), name);
}

DWORD LayerOf(const std::u16string& path) {
  DWORD layer = 99;
  EXPECT_EQ(MiroltaRegistryLayer(Existing(path), &layer), ERROR_SUCCESS);
  return layer;
}

std::string FileOf(DWORD layer) {
  WCHAR file[512] = {};
  MiroltaRegistryFile(layer, file, 512);
  return Narrow(file);
}

TEST_F(RegistryLayers, FilesAreNamedInTheOrderOfLookUp) {
  EXPECT_EQ(FileOf(0), user_);
  EXPECT_EQ(FileOf(1), system_);
  EXPECT_EQ(FileOf(2), first_);
  EXPECT_EQ(FileOf(3), second_);
  EXPECT_EQ(FileOf(4), "");
}

TEST_F(RegistryLayers, WithoutVariablesTheyLieInEtcAndTheSystemsFolders) {
  unsetenv("MIROLTA_SYSTEM_REGISTRY");
  for (const char* folders : {static_cast<const char*>(nullptr), ""}) {
    folders == nullptr ? unsetenv("XDG_DATA_DIRS") : setenv("XDG_DATA_DIRS", folders, 1);
    EXPECT_EQ(FileOf(1), "/etc/mirolta/registry.reg");
    EXPECT_EQ(FileOf(2), "/usr/local/share/mirolta/registry.reg");
    EXPECT_EQ(FileOf(3), "/usr/share/mirolta/registry.reg");
    EXPECT_EQ(FileOf(4), "");
  }
}

TEST_F(RegistryLayers, RelativeAndEmptyFoldersAreSkipped) {
  setenv("XDG_DATA_DIRS", ":relative:/a:./b::/c:", 1);
  EXPECT_EQ(FileOf(2), "/a/mirolta/registry.reg");
  EXPECT_EQ(FileOf(3), "/c/mirolta/registry.reg");
  EXPECT_EQ(FileOf(4), "");
}

TEST_F(RegistryLayers, MissingOnesAreNoError) {
  EXPECT_EQ(OpenStatus(u"K"), ERROR_FILE_NOT_FOUND);
  std::filesystem::remove_all(folder_.File("etc"));
  setenv("XDG_DATA_DIRS", folder_.File("nowhere").c_str(), 1);
  EXPECT_EQ(OpenStatus(u"K"), ERROR_FILE_NOT_FOUND);
  WriteFile(user_, OneKey("K"));
  EXPECT_EQ(OpenStatus(u"K"), ERROR_SUCCESS);
}

TEST_F(RegistryLayers, TheFirstLayerWithValuesOfAKeyWins) {
  const std::string files[] = {user_, system_, first_, second_};
  for (DWORD layer = 4; layer-- > 0;) {
    WriteFile(files[layer], OneKey("K", "@=\"" + std::to_string(layer) + "\"\n\"only" +
                                            std::to_string(layer) + "\"=\"x\"\n"));
    EXPECT_EQ(TextOf(u"K"), Wide(std::to_string(layer)));
    EXPECT_EQ(LayerOf(u"K"), layer);
    // Values of different files are not mixed.
    EXPECT_EQ(ValuesOf(Existing(u"K")), (Names{"", "only" + std::to_string(layer)}));
  }
  for (DWORD layer = 0; layer < 3; ++layer) {
    std::filesystem::remove(files[layer]);
    EXPECT_EQ(LayerOf(u"K"), layer + 1);
  }
}

TEST_F(RegistryLayers, AKeyWithoutValuesHidesNone) {
  WriteFile(user_, OneKey("K\\Own"));
  WriteFile(system_, OneKey("K", "; no value\n") +
                         "[HKEY_CLASSES_ROOT\\Empty]\n[HKEY_CLASSES_ROOT\\K\\Own]\n");
  WriteFile(second_, OneKey("K", "@=\"low\"\n"));
  EXPECT_EQ(TextOf(u"K"), u"low");
  EXPECT_EQ(LayerOf(u"K"), 3u);
  EXPECT_EQ(LayerOf(u"K\\Own"), 0u);
  EXPECT_EQ(LayerOf(u"Empty"), 1u);
}

TEST_F(RegistryLayers, SubkeysOfAllLayersAreEnumeratedOnce) {
  WriteFile(user_, OneKey("K\\B") + "[HKEY_CLASSES_ROOT\\K\\A]\n");
  WriteFile(system_, OneKey("K\\C") + "[HKEY_CLASSES_ROOT\\K\\a]\n");
  WriteFile(second_, OneKey("K\\D") + "[HKEY_CLASSES_ROOT\\K\\c]\n[HKEY_CLASSES_ROOT\\L\\E]\n");
  EXPECT_EQ(SubkeysOf(Existing(u"K")), (Names{"B", "A", "C", "D"}));
  EXPECT_EQ(SubkeysOf(Existing(u"L")), Names{"E"});
  EXPECT_EQ(SubkeysOf(HKEY_CLASSES_ROOT), (Names{"K", "L"}));
}

TEST_F(RegistryLayers, TheOnlyRegistryReplacesAll) {
  WriteFile(system_, OneKey("K"));
  WriteFile(first_, OneKey("K"));
  EXPECT_EQ(OpenStatus(u"K"), ERROR_SUCCESS);
  setenv("MIROLTA_REGISTRY", file_.c_str(), 1);
  EXPECT_EQ(OpenStatus(u"K"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(FileOf(0), file_);
  EXPECT_EQ(FileOf(1), "");
  EXPECT_EQ(MiroltaSystemRegistryBatch(), ERROR_ACCESS_DENIED);
}

TEST_F(RegistryLayers, AProcessWithoutAUserRegistryReadsTheOthers) {
  WriteFile(system_, OneKey("K", "@=\"x\"\n"));
  const std::string home = std::getenv("HOME") == nullptr ? "" : std::getenv("HOME");
  unsetenv("XDG_DATA_HOME");
  unsetenv("HOME");
  EXPECT_EQ(FileOf(0), "");
  EXPECT_EQ(FileOf(1), system_);
  EXPECT_EQ(TextOf(u"K"), u"x");
  EXPECT_EQ(CreateStatus(u"New"), ERROR_FILE_NOT_FOUND);
  setenv("HOME", home.c_str(), 1);
}

TEST_F(RegistryLayers, ChangesOfAnyLayerAreSeen) {
  EXPECT_EQ(OpenStatus(u"K"), ERROR_FILE_NOT_FOUND);
  WriteFile(second_, OneKey("K", "@=\"one\"\n"));
  EXPECT_EQ(TextOf(u"K"), u"one");
  WriteFile(second_, OneKey("K", "@=\"three\"\n"));
  EXPECT_EQ(TextOf(u"K"), u"three");
  std::filesystem::remove(second_);
  EXPECT_EQ(OpenStatus(u"K"), ERROR_FILE_NOT_FOUND);
  // Other files under the same layers.
  WriteFile(folder_.File("other.reg"), OneKey("O"));
  setenv("MIROLTA_SYSTEM_REGISTRY", folder_.File("other.reg").c_str(), 1);
  EXPECT_EQ(OpenStatus(u"O"), ERROR_SUCCESS);
}

TEST_F(RegistryLayers, WritesGoToTheUsersFileOnly) {
  const std::string system = OneKey("K", "@=\"low\"\n\"other\"=\"kept\"\n");
  WriteFile(system_, system);
  // Opening by creation writes nothing.
  EXPECT_EQ(CreateStatus(u"K"), ERROR_SUCCESS);
  EXPECT_FALSE(std::filesystem::exists(user_));
  const Existing key(u"K");
  EXPECT_EQ(SetText(key, nullptr, u"low"), ERROR_SUCCESS);
  EXPECT_FALSE(std::filesystem::exists(user_));
  // The key's other values stay visible.
  EXPECT_EQ(SetText(key, nullptr, u"high"), ERROR_SUCCESS);
  EXPECT_EQ(GetText(key, nullptr), u"high");
  EXPECT_EQ(GetText(key, u"other"), u"kept");
  EXPECT_EQ(LayerOf(u"K"), 0u);
  EXPECT_EQ(CreateStatus(u"K\\Below"), ERROR_SUCCESS);
  EXPECT_EQ(ReadFile(system_), system);
  EXPECT_EQ(ReadFile(user_),
            OneKey("K", "@=\"high\"\n\"other\"=\"kept\"\n\n[HKEY_CLASSES_ROOT\\K\\Below]\n"));
}

TEST_F(RegistryLayers, WhatOnlyALowerLayerHasCannotBeDeleted) {
  WriteFile(first_, OneKey("K\\Sub", "@=\"x\"\n\"name\"=\"y\"\n"));
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"K\\Sub"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"K\\None"), ERROR_FILE_NOT_FOUND);
  {
    const Existing key(u"K\\Sub");
    EXPECT_EQ(RegDeleteValueW(key, u"name"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteValueW(key, u"none"), ERROR_FILE_NOT_FOUND);
  }
  EXPECT_FALSE(std::filesystem::exists(user_));
  // Deleting the user's own shows it again.
  WriteFile(user_, OneKey("K\\Sub", "@=\"mine\"\n"));
  EXPECT_EQ(TextOf(u"K\\Sub"), u"mine");
  {
    const Existing key(u"K\\Sub");
    EXPECT_EQ(RegDeleteValueW(key, u"name"), ERROR_FILE_NOT_FOUND);  // it is not visible
    EXPECT_EQ(RegDeleteValueW(key, nullptr), ERROR_SUCCESS);
    EXPECT_EQ(GetText(key, nullptr), u"x");
  }
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"K\\Sub"), ERROR_SUCCESS);
  EXPECT_EQ(TextOf(u"K\\Sub"), u"x");
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"K"), ERROR_SUCCESS);  // the user's K has no subkeys
  EXPECT_EQ(ReadFile(user_), "REGEDIT4\n");
}

// A registration does not depend on what is registered system-wide.
TEST_F(RegistryLayers, ABatchSeesTheUsersLayerOnly) {
  WriteFile(system_, OneKey("K", "@=\"low\"\n\"other\"=\"low\"\n"));
  ASSERT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  EXPECT_EQ(OpenStatus(u"K"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"K"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(SetText(Key(u"K"), nullptr, u"high"), ERROR_SUCCESS);
  ASSERT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(ValuesOf(Existing(u"K")), Names{""});
  EXPECT_EQ(TextOf(u"K"), u"high");
  // Nor on whether that can be read.
  WriteFile(system_, "damaged");
  ASSERT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  EXPECT_EQ(CreateStatus(u"New"), ERROR_SUCCESS);
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(OpenStatus(u"New"), ERROR_SUCCESS);
}

TEST_F(RegistryLayers, ASystemBatchWritesTheSystemWideFileOnly) {
  const std::string user = OneKey("Mine");
  WriteFile(user_, user);
  std::filesystem::remove_all(folder_.File("etc"));
  const mode_t old_umask = umask(077);
  ASSERT_EQ(MiroltaSystemRegistryBatch(), ERROR_SUCCESS);
  EXPECT_EQ(OpenStatus(u"Mine"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(SetText(Key(u"K"), nullptr, u"x"), ERROR_SUCCESS);
  EXPECT_FALSE(std::filesystem::exists(system_));
  // Batches of the registration within it are parts of it.
  ASSERT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  EXPECT_EQ(CreateStatus(u"Nested"), ERROR_SUCCESS);
  ASSERT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_FALSE(std::filesystem::exists(system_));
  ASSERT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  umask(old_umask);
  EXPECT_EQ(ReadFile(user_), user);
  EXPECT_EQ(ReadFile(system_), OneKey("K", "@=\"x\"\n\n[HKEY_CLASSES_ROOT\\Nested]\n"));
  EXPECT_EQ(LayerOf(u"K"), 1u);
  // Whatever the umask, everybody can read it.
  struct stat facts = {};
  ASSERT_EQ(stat(system_.c_str(), &facts), 0);
  EXPECT_EQ(facts.st_mode & 0777, 0644u);
  ASSERT_EQ(stat(folder_.File("etc").c_str(), &facts), 0);
  EXPECT_EQ(facts.st_mode & 0777, 0755u);
}

TEST_F(RegistryLayers, ASystemBatchDeletesAndKeepsWhatOthersWrote) {
  WriteFile(system_, OneKey("K"));
  ASSERT_EQ(MiroltaSystemRegistryBatch(), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"K"), ERROR_SUCCESS);
  WriteFile(system_, OneKey("K") + "[HKEY_CLASSES_ROOT\\Others]\n");
  ASSERT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(ReadFile(system_), OneKey("Others"));
}

TEST_F(RegistryLayers, ASystemBatchFailsWhole) {
  WriteFile(system_, "REGEDIT4\n\nwrong\n");
  EXPECT_EQ(MiroltaSystemRegistryBatch(), ERROR_BADDB);
  EXPECT_EQ(MiroltaRegistryFailedLayer(), 1u);
  EXPECT_EQ(MiroltaRegistryBadLine(), 3u);
  WriteFile(system_, OneKey("K"));
  ASSERT_EQ(chmod(system_.c_str(), 0666), 0);
  EXPECT_EQ(MiroltaSystemRegistryBatch(), ERROR_ACCESS_DENIED);
  ASSERT_EQ(chmod(system_.c_str(), 0644), 0);
  // Not within a batch of the user's layer, nor with a registry in memory.
  ASSERT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  EXPECT_EQ(MiroltaSystemRegistryBatch(), ERROR_INVALID_PARAMETER);
  ASSERT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
  EXPECT_EQ(MiroltaSystemRegistryBatch(), ERROR_ACCESS_DENIED);
  ASSERT_EQ(MiroltaRegistryInMemory(FALSE), ERROR_SUCCESS);
  // The file cannot be replaced.
  ASSERT_EQ(mkdir((system_ + ".new").c_str(), 0755), 0);
  ASSERT_EQ(MiroltaSystemRegistryBatch(), ERROR_SUCCESS);
  EXPECT_EQ(CreateStatus(u"New"), ERROR_SUCCESS);
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_CANTWRITE);
  EXPECT_EQ(ReadFile(system_), OneKey("K"));
}

TEST_F(RegistryLayers, AMalformedLayerIsNamed) {
  WriteFile(user_, OneKey("Mine", "@=\"x\"\n"));
  WriteFile(first_, "REGEDIT4\n\n[HKEY_CLASSES_ROOT\\K]\nwrong\n");
  EXPECT_EQ(OpenStatus(u"K"), ERROR_BADDB);
  EXPECT_EQ(MiroltaRegistryFailedLayer(), 2u);
  EXPECT_EQ(MiroltaRegistryBadLine(), 4u);
  // What the user's own file answers needs no other.
  EXPECT_EQ(TextOf(u"Mine"), u"x");
  EXPECT_EQ(OpenStatus(u"K"), ERROR_BADDB);  // also again
  WriteFile(first_, OneKey("K"));
  EXPECT_EQ(OpenStatus(u"K"), ERROR_SUCCESS);
  WriteFile(user_, "damaged");
  EXPECT_EQ(OpenStatus(u"K"), ERROR_BADDB);
  EXPECT_EQ(MiroltaRegistryFailedLayer(), 0u);
  EXPECT_EQ(MiroltaRegistryBadLine(), 1u);
}

TEST_F(RegistryLayers, LayersThatOthersMayChangeAreRefused) {
  const std::string files[] = {user_, system_, first_, second_};
  for (DWORD layer = 1; layer < 4; ++layer) {
    WriteFile(files[layer], OneKey("K"));
    ASSERT_EQ(chmod(files[layer].c_str(), 0664), 0);
    EXPECT_EQ(OpenStatus(u"K"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(MiroltaRegistryFailedLayer(), layer);
    EXPECT_EQ(MiroltaRegistryBadLine(), 0u);
    ASSERT_EQ(chmod(files[layer].c_str(), 0644), 0);
    EXPECT_EQ(OpenStatus(u"K"), ERROR_SUCCESS);
  }
  std::filesystem::remove(first_);
  ASSERT_EQ(mkfifo(first_.c_str(), 0600), 0);
  alarm(60);  // ends the program where it waits
  EXPECT_EQ(OpenStatus(u"Other"), ERROR_CANTREAD);
  alarm(0);
  std::filesystem::remove(first_);
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  ASSERT_EQ(chown(system_.c_str(), 65534, 65534), 0);
  EXPECT_EQ(OpenStatus(u"K"), ERROR_ACCESS_DENIED);
}

TEST_F(RegistryLayers, LayersThatMayNotBeReadAreSkipped) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  WriteFile(system_, OneKey("Secret"));
  ASSERT_EQ(chmod(system_.c_str(), 0600), 0);
  WriteFile(first_, OneKey("Hidden"));
  ASSERT_EQ(chmod(folder_.File("first").c_str(), 0700), 0);
  WriteFile(second_, OneKey("K"));
  ASSERT_EQ(chmod(folder_.File("").c_str(), 0755), 0);
  EXPECT_TRUE(test::Succeeds(test::Fork([] {
    return setuid(65534) == 0 && OpenStatus(u"K") == ERROR_SUCCESS &&
           OpenStatus(u"K") == ERROR_SUCCESS && OpenStatus(u"Secret") == ERROR_FILE_NOT_FOUND &&
           OpenStatus(u"Hidden") == ERROR_FILE_NOT_FOUND;
  })));
}

TEST_F(RegistryLayers, ARegistryInMemoryKeepsThem) {
  WriteFile(system_, OneKey("K", "@=\"x\"\n"));
  ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
  WriteFile(system_, OneKey("K", "@=\"later\"\n"));
  EXPECT_EQ(TextOf(u"K"), u"x");
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"K"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(SetText(Existing(u"K"), nullptr, u"mine"), ERROR_SUCCESS);
  EXPECT_EQ(TextOf(u"K"), u"mine");
  ASSERT_EQ(MiroltaRegistryInMemory(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(TextOf(u"K"), u"later");
  // One that cannot be read is empty in memory.
  WriteFile(system_, "damaged");
  ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
  EXPECT_EQ(OpenStatus(u"K"), ERROR_FILE_NOT_FOUND);
  ASSERT_EQ(MiroltaRegistryInMemory(FALSE), ERROR_SUCCESS);
}

TEST_F(RegistryLayers, AHandleToALowerKeySurvivesItsFile) {
  WriteFile(system_, OneKey("K", "@=\"x\"\n"));
  const Existing key(u"K");
  std::filesystem::remove(system_);
  EXPECT_EQ(GetText(key, nullptr), u"<1018>");  // the key is deleted
  DWORD layer = 99;
  EXPECT_EQ(MiroltaRegistryLayer(key, &layer), ERROR_KEY_DELETED);
  EXPECT_EQ(MiroltaRegistryLayer(nullptr, &layer), ERROR_INVALID_HANDLE);
  EXPECT_EQ(MiroltaRegistryLayer(key, nullptr), ERROR_INVALID_PARAMETER);
  WriteFile(second_, OneKey("K", "@=\"y\"\n"));
  EXPECT_EQ(GetText(key, nullptr), u"y");
}

// Calls work() with one allocation that fails, then the next, until all succeed. It returns
// ERROR_OUTOFMEMORY each time, and what is_unchanged() looks at is unchanged.
template <typename Work, typename Check>
void FailEachAllocation(Work work, Check is_unchanged) {
  for (LONG allowed = 0;; ++allowed) {
    ASSERT_LT(allowed, 1000);
    MiroltaFailAllocationAfter(allowed);
    const LONG error = work();
    const bool failed = MiroltaAllocationHasFailed();
    MiroltaFailAllocationAfter(-1);
    if (!failed) {
      EXPECT_EQ(error, ERROR_SUCCESS);
      return;
    }
    ASSERT_EQ(error, ERROR_OUTOFMEMORY) << allowed;
    ASSERT_TRUE(is_unchanged()) << allowed;
  }
}

TEST_F(RegistryLayers, AReaderWithoutMemoryTriesAgain) {
  WriteFile(system_, OneKey("K", "@=\"x\"\n"));
  WriteFile(second_, OneKey("K\\Sub", "@=\"y\"\n"));
  FailEachAllocation([] { return OpenStatus(u"K\\Sub"); }, [] { return true; });
  EXPECT_EQ(TextOf(u"K"), u"x");
  EXPECT_EQ(TextOf(u"K\\Sub"), u"y");
}

TEST_F(RegistryLayers, AWriterWithoutMemoryChangesNothing) {
  WriteFile(system_, OneKey("K", "@=\"x\"\n\"other\"=\"y\"\n"));
  const Existing key(u"K");
  const auto is_unchanged = [&] { return GetText(key, nullptr) == u"x" && LayerOf(u"K") == 1; };
  for (const bool in_memory : {true, false}) {
    ASSERT_EQ(MiroltaRegistryInMemory(in_memory), ERROR_SUCCESS);
    FailEachAllocation([&] { return SetText(key, nullptr, u"mine"); }, is_unchanged);
    EXPECT_EQ(GetText(key, nullptr), u"mine");
    EXPECT_EQ(GetText(key, u"other"), u"y");
  }
  EXPECT_NE(ReadFile(user_).find("mine"), std::string::npos);
}

TEST_F(RegistryLayers, ASystemBatchWithoutMemoryWritesNothing) {
  const std::string before = OneKey("Others");
  WriteFile(system_, before);
  FailEachAllocation(
      [&] {
        LONG error = MiroltaSystemRegistryBatch();
        if (error != ERROR_SUCCESS) return error;
        error = CreateStatus(u"K");
        const LONG written = MiroltaRegistryBatch(FALSE);
        return error != ERROR_SUCCESS ? error : written;
      },
      [&] { return ReadFile(system_) == before; });
  EXPECT_NE(ReadFile(system_).find("K]"), std::string::npos);
}

}  // namespace
}  // namespace mirolta
