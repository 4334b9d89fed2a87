// The runtime's allocations that fail on demand, as test_hooks.h has them. The runtime is the system's, whose
// own code need not survive missing memory: the calls fail by which the program asks it for memory.
#include "import_patch.h"
#include "portable/test_hooks.h"

namespace mirolta {

namespace {

LONG allowed = -1;
bool has_failed = false;

bool FailsNow() {
  if (allowed < 0 || allowed-- > 0) return false;
  has_failed = true;
  return true;
}

constexpr HRESULT OutOfMemory(HRESULT) {
  return E_OUTOFMEMORY;
}
template <typename Block>
constexpr Block* OutOfMemory(Block*) {
  return nullptr;
}

// One import: the function that stands before the system's.
template <auto kFunction>
struct Failing;
template <typename Result, typename... Parameters, Result(WINAPI* kFunction)(Parameters...)>
struct Failing<kFunction> {
  static Result WINAPI Call(Parameters... parameters) {
    return FailsNow() ? OutOfMemory(Result{}) : system(parameters...);
  }
  static inline Result(WINAPI* system)(Parameters...) = nullptr;
  static void Replace(const char* name) {
    void* const before =
        test::ReplaceImportOf(GetModuleHandleW(nullptr), name, reinterpret_cast<void*>(Call));
    system = reinterpret_cast<Result(WINAPI*)(Parameters...)>(before);
  }
};

#define MIROLTA_FAILING(function) \
  Failing<static_cast<decltype(&function)>(function)>::Replace(#function)
[[maybe_unused]] const bool replaced = [] {
  MIROLTA_FAILING(SysAllocString);
  MIROLTA_FAILING(SysAllocStringLen);
  MIROLTA_FAILING(SysAllocStringByteLen);
  MIROLTA_FAILING(SafeArrayCreate);
  MIROLTA_FAILING(CreateErrorInfo);
  MIROLTA_FAILING(CreateStreamOnHGlobal);
  MIROLTA_FAILING(LoadTypeLib);
  MIROLTA_FAILING(LoadRegTypeLib);
  MIROLTA_FAILING(RegisterTypeLib);
  return true;
}();

}  // namespace

void MiroltaFailAllocationAfter(LONG count) {
  allowed = count;
  has_failed = false;
}

bool MiroltaAllocationHasFailed() {
  return has_failed;
}

}  // namespace mirolta
