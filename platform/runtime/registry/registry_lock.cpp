#include "registry/registry_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>

#include "portable/repeated_call.h"
#include "system/file_name.h"
#include "system/opened_file.h"

namespace mirolta::runtime {
namespace {

constexpr mode_t kFolderMode = 0755;
constexpr mode_t kLockMode = 0600;  // whoever can open it can hold it

std::mutex g_held_lock;  // held briefly
RegistryLock* g_held = nullptr;

// Creates the folders above `file`.
LONG MakeFolders(const char* file, bool for_all) {
  RuntimeArray<char> folder;
  for (const char* slash = std::strchr(file + 1, '/'); slash != nullptr;
       slash = std::strchr(slash + 1, '/')) {
    folder.Shorten(0);
    if (!folder.Append(file, static_cast<size_t>(slash - file)) || !folder.Append('\0')) {
      return ERROR_OUTOFMEMORY;
    }
    struct stat facts = {};
    if (mkdir(folder.Data(), kFolderMode) == 0) {
      if (!for_all || chmod(folder.Data(), kFolderMode) == 0) continue;
      return ErrorOfErrno(errno, ERROR_CANTWRITE);
    }
    // An existing folder may be reported as one that cannot be created.
    const int reason = errno;
    if (stat(folder.Data(), &facts) != 0) return ErrorOfErrno(reason, ERROR_CANTWRITE);
  }
  return ERROR_SUCCESS;
}

}  // namespace

LONG RegistryLock::Enter(const char* file, bool for_all) {
  RuntimeArray<char> target;
  RuntimeArray<char> name;
  LONG error = FollowLinks(file, &target);
  if (error != ERROR_SUCCESS) return error;
  if (!JoinFileName(&name, target.Data(), ".lock")) return ERROR_OUTOFMEMORY;
  constexpr int kFlags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
  const auto open_file = [&] {
    // A child forked before the lock is listed would keep it open.
    const std::lock_guard<std::mutex> lock(g_held_lock);
    lock_file_ = Repeated([&] { return open(name.Data(), kFlags, kLockMode); });
    if (lock_file_ < 0) return;
    next_ = g_held;
    g_held = this;
  };
  open_file();
  if (lock_file_ < 0 && errno == ENOENT) {
    error = MakeFolders(target.Data(), for_all);
    if (error != ERROR_SUCCESS) return error;
    open_file();
  }
  if (lock_file_ < 0) return ErrorOfErrno(errno, ERROR_CANTWRITE);
  if (Repeated([&] { return flock(lock_file_, LOCK_EX); }) != 0) {
    error = ErrorOfErrno(errno, ERROR_CANTWRITE);
    Leave();
    return error;
  }
  return ERROR_SUCCESS;
}

void RegistryLock::Leave() {
  if (lock_file_ < 0) return;
  const std::lock_guard<std::mutex> lock(g_held_lock);
  RegistryLock** link = &g_held;
  while (*link != this) link = &(*link)->next_;
  *link = next_;
  // Unlocked explicitly: a child that inherited the descriptor would keep the lock after close.
  flock(lock_file_, LOCK_UN);
  close(lock_file_);
  lock_file_ = -1;
}

void RegistryLock::BeforeFork() {
  g_held_lock.lock();
}

void RegistryLock::AfterFork(bool in_child) {
  for (; in_child && g_held != nullptr; g_held = g_held->next_) {
    close(g_held->lock_file_);
    g_held->lock_file_ = -1;
  }
  g_held_lock.unlock();
}

}  // namespace mirolta::runtime
