// Operations of the platform that fail on demand: a test program defines the operation itself, and
// forwards to the runtime every call that is not to fail.
#pragma once

#include <dlfcn.h>

#include <cstdlib>

namespace mirolta::test {

// PlatformFault is one call that fails; those before and after it succeed.
class PlatformFault {
 public:
  // The call after the next `calls_before` ones fails.
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

// RuntimeOperation finds the operation that the program's own definition hides.
template <typename Function>
Function* RuntimeOperation(Function*, const char* name) {
  void* const found = dlsym(RTLD_NEXT, name);
  if (found == nullptr) std::abort();
  return reinterpret_cast<Function*>(found);
}

}  // namespace mirolta::test
