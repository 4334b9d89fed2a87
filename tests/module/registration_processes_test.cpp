// Registration by several processes: many at once, some killed, others creating objects meanwhile.
#include <signal.h>
#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <vector>

#include "child_process.h"
#include "loaded_module.h"
#include "platform_fault.h"
#include "registration_fixture.h"
#include "run_time.h"
#include "temporary_folder.h"

namespace {

std::atomic<int> syncs{0};
// Ends the process at its n-th change of a file; 0: never.
std::atomic<int> ends_at{0};

void CountFileChange() {
  if (ends_at != 0 && --ends_at == 0) kill(getpid(), SIGKILL);
}

}  // namespace

// Intercepts the runtime's calls.
extern "C" {

__attribute__((visibility("default"))) int fsync(int file) {
  static auto* const next = mirolta::test::RuntimeOperation(&fsync, "fsync");
  ++syncs;
  CountFileChange();
  return next(file);
}

__attribute__((visibility("default"))) ssize_t write(int file, const void* bytes, size_t size) {
  static auto* const next = mirolta::test::RuntimeOperation(&write, "write");
  CountFileChange();
  return next(file, bytes, ends_at == 1 ? size / 2 : size);
}

__attribute__((visibility("default"))) int renameat(int from_folder, const char* from,
                                                    int to_folder, const char* to) noexcept {
  static auto* const next = mirolta::test::RuntimeOperation(&renameat, "renameat");
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
    setenv("MIROLTA_REGISTRY", file_.c_str(), 1);
    ASSERT_NE(module_.handle(), nullptr);
    ASSERT_EQ(module_.register_server(), S_OK);
    whole_ = AllRows();
    ASSERT_EQ(whole_.size(), 1 + 12 * 22 + 12 + 6 * 9u);
  }
  void TearDown() override { CoFreeUnusedLibrariesEx(0, 0); }

  void Forget() { std::filesystem::remove(file_); }

  LoadedModule module_;
  TemporaryFolder folder_;
  const std::string file_ = folder_.File("registry.reg");
  Rows whole_;
};

TEST_F(RegistrationProcessesTest, RegisteringIsOneWrite) {
  for (const bool registered : {false, true}) {
    if (!registered) Forget();
    syncs = 0;
    EXPECT_EQ(module_.register_server(), S_OK);
    EXPECT_EQ(syncs, 1);
  }
  syncs = 0;
  EXPECT_EQ(module_.unregister_server(), S_OK);
  EXPECT_EQ(syncs, 1);
}

TEST_F(RegistrationProcessesTest, AllThatRegisterAtOnceSucceed) {
  for (const bool registered : {false, true}) {
    if (!registered) Forget();
    std::vector<pid_t> children;
    for (int i = 0; i < 24; ++i)
      children.push_back(Fork([&] { return module_.register_server() == S_OK; }));
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
        ASSERT_EQ(module_.register_server(), S_OK);
      }
      const Rows before = AllRows();
      const int status = StatusOf(Fork([&] {
        ends_at = place;
        return (one.registers ? module_.register_server : module_.unregister_server)() == S_OK;
      }));
      const Rows after = AllRows();
      if (one.registers) {
        EXPECT_TRUE(after == before || after == whole_) << place << " " << after.size();
      } else {
        EXPECT_TRUE(after == before || after.size() == 3) << place << " " << after.size();
      }
      EXPECT_EQ(module_.register_server(), S_OK);
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
    const pid_t child = Fork([&] { return module_.register_server() == S_OK; });
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
      if (module_.register_server() != S_OK) return false;
    }
  });
  const RunTime time(1);
  constexpr int kEnough = 10;  // however long a busy machine takes for them
  for (int created = 0; created <= kEnough || !time.IsOver(); ++created) {
    for (const OLECHAR* name :
         {OLESTR("Vardeko.crypt.HashObject"), OLESTR("Vardeko.crypt.RSA.1")}) {
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
  EXPECT_EQ(waitpid(child, nullptr, WNOHANG), 0) << "registering failed";
  kill(child, SIGKILL);
  StatusOf(child);
}

TEST_F(RegistrationProcessesTest, ARegistryThatCannotBeWrittenIsReported) {
  Forget();
  ASSERT_EQ(mkdir((file_ + ".new").c_str(), 0755), 0);
  EXPECT_EQ(module_.register_server(), HRESULT_FROM_WIN32(ERROR_CANTWRITE));
  EXPECT_EQ(AllRows(), Rows());
  ASSERT_EQ(rmdir((file_ + ".new").c_str()), 0);
  ASSERT_EQ(module_.register_server(), S_OK);
  ASSERT_EQ(mkdir((file_ + ".new").c_str(), 0755), 0);
  EXPECT_EQ(module_.unregister_server(), S_OK);  // which never fails
  EXPECT_EQ(AllRows(), whole_);
}

}  // namespace
}  // namespace mirolta::test
