// Files that the registry accepts at its path, and those that it refuses.
#include <sys/stat.h>

#include "portable/registry_mode.h"
#include "registry_support.h"

namespace mirolta {
namespace {

class RegistryFile : public RegistryTest {
 protected:
  static LONG Write() { return CreateStatus(u"K"); }
};

// Another user with access to the folder plants a link under the new file's name.
TEST_F(RegistryFile, PlantedLinksAreNotFollowed) {
  const std::string victim = folder_.File("victim");
  WriteFile(victim, "untouched");
  std::filesystem::create_symlink(victim, file_ + ".new");
  EXPECT_EQ(Write(), ERROR_SUCCESS);
  EXPECT_EQ(ReadFile(victim), "untouched");
  EXPECT_FALSE(std::filesystem::is_symlink(file_));
  EXPECT_NE(ReadFile(file_).find("K]"), std::string::npos);
  // Nor is the lock's.
  std::filesystem::remove(file_);
  std::filesystem::remove(file_ + ".lock");
  std::filesystem::create_symlink(folder_.File("made"), file_ + ".lock");
  EXPECT_NE(Write(), ERROR_SUCCESS);
  EXPECT_FALSE(std::filesystem::exists(folder_.File("made")));
}

TEST_F(RegistryFile, WhatAKilledWriterLeftIsReplaced) {
  WriteFile(file_ + ".new", std::string(100000, 'x'));
  EXPECT_EQ(Write(), ERROR_SUCCESS);
  EXPECT_EQ(ReadFile(file_), "REGEDIT4\n\n[HKEY_CLASSES_ROOT\\K]\n");
  EXPECT_FALSE(std::filesystem::exists(file_ + ".new"));
}

TEST_F(RegistryFile, ALinkThatLeadsNowhereStaysALink) {
  // Through another link, relative ones, into a folder that does not exist.
  std::filesystem::create_symlink("second", file_);
  std::filesystem::create_symlink("deep/down/real.reg", folder_.File("second"));
  EXPECT_EQ(OpenStatus(u"K"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(Write(), ERROR_SUCCESS);
  EXPECT_TRUE(std::filesystem::is_symlink(file_));
  EXPECT_TRUE(std::filesystem::is_symlink(folder_.File("second")));
  EXPECT_NE(ReadFile(folder_.File("deep/down/real.reg")).find("K]"), std::string::npos);
  EXPECT_EQ(OpenStatus(u"K"), ERROR_SUCCESS);
}

TEST_F(RegistryFile, LinksInACircleAreRefused) {
  std::filesystem::create_symlink(folder_.File("second"), file_);
  std::filesystem::create_symlink(file_, folder_.File("second"));
  EXPECT_NE(OpenStatus(u"K"), ERROR_SUCCESS);
  EXPECT_NE(Write(), ERROR_SUCCESS);
  EXPECT_TRUE(std::filesystem::is_symlink(file_));
}

// None is waited for, read from or replaced.
TEST_F(RegistryFile, PipesDevicesAndFoldersAreRefused) {
  constexpr LONG kCannotRead = 1012;
  ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
  alarm(60);  // ends the program where it waits
  EXPECT_EQ(OpenStatus(u"K"), kCannotRead);
  EXPECT_EQ(Write(), kCannotRead);
  alarm(0);
  EXPECT_TRUE(std::filesystem::is_fifo(file_));
  setenv("MIROLTA_REGISTRY", "/dev/null", 1);
  EXPECT_EQ(OpenStatus(u"K"), kCannotRead);
  setenv("MIROLTA_REGISTRY", folder_.File("").c_str(), 1);
  EXPECT_NE(OpenStatus(u"K"), ERROR_SUCCESS);
  // Also one that takes the place of a file that was read.
  std::filesystem::remove(file_);
  setenv("MIROLTA_REGISTRY", file_.c_str(), 1);
  EXPECT_EQ(Write(), ERROR_SUCCESS);
  std::filesystem::remove(file_);
  ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
  EXPECT_EQ(OpenStatus(u"K"), kCannotRead);
}

TEST_F(RegistryFile, FilesThatOthersMayChangeAreRefused) {
  ASSERT_EQ(Write(), ERROR_SUCCESS);
  for (const mode_t mode : {0664u, 0646u, 0666u, 0777u}) {
    ASSERT_EQ(chmod(file_.c_str(), mode), 0);
    EXPECT_EQ(OpenStatus(u"K"), ERROR_ACCESS_DENIED) << std::oct << mode;
    EXPECT_EQ(Write(), ERROR_ACCESS_DENIED) << std::oct << mode;
  }
  for (const mode_t mode : {0600u, 0644u, 0755u}) {
    ASSERT_EQ(chmod(file_.c_str(), mode), 0);
    EXPECT_EQ(OpenStatus(u"K"), ERROR_SUCCESS) << std::oct << mode;
  }
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  ASSERT_EQ(chown(file_.c_str(), 65534, 65534), 0);
  EXPECT_EQ(OpenStatus(u"K"), ERROR_ACCESS_DENIED);
  // Root's is everybody's.
  ASSERT_EQ(chown(file_.c_str(), 0, 0), 0);
  ASSERT_EQ(chmod(folder_.File("").c_str(), 0755), 0);
  EXPECT_TRUE(test::Succeeds(
      test::Fork([] { return setuid(65534) == 0 && OpenStatus(u"K") == ERROR_SUCCESS; })));
}

// The user's umask does not narrow the old file's mode.
TEST_F(RegistryFile, TheModeStays) {
  ASSERT_EQ(Write(), ERROR_SUCCESS);
  ASSERT_EQ(chmod(file_.c_str(), 0640), 0);
  umask(077);
  { const Key key(u"L"); }
  umask(022);
  struct stat facts = {};
  ASSERT_EQ(stat(file_.c_str(), &facts), 0);
  EXPECT_EQ(facts.st_mode & 0777, 0640u);
  // Who can only read the registry cannot lock it.
  ASSERT_EQ(stat((file_ + ".lock").c_str(), &facts), 0);
  EXPECT_EQ(facts.st_mode & 0777, 0600u);
}

TEST_F(RegistryFile, AHandleSurvivesAFileThatIsRepaired) {
  const Key key(u"K");
  SetText(key, u"v", u"x");
  const std::string good = ReadFile(file_);
  WriteFile(file_, "damaged");
  EXPECT_EQ(GetText(key, u"v"), u"<1009>");
  WriteFile(file_, good);
  EXPECT_EQ(GetText(key, u"v"), u"x");
}

TEST_F(RegistryFile, FailedWritesChangeNothing) {
  const Key key(u"K");
  SetText(key, u"v", u"old");
  const std::string before = ReadFile(file_);
  // The new file cannot be written over a folder.
  ASSERT_EQ(mkdir((file_ + ".new").c_str(), 0755), 0);
  EXPECT_EQ(SetText(key, u"v", u"new"), ERROR_CANTWRITE);
  EXPECT_EQ(CreateStatus(u"B", key), ERROR_CANTWRITE);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"K"), ERROR_CANTWRITE);
  EXPECT_EQ(GetText(key, u"v"), u"old");
  EXPECT_EQ(OpenStatus(u"K\\B"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(ReadFile(file_), before);
  ASSERT_EQ(rmdir((file_ + ".new").c_str()), 0);
  EXPECT_EQ(SetText(key, u"v", u"new"), ERROR_SUCCESS);
}

TEST_F(RegistryFile, LinksAndModesStay) {
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
  const DWORD length = MiroltaRegistryFile(0, file, 256);
  EXPECT_EQ(length, std::u16string(file).size());
  EXPECT_EQ(MiroltaRegistryFile(0, file, length), 0u);
  unsetenv("XDG_DATA_HOME");
  setenv("HOME", old_home.c_str(), 1);
  return Narrow(file);
}

TEST_F(RegistryFile, ItsPlaceIsFound) {
  EXPECT_EQ(PlaceWith("/own/file.reg", "/data", "/elsewhere"), "/own/file.reg");
  EXPECT_EQ(PlaceWith("", "/data", "/elsewhere"), "/data/mirolta/registry.reg");
  EXPECT_EQ(PlaceWith(nullptr, nullptr, "/elsewhere"),
            "/elsewhere/.local/share/mirolta/registry.reg");
  EXPECT_EQ(PlaceWith(nullptr, "relative", "/elsewhere"),
            "/elsewhere/.local/share/mirolta/registry.reg");
  EXPECT_EQ(PlaceWith(nullptr, nullptr, nullptr), "");
}

TEST_F(RegistryFile, FoldersAreMade) {
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
