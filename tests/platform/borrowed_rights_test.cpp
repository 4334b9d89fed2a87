// A set-user-id program takes neither a registry nor a module from whoever starts it. The tests run
// such a program as nobody, which only root can prepare.
#include <sys/wait.h>

#include "registry_support.h"
#include "system_test_module.h"

namespace mirolta {
namespace {

constexpr uid_t kNobody = 65534;

std::string Reported(HRESULT status) {
  char text[16];
  snprintf(text, sizeof text, "%08X", static_cast<unsigned>(status));
  return text;
}

// Whether only root can change the folder and all around it.
bool IsRootsOwn(std::filesystem::path folder) {
  for (folder = std::filesystem::canonical(folder);; folder = folder.parent_path()) {
    struct stat facts = {};
    if (stat(folder.c_str(), &facts) != 0 || facts.st_uid != 0 || (facts.st_mode & 022) != 0) {
      return false;
    }
    if (folder == folder.root_path()) return true;
  }
}

class BorrowedRights : public RegistryTest {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root can make programs that run as root";
    ASSERT_EQ(chmod(folder_.File("").c_str(), 0755), 0);
    plain_ = Copy(BORROWED_RIGHTS_PROBE, "plain");
    borrowing_ = Copy(BORROWED_RIGHTS_PROBE, "borrowing");
    ASSERT_EQ(chmod(plain_.c_str(), 0755), 0);
    ASSERT_EQ(chmod(borrowing_.c_str(), 04755), 0);
    if (system((borrowing_ + " rights").c_str()) == 0) GTEST_SKIP() << "root already borrows";
    if (Run(borrowing_, {"rights"}) != "0:") {
      GTEST_SKIP() << "set-user-id programs have no effect in " << folder_.File("");
    }
    module_ = Copy(SYSTEM_TEST_MODULE, "module.so");
    // The user "nobody" may have no access to the build folder.
    (void)Copy(MIROLTA_RUNTIME_FILE, MIROLTA_RUNTIME_NAME);
  }

  std::string Copy(const std::string& from, const std::string& name) {
    const std::string to = folder_.File(name);
    std::filesystem::copy_file(from, to);
    return to;
  }

  // Runs a program as nobody in the test's folder; returns its exit status and what it printed.
  std::string Run(const std::string& program, std::vector<std::string> words) {
    int ends[2];
    if (pipe(ends) != 0) return "no pipe";
    const pid_t child = fork();
    if (child == 0) {
      dup2(ends[1], 1);
      words.insert(words.begin(), program);
      std::vector<char*> arguments;
      for (std::string& word : words) arguments.push_back(word.data());
      arguments.push_back(nullptr);
      setenv("LD_LIBRARY_PATH", folder_.File("").c_str(), 1);  // not for who borrows rights
      if (chdir(folder_.File("").c_str()) == 0 && setgid(kNobody) == 0 && setuid(kNobody) == 0) {
        execv(program.c_str(), arguments.data());
      }
      _exit(99);
    }
    close(ends[1]);
    std::string printed;
    char block[256];
    for (ssize_t got; (got = read(ends[0], block, sizeof block)) > 0;) {
      printed.append(block, static_cast<size_t>(got));
    }
    close(ends[0]);
    int status = -1;
    waitpid(child, &status, 0);
    return std::to_string(WEXITSTATUS(status)) + ":" + printed;
  }
  // The status that a program reports.
  std::string StatusOf(const std::string& program, const std::vector<std::string>& words) {
    const std::string found = Run(program, words);
    return found.compare(0, 2, "0:") == 0 ? found.substr(2, 8) : found;
  }

