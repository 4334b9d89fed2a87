// The lock that serialises writers of the registry's file.
#pragma once

#include "mirolta/registry.h"

namespace mirolta::runtime {

// RegistryLock excludes other writers, threads of this process included, by a lock on a file beside
// the registry's.
class RegistryLock {
 public:
  RegistryLock() = default;
  RegistryLock(const RegistryLock&) = delete;
  RegistryLock& operator=(const RegistryLock&) = delete;
  ~RegistryLock() { Leave(); }

  // Enter waits for the lock. It follows symbolic links, as StoreRegistryFile does, and creates the
  // folders of the file, with the mode of the process's umask or, `for_all`, one with which
  // everybody can read them.
  // Errors: those of FollowLinks; ERROR_ACCESS_DENIED, ERROR_WRITE_PROTECT, ERROR_DISK_FULL,
  //         ERROR_CANTWRITE.
  LONG Enter(const char* file, bool for_all);
  void Leave();
  bool IsHeld() const { return lock_file_ >= 0; }

  // Called around fork: the child does not keep the locks of its parent's threads.
  static void BeforeFork();
  static void AfterFork(bool in_child);

 private:
  int lock_file_ = -1;
  RegistryLock* next_ = nullptr;  // in the list of held locks
};

}  // namespace mirolta::runtime
