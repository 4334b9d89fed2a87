// The registry among threads and processes: locks, forks, readers beside writers.
#include <signal.h>
#include <sys/file.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "all_at_once.h"
#include "registry_support.h"

namespace mirolta {
namespace {

using RegistrySharing = SharedRegistryTest;

TEST_F(RegistrySharing, OtherProcessesChangesAreSeen) {
  const Key key(u"K");
  SetText(key, u"v", u"one");
  EXPECT_TRUE(test::Succeeds(test::Fork([] {
    const Key same(u"K");
    return SetText(same, u"v", u"two") == ERROR_SUCCESS && GetText(same, u"v") == u"two";
  })));
  EXPECT_EQ(GetText(key, u"v"), u"two");
  std::filesystem::remove(file_);
  EXPECT_EQ(GetText(key, u"v"), u"<1018>");
}

TEST_F(RegistrySharing, ProcessesWritingAtOnceLoseNothing) {
  constexpr int kProcesses = 4;
  constexpr int kEach = 25;
  std::vector<pid_t> children;
  for (int p = 0; p < kProcesses; ++p) {
    children.push_back(test::Fork([p] {
      bool good = true;
      for (int i = 0; i < kEach; ++i) {
        const std::u16string path = Wide("P" + std::to_string(p) + "\\K" + std::to_string(i));
        good = SetText(Key(path), nullptr, path) == ERROR_SUCCESS && good;
      }
      return good;
    }));
  }
  for (const pid_t child : children) EXPECT_TRUE(test::Succeeds(child));
  for (int p = 0; p < kProcesses; ++p) {
    for (int i = 0; i < kEach; ++i) {
      const std::u16string path = Wide("P" + std::to_string(p) + "\\K" + std::to_string(i));
      ASSERT_EQ(OpenStatus(path), ERROR_SUCCESS);
      EXPECT_EQ(GetText(Key(path), nullptr), path);
    }
  }
}

TEST_F(RegistrySharing, ThreadsWritingAtOnceLoseNothing) {
  test::AllAtOnce(4, [](unsigned t) {
    for (int i = 0; i < 20; ++i) {
      const Key key(u"T" + Wide(std::to_string(t)));
      EXPECT_EQ(SetText(key, Wide(std::to_string(i)).c_str(), u"x"), ERROR_SUCCESS);
    }
  });
  for (int t = 0; t < 4; ++t) EXPECT_EQ(ValuesOf(Key(u"T" + Wide(std::to_string(t)))).size(), 20u);
}

// A process that is killed while it writes leaves the content before or after one of its changes.
TEST_F(RegistrySharing, AKilledWriterLeavesAWholeFile) {
  {
    const Key key(u"K");
    SetText(key, u"a", u"0");
    SetText(key, u"z", std::u16string(20000, u'0'));
  }
  for (int round = 0; round < 20; ++round) {
    const pid_t child = test::Fork([]() -> bool {
      const Key key(u"K");
      for (char16_t c = u'1';; c = c == u'9' ? u'1' : static_cast<char16_t>(c + 1)) {
        SetText(key, u"z", std::u16string(20000, c));
      }
    });
    usleep(static_cast<useconds_t>(1000 + round * 700));
    kill(child, SIGKILL);
    ASSERT_TRUE(WIFSIGNALED(test::StatusOf(child)));
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
    EXPECT_TRUE(test::Succeeds(test::Fork([] {
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
    test::StatusOf(parent);
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

}  // namespace
}  // namespace mirolta