  std::string plain_;
  std::string borrowing_;
  std::string module_;
};

TEST_F(BorrowedRights, HasNoRegistryOfItsCallers) {
  WCHAR id[39];
  StringFromGUID2(kTestClass, id, 39);
  const std::string text = "REGEDIT4\n[HKEY_CLASSES_ROOT\\CLSID\\" + Narrow(id) +
                           "\\InprocServer32]\n@=\"" + module_ + "\"\n";
  const std::string home = folder_.File("home");
  for (const char* below : {"/mirolta", "/.local/share/mirolta"}) {
    std::filesystem::create_directories(home + below);
    WriteFile(home + below + "/registry.reg", text);
  }
  WriteFile(file_, text);
  const char* const kVariables[] = {"MIROLTA_REGISTRY", "XDG_DATA_HOME", "HOME",
                                    "MIROLTA_SYSTEM_REGISTRY", "XDG_DATA_DIRS"};
  const std::string kValues[] = {file_, home, home, file_, home};
  const std::string old_home = std::getenv("HOME") == nullptr ? "" : std::getenv("HOME");
  for (const char* variable : kVariables) unsetenv(variable);
  for (int i = 0; i < 5; ++i) {
    setenv(kVariables[i], kValues[i].c_str(), 1);
    EXPECT_EQ(StatusOf(plain_, {"registered"}), Reported(S_OK)) << kVariables[i];
    EXPECT_EQ(Run(borrowing_, {"registered"}), "0:" + Reported(REGDB_E_CLASSNOTREG) + " 0")
        << kVariables[i];
    unsetenv(kVariables[i]);
  }
  setenv("HOME", old_home.c_str(), 1);
}

TEST_F(BorrowedRights, LoadsNoModuleByARelativeName) {
  for (const char* file : {"./module.so", "../../../..//tmp/module.so", "libm.so.6"}) {
    EXPECT_EQ(StatusOf(borrowing_, {"module", file}), Reported(E_ACCESSDENIED)) << file;
    EXPECT_EQ(StatusOf(borrowing_, {"library", file}), Reported(TYPE_E_CANTLOADLIBRARY)) << file;
  }
  EXPECT_EQ(StatusOf(plain_, {"module", "./module.so"}), Reported(S_OK));
  EXPECT_EQ(StatusOf(plain_, {"library", "./module.so"}), Reported(S_OK));
}

TEST_F(BorrowedRights, LoadsNoModuleThatOthersMayChange) {
  // Everybody may make files where temporary ones are.
  if (!IsRootsOwn(folder_.File(""))) {
    EXPECT_EQ(StatusOf(borrowing_, {"module", module_}), Reported(E_ACCESSDENIED));
    EXPECT_EQ(StatusOf(borrowing_, {"library", module_}), Reported(TYPE_E_CANTLOADLIBRARY));
  }
  EXPECT_EQ(StatusOf(plain_, {"module", module_}), Reported(S_OK));

  std::string own = std::string(BORROWED_RIGHTS_FOLDER) + "/own-XXXXXX";
  ASSERT_NE(mkdtemp(own.data()), nullptr);
  chmod(own.c_str(), 0755);
  const bool is_own = IsRootsOwn(own);
  if (is_own) {
    const std::string module = own + "/module.so";
    std::filesystem::copy_file(SYSTEM_TEST_MODULE, module);
    const auto status = [&](const std::string& file) {
      return StatusOf(borrowing_, {"module", file});
    };
    for (const mode_t mode : {0755u, 0444u}) {
      ASSERT_EQ(chmod(module.c_str(), mode), 0);
      EXPECT_EQ(status(module), Reported(S_OK)) << std::oct << mode;
    }
    for (const mode_t mode : {0775u, 0757u}) {
      ASSERT_EQ(chmod(module.c_str(), mode), 0);
      EXPECT_EQ(status(module), Reported(E_ACCESSDENIED)) << std::oct << mode;
    }
    ASSERT_EQ(chmod(module.c_str(), 0755), 0);
    ASSERT_EQ(chmod(own.c_str(), 0777), 0);
    EXPECT_EQ(status(module), Reported(E_ACCESSDENIED));
    ASSERT_EQ(chmod(own.c_str(), 0755), 0);
    ASSERT_EQ(chown(module.c_str(), kNobody, kNobody), 0);
    EXPECT_EQ(status(module), Reported(E_ACCESSDENIED));
    ASSERT_EQ(chown(module.c_str(), 0, 0), 0);
    // The target of a link counts.
    std::filesystem::create_symlink(module, folder_.File("good"));
    EXPECT_EQ(status(folder_.File("good")), Reported(S_OK));
    std::filesystem::create_symlink(module_, own + "/bad");
    EXPECT_EQ(status(own + "/bad"), Reported(E_ACCESSDENIED));
    EXPECT_EQ(status(own + "/none"), Reported(CO_E_DLLNOTFOUND));
  }
  std::filesystem::remove_all(own);
  if (!is_own) GTEST_SKIP() << "others than root may change " << BORROWED_RIGHTS_FOLDER;
}

}  // namespace
}  // namespace mirolta
