// The registry among threads and processes: batches, locks, forks.
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/wait.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "portable/registry_mode.h"
#include "portable/test_hooks.h"
#include "registry_support.h"

namespace {

std::atomic<int> syncs{0};

}  // namespace

// Intercepts the runtime's calls.
extern "C" __attribute__((visibility("default"))) int fsync(int file) {
  static auto* const next = reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, "fsync"));
  ++syncs;
  return next(file);
}

namespace mirolta {
namespace {

class RegistrySharing : public RegistryTest {
 protected:
  ~RegistrySharing() override {
    for (const pid_t child : children_) {
      kill(child, SIGKILL);
      waitpid(child, nullptr, 0);
    }
  }

  // Runs work in a child; its result is the child's exit status.
  pid_t Fork(const std::function<bool()>& work) {
    const pid_t child = fork();
    if (child == 0) _exit(work() ? 0 : 1);
    return child;
  }
  static bool Succeeds(pid_t child) {
    int status = -1;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }
  // A child that does nothing until the test's end; a bare one without what is done around forks.
  pid_t ForkIdle(bool bare) {
    const pid_t child = bare ? _Fork() : fork();
    if (child == 0) {
      for (;;) pause();
    }
    children_.push_back(child);
    return child;
  }

  std::string LockFile() const { return file_ + ".lock"; }
  // Opens the file that writers lock.
  int OpenLock() const { return open(LockFile().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600); }
  bool IsLocked() const {
    const int file = OpenLock();
    const bool locked = flock(file, LOCK_EX | LOCK_NB) != 0;
    close(file);
    return locked;
  }

 private:
  std::vector<pid_t> children_;
};

TEST_F(RegistrySharing, ABatchIsWrittenOnce) {
  syncs = 0;
  EXPECT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  for (int i = 0; i < 100; ++i) {
    const Key key(u"K" + Wide(std::to_string(i)));
    SetText(key, nullptr, u"x");
  }
  EXPECT_EQ(syncs, 0);
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(syncs, 1);
  // One that changes nothing is not written.
  EXPECT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  { const Key key(u"K1"); }
  EXPECT_EQ(SetText(Key(u"K2"), nullptr, u"x"), ERROR_SUCCESS);
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(syncs, 1);
}

TEST_F(RegistrySharing, ABatchIsItsThreads) {
  ASSERT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  { const Key key(u"Mine"); }
  std::thread([&] {
    EXPECT_EQ(OpenStatus(u"Mine"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_INVALID_PARAMETER);
    { const Key key(u"Yours"); }  // written at once
    EXPECT_NE(ReadFile(file_).find("Yours"), std::string::npos);
    EXPECT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
    { const Key key(u"Second"); }
    EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
    EXPECT_NE(ReadFile(file_).find("Second"), std::string::npos);
    EXPECT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
    { const Key key(u"Lost"); }
  }).join();                                              // within its batch
  EXPECT_EQ(OpenStatus(u"Yours"), ERROR_FILE_NOT_FOUND);  // the batch sees what it began with
  EXPECT_EQ(ReadFile(file_).find("Mine"), std::string::npos);
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  for (const auto* name : {u"Mine", u"Yours", u"Second"}) {
    EXPECT_EQ(OpenStatus(name), ERROR_SUCCESS) << Narrow(name);
  }
  EXPECT_EQ(OpenStatus(u"Lost"), ERROR_FILE_NOT_FOUND);
}

// Whatever others have written meanwhile, a batch's changes are made on it.
TEST_F(RegistrySharing, BatchesMerge) {
  for (const auto* path : {u"Gone\\Below", u"Kept\\Below", u"Set", u"Emptied"}) {
    const Key key(path);
  }
  const Key emptied(u"Emptied");
  SetText(emptied, u"v", u"old");
  const Key set(u"Set");
  SetText(set, u"v", u"old");
  ASSERT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"Gone\\Below"), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"Gone"), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"Kept\\Below"), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"Kept"), ERROR_SUCCESS);
  EXPECT_EQ(SetText(set, u"v", u"old"), ERROR_SUCCESS);  // unchanged, but part of the batch
  EXPECT_EQ(RegDeleteValueW(emptied, u"v"), ERROR_SUCCESS);
  { const Key key(u"Made"); }
  std::thread([] {
    EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"Gone\\Below"), ERROR_SUCCESS);
    { const Key key(u"Kept\\Other"); }
    EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"Set"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyW(HKEY_CLASSES_ROOT, u"Emptied"), ERROR_SUCCESS);
    SetText(Key(u"Made"), u"v", u"theirs");
  }).join();
  ASSERT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(SubkeysOf(HKEY_CLASSES_ROOT), (Names{"Kept", "Made", "Set"}));
  EXPECT_EQ(SubkeysOf(Key(u"Kept")), (Names{"Other"}));
  EXPECT_EQ(GetText(Key(u"Made"), u"v"), u"theirs");
  EXPECT_EQ(GetText(Key(u"Set"), u"v"), u"old");
}

