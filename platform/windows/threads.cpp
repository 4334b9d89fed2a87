#include "seam/threads.h"

#include "platform.h"

namespace mirolta {

namespace {

constexpr SIZE_T kStackBytes = SIZE_T{1} << 20;

struct Call {
  void (*function)(void* context);
  void* context;
};

DWORD WINAPI Start(void* call) {
  auto work = [call]() -> HRESULT {
    const Call& made = *static_cast<const Call*>(call);
    made.function(made.context);
    return S_OK;
  };
  (void)RunWiped(work, StackUse::kDeep);
  return 0;
}

}  // namespace

size_t UsableProcessors() noexcept {
  DWORD_PTR usable = 0, present = 0;
  if (!GetProcessAffinityMask(GetCurrentProcess(), &usable, &present)) return 1;
  size_t count = 0;
  for (; usable != 0; usable &= usable - 1) ++count;
  // A process that runs in several groups of processors is given 0.
  if (count == 0) return 1;
  return count < kMostThreads ? count : kMostThreads;
}

void RunOnThreads(size_t count, void (*function)(void* context), void* context) noexcept {
  Call call = {function, context};
  HANDLE threads[kMostThreads];
  size_t started = 0;
  for (; started < count - 1; ++started) {
    threads[started] = CreateThread(nullptr, kStackBytes, Start, &call,
                                    STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    if (threads[started] == nullptr) break;
  }
  function(context);
  while (started != 0) {
    WaitForSingleObject(threads[--started], INFINITE);
    CloseHandle(threads[started]);
  }
}

}  // namespace mirolta
