#include <pthread.h>
#include <sched.h>

#include <csignal>

#include "seam/thread_call.h"
#include "seam/threads.h"

namespace mirolta {

namespace {

void* Start(void* call) {
  static_cast<const ThreadCall*>(call)->Run();
  return nullptr;
}

// The signals of the process belong to the program's own threads. Those of a thread's faults do not wait.
constexpr int kFaults[] = {SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGTRAP};
void BlockSignals(sigset_t* old) {
  sigset_t blocked;
  sigfillset(&blocked);
  for (const int fault : kFaults) sigdelset(&blocked, fault);
  pthread_sigmask(SIG_SETMASK, &blocked, old);
}

}  // namespace

size_t UsableProcessors() noexcept {
  cpu_set_t usable;
  if (sched_getaffinity(0, sizeof usable, &usable) != 0) return 1;
  const auto count = static_cast<size_t>(CPU_COUNT(&usable));
  return count < kMostThreads ? count : kMostThreads;
}

void RunOnThreads(size_t count, void (*function)(void* context), void* context) noexcept {
  ThreadCall call = {function, context};
  pthread_t threads[kMostThreads];
  size_t started = 0;
  pthread_attr_t attributes;
  if (count > 1 && pthread_attr_init(&attributes) == 0) {
    pthread_attr_setstacksize(&attributes, kThreadStackBytes);
    sigset_t old;
    BlockSignals(&old);
    while (started < count - 1 && pthread_create(&threads[started], &attributes, Start, &call) == 0)
      ++started;
    pthread_sigmask(SIG_SETMASK, &old, nullptr);
    pthread_attr_destroy(&attributes);
  }
  function(context);
  while (started != 0) pthread_join(threads[--started], nullptr);
}

}  // namespace mirolta
