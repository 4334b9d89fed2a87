#include "seam/threads.h"

#include "platform.h"
#include "seam/thread_call.h"

namespace mirolta {

namespace {

DWORD WINAPI Start(void* call) {
  static_cast<const ThreadCall*>(call)->Run();
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
  ThreadCall call = {function, context};
  HANDLE threads[kMostThreads];
  size_t started = 0;
  for (; started < count - 1; ++started) {
    threads[started] = CreateThread(nullptr, kThreadStackBytes, Start, &call,
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
