// Registration by several processes: many at once, some killed, others creating objects meanwhile.
#include <dlfcn.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <vector>

#include "loaded_module.h"
#include "registration_fixture.h"
#include "run_time.h"

namespace {

std::atomic<int> syncs{0};
// Ends the process at its n-th change of a file; 0: never.
std::atomic<int> ends_at{0};

void CountFileChange() {
  if (ends_at != 0 && --ends_at == 0) kill(getpid(), SIGKILL);
}

template <typename Function>
Function* Next(Function*, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// Intercepts the runtime's calls.
extern "C" {

__attribute__((visibility("default"))) int fsync(int file) {
  static auto* const next = Next(&fsync, "fsync");
  ++syncs;
  CountFileChange();
  return next(file);
}

__attribute__((visibility("default"))) ssize_t write(int file, const void* bytes, size_t size) {
  static auto* const next = Next(&write, "write");
  CountFileChange();
  return next(file, bytes, ends_at == 1 ? size / 2 : size);
}

__attribute__((visibility("default"))) int renameat(int from_folder, const char* from,
                                                    int to_folder, const char* to) noexcept {
  static auto* const next = Next(&renameat, "renameat");
  CountFileChange();
  const int result = next(from_folder, from, to_folder, to);
  CountFileChange();
  return result;
}

}  // extern "C"

namespace mirolta::test {
namespace {

class RegistrationProcessesTest : public testing::Test {
 protected:
  void SetUp() override {
    umask(022);
    std::string pattern = (std::filesystem::temp_directory_path() / "mirolta-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
    file_ = folder_ + "/registry.reg";
    setenv("MIROLTA_REGISTRY", file_.c_str(), 1);
    ASSERT_NE(module_.handle(), nullptr);
    register_ = Entry("DllRegisterServer");
    unregister_ = Entry("DllUnregisterServer");
    ASSERT_EQ(register_(), S_OK);
    whole_ = AllRows();
    ASSERT_EQ(whole_.size(), 1 + 12 * 22 + 12 + 6 * 9u);
  }
  void TearDown() override {
    CoFreeUnusedLibrariesEx(0, 0);
    std::filesystem::remove_all(folder_);
  }

  LoadedModule::Plain Entry(LPCSTR name) {
    return reinterpret_cast<LoadedModule::Plain>(
        reinterpret_cast<void*>(GetProcAddress(module_.handle(), name)));
  }
  void Forget() { std::filesystem::remove(file_); }

  static pid_t Fork(const std::function<bool()>& work) {
    const pid_t child = fork();
    if (child == 0) _exit(work() ? 0 : 1);
    return child;
  }
  static int StatusOf(pid_t child) {
    int status = -1;
    waitpid(child, &status, 0);
    return status;
  }

  LoadedModule module_;
  LoadedModule::Plain register_ = nullptr;
  LoadedModule::Plain unregister_ = nullptr;
  std::string folder_;
  std::string file_;
  Rows whole_;
};

TEST_F(RegistrationProcessesTest, RegisteringIsOneWrite) {
  for (const bool registered : {false, true}) {
    if (!registered) Forget();
    syncs = 0;
    EXPECT_EQ(register_(), S_OK);
    EXPECT_EQ(syncs, 1);
  }
  syncs = 0;
  EXPECT_EQ(unregister_(), S_OK);
  EXPECT_EQ(syncs, 1);
}

TEST_F(RegistrationProcessesTest, AllThatRegisterAtOnceSucceed) {
  for (const bool registered : {false, true}) {
    if (!registered) Forget();
    std::vector<pid_t> children;
    for (int i = 0; i < 24; ++i) children.push_back(Fork([&] { return register_() == S_OK; }));
    for (const pid_t child : children) EXPECT_EQ(StatusOf(child), 0);
    EXPECT_EQ(AllRows(), whole_);
  }
}

// At every change of a file: all or nothing, and the next registration succeeds.
TEST_F(RegistrationProcessesTest, AKilledRegistrationIsWholeOrNothing) {
  struct Case {
    bool registers;
    bool registered;  // before
  };
  for (const Case& one : {Case{true, false}, Case{true, true}, Case{false, true}}) {
    int killed = 0;
    for (int place = 1;; ++place) {
      Forget();
      if (one.registered) {
        ASSERT_EQ(register_(), S_OK);
      }
      const Rows before = AllRows();
      const int status = StatusOf(Fork([&] {
        ends_at = place;
        return (one.registers ? register_ : unregister_)() == S_OK;
      }));
      const Rows after = AllRows();
      if (one.registers) {
        EXPECT_TRUE(after == before || after == whole_) << place << " " << after.size();
      } else {
        EXPECT_TRUE(after == before || after.size() == 3) << place << " " << after.size();
      }
      EXPECT_EQ(register_(), S_OK);
      EXPECT_EQ(AllRows(), whole_);
      if (WIFEXITED(status)) break;
      ++killed;
    }
    EXPECT_GE(killed, 4);  // write, fsync, before and after the renaming
  }
}

// The same at any moment.
TEST_F(RegistrationProcessesTest, ARegistrationKilledAtAnyMomentIsWholeOrNothing) {
  const RunTime time(1);
  for (unsigned round = 0; !time.IsOver(); ++round) {
    Forget();
    const pid_t child = Fork([&] { return register_() == S_OK; });
    usleep(round * 379 % 8000);
    kill(child, SIGKILL);
    StatusOf(child);
    const size_t rows = AllRows().size();
    EXPECT_TRUE(rows == 0 || rows == whole_.size()) << rows;
  }
}

TEST_F(RegistrationProcessesTest, OthersCreateObjectsDuringRegistration) {
  const pid_t child = Fork([&] {
    for (;;) {
      if (register_() != S_OK) return false;
    }
  });
  const RunTime time(1);
  int created = 0;
  for (; !time.IsOver(); ++created) {
    for (const OLECHAR* name : {OLESTR("Vardeko.crypt.HashObject"), OLESTR("Vardeko.crypt.RSA.1")}) {
      CLSID id = {};
      ASSERT_EQ(CLSIDFromProgID(name, &id), S_OK);
      OwnedReference<IDispatch> object;
      ASSERT_EQ(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                 reinterpret_cast<void**>(object.Put())),
                S_OK);
    }
    OwnedReference<ITypeLib> library;
    ASSERT_EQ(LoadRegTypeLib(LIBID_MIROLTALib, 1, 0, 0, library.Put()), S_OK);
  }
  EXPECT_GT(created, 10);
  EXPECT_EQ(waitpid(child, nullptr, WNOHANG), 0) << "registering failed";
  kill(child, SIGKILL);
  StatusOf(child);
}

TEST_F(RegistrationProcessesTest, ARegistryThatCannotBeWrittenIsReported) {
  Forget();
  ASSERT_EQ(mkdir((file_ + ".new").c_str(), 0755), 0);
  EXPECT_EQ(register_(), HRESULT_FROM_WIN32(ERROR_CANTWRITE));
  EXPECT_EQ(AllRows(), Rows());
  ASSERT_EQ(rmdir((file_ + ".new").c_str()), 0);
  ASSERT_EQ(register_(), S_OK);
  ASSERT_EQ(mkdir((file_ + ".new").c_str(), 0755), 0);
  EXPECT_EQ(unregister_(), S_OK);  // which never fails
  EXPECT_EQ(AllRows(), whole_);
}

}  // namespace
}  // namespace mirolta::test
