// Holds a critical section for a scope.
#pragma once

#include "platform.h"

namespace mirolta {

class ScopedLock {
 public:
  explicit ScopedLock(CRITICAL_SECTION& section) : section_(section) {
    EnterCriticalSection(&section_);
  }
  ~ScopedLock() { LeaveCriticalSection(&section_); }
  ScopedLock(const ScopedLock&) = delete;
  ScopedLock& operator=(const ScopedLock&) = delete;

 private:
  CRITICAL_SECTION& section_;
};

}  // namespace mirolta
