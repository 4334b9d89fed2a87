// Operations of the platform that fail on demand. A test program defines an operation under its own
// name, asks its fault whether this is the call that fails, and hands all others to the runtime.
#pragma once

#include <dlfcn.h>

#include <cstdlib>

namespace mirolta::test {

// A call to fail: those before it go well, and so do the ones after it.
class PlatformFault {
 public:
  // The operation fails after so many calls.
  void Arm(int calls_before = 0) {
    armed_ = true;
    calls_before_ = calls_before;
  }
  void Disarm() { armed_ = false; }
  // True if it was armed and has failed since.
  bool HasStruck() const { return !armed_; }

  // For the operation: whether this call fails.
  bool Strikes() {
    if (!armed_ || calls_before_-- > 0) return false;
    armed_ = false;
    return true;
  }

 private:
  bool armed_ = false;
  int calls_before_ = 0;
};

// RuntimeOperation finds the operation that the program's own one stands before.
template <typename Function>
Function* RuntimeOperation(Function*, const char* name) {
  void* const found = dlsym(RTLD_NEXT, name);
  if (found == nullptr) std::abort();
  return reinterpret_cast<Function*>(found);
}

}  // namespace mirolta::test
