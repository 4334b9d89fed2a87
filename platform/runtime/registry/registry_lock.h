// The lock that writers of the registry's file take turns by: on a file beside it.
#pragma once

#include "portable/registry.h"

namespace mirolta::runtime {

// RegistryLock keeps other writers, threads of this process too, from changing the file. The folder
// is made if there is none.
class RegistryLock {
 public:
  RegistryLock() = default;
  RegistryLock(const RegistryLock&) = delete;
  RegistryLock& operator=(const RegistryLock&) = delete;
  ~RegistryLock() { Leave(); }

  LONG Enter(const char* file);
  void Leave();
  bool IsHeld() const { return lock_file_ >= 0; }

  // Around a fork: the child does not keep the locks of its parent's threads.
  static void BeforeFork();
  static void AfterFork(bool in_child);

 private:
  int lock_file_ = -1;
  RegistryLock* next_ = nullptr;  // of those that are held
};

}  // namespace mirolta::runtime