TEST_F(RegistrySharing, ABatchInMemoryIsItsThreadsToo) {
  ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
  ASSERT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  { const Key key(u"Mine"); }
  std::thread([] {
    EXPECT_EQ(OpenStatus(u"Mine"), ERROR_FILE_NOT_FOUND);
    const Key key(u"Yours");
  }).join();
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(SubkeysOf(HKEY_CLASSES_ROOT), (Names{"Yours", "Mine"}));
  EXPECT_EQ(MiroltaRegistryInMemory(FALSE), ERROR_SUCCESS);
  EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(RegistrySharing, ABatchThatCannotBeWrittenChangesNothing) {
  { const Key key(u"Before"); }
  const std::string before = ReadFile(file_);
  ASSERT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  { const Key key(u"K"); }
  ASSERT_EQ(mkdir((file_ + ".new").c_str(), 0755), 0);
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_CANTWRITE);
  EXPECT_EQ(OpenStatus(u"K"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(ReadFile(file_), before);
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_INVALID_PARAMETER);  // it is over
  EXPECT_FALSE(IsLocked());
  // Nor one for whose writing memory is short.
  ASSERT_EQ(rmdir((file_ + ".new").c_str()), 0);
  LONG allowed = 0;
  for (;; ++allowed) {
    ASSERT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
    { const Key key(u"K\\L"); }
    SetText(Key(u"K"), u"v", u"text");
    MiroltaFailAllocationAfter(allowed);
    const LONG error = MiroltaRegistryBatch(FALSE);
    const bool failed = MiroltaAllocationHasFailed();
    MiroltaFailAllocationAfter(-1);
    ASSERT_EQ(error, failed ? ERROR_OUTOFMEMORY : ERROR_SUCCESS) << allowed;
    if (!failed) break;
    ASSERT_EQ(ReadFile(file_), before) << allowed;
    ASSERT_EQ(OpenStatus(u"K"), ERROR_FILE_NOT_FOUND) << allowed;
  }
  EXPECT_GT(allowed, 10);
}

// No lock is held over what others do between the changes of a batch.
TEST_F(RegistrySharing, ABatchLocksNobodyOut) {
  ASSERT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
  { const Key key(u"Mine"); }
  EXPECT_FALSE(IsLocked());
  // Another process begins and ends one meanwhile.
  EXPECT_TRUE(Succeeds(Fork([] {
    std::thread([] {
      MiroltaRegistryBatch(TRUE);
      { const Key key(u"Theirs"); }
      MiroltaRegistryBatch(FALSE);
    }).join();
    return true;
  })));
  EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
  EXPECT_EQ(SubkeysOf(HKEY_CLASSES_ROOT), (Names{"Theirs", "Mine"}));
}

TEST_F(RegistrySharing, ReadersDoNotWaitForWriters) {
  { const Key key(u"K"); }
  const int lock = OpenLock();
  ASSERT_EQ(flock(lock, LOCK_EX), 0);  // a process that writes, and is slow
  std::atomic<bool> written{false};
  std::thread writer([&] {
    const Key key(u"L");
    written = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_EQ(OpenStatus(u"K"), ERROR_SUCCESS);
  EXPECT_EQ(OpenStatus(u"L"), ERROR_FILE_NOT_FOUND);
  EXPECT_FALSE(written);
  flock(lock, LOCK_UN);
  writer.join();
  close(lock);
  EXPECT_EQ(OpenStatus(u"L"), ERROR_SUCCESS);
}

// Children that are forked while a thread writes keep nobody from writing, and may use the registry
// themselves.
TEST_F(RegistrySharing, ForkingDuringAWriteKeepsNoLock) {
  std::atomic<bool> over{false};
  std::thread writer([&] {
    const Key key(u"K");
    for (int i = 0; !over; ++i) {
      EXPECT_EQ(SetText(key, u"v", Wide(std::to_string(i))), ERROR_SUCCESS);
    }
  });
  for (int i = 0; i < 40; ++i) ForkIdle(i % 2 == 0);
  for (int i = 0; i < 10; ++i) {
    EXPECT_TRUE(Succeeds(Fork([] {
      alarm(60);  // ends it where it hangs
      const Key key(u"Children");
      return SetText(key, u"v", u"x") == ERROR_SUCCESS;
    })));
  }
  over = true;
  writer.join();
  EXPECT_FALSE(IsLocked());
  EXPECT_EQ(SetText(Key(u"K"), u"v", u"last"), ERROR_SUCCESS);
}

// The same where the writer is killed: it cannot unlock what a child has inherited.
TEST_F(RegistrySharing, AChildOfAKilledWriterKeepsNoLock) {
  for (int round = 0; round < 10; ++round) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t parent = fork();
    if (parent == 0) {
      std::thread([] {
        for (int i = 0;; ++i) SetText(Key(u"K"), u"v", Wide(std::to_string(i)));
      }).detach();
      usleep(static_cast<useconds_t>(3000 + 700 * round));
      const pid_t child = fork();
      if (child == 0) {  // which says so once its fork is complete
        const pid_t own = getpid();
        (void)!write(ends[1], &own, sizeof own);
      }
      for (;;) pause();
    }
    pid_t child = 0;
    ASSERT_EQ(read(ends[0], &child, sizeof child), static_cast<ssize_t>(sizeof child));
    kill(parent, SIGKILL);
    waitpid(parent, nullptr, 0);
    EXPECT_FALSE(IsLocked()) << round;
    kill(child, SIGKILL);
    close(ends[0]);
    close(ends[1]);
  }
}

TEST_F(RegistrySharing, ProgramsThatAreStartedInheritNothing) {
  std::atomic<bool> over{false};
  std::thread writer([&] {
    for (int i = 0; !over; ++i) SetText(Key(u"K"), u"v", Wide(std::to_string(i)));
  });
  const std::string list = folder_.File("list");
  for (int i = 0; i < 10; ++i) {
    const std::string command = "ls -l /proc/self/fd > " + list;
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(ReadFile(list).find("registry.reg"), std::string::npos) << ReadFile(list);
  }
  over = true;
  writer.join();
}

TEST_F(RegistrySharing, WritersAndBatchesOfManyThreadsLoseNothing) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 6; ++t) {
    threads.emplace_back([t] {
      const std::u16string own = u"T" + Wide(std::to_string(t));
      for (int i = 0; i < 10; ++i) {
        const bool batch = (t + i) % 2 == 0;
        if (batch) {
          EXPECT_EQ(MiroltaRegistryBatch(TRUE), ERROR_SUCCESS);
        }
        {
          const Key key(own + u"\\K" + Wide(std::to_string(i)));
          EXPECT_EQ(SetText(key, nullptr, own), ERROR_SUCCESS);
          EXPECT_EQ(GetText(key, nullptr), own);
        }
        if (batch) {
          EXPECT_EQ(MiroltaRegistryBatch(FALSE), ERROR_SUCCESS);
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int t = 0; t < 6; ++t) {
    EXPECT_EQ(SubkeysOf(Key(u"T" + Wide(std::to_string(t)))).size(), 10u);
  }
}

}  // namespace
}  // namespace mirolta
