#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>

#include "portable/test_hooks.h"

namespace mirolta::runtime {
namespace {

std::atomic<const MiroltaLockProbe*> g_probe{nullptr};

// While no probe is set, a lock pays for one relaxed load.
const MiroltaLockProbe* Probe() {
  if (g_probe.load(std::memory_order_relaxed) == nullptr) return nullptr;
  return g_probe.load(std::memory_order_acquire);
}

class RecursiveAttributes {
 public:
  RecursiveAttributes() {
    pthread_mutexattr_init(&attributes_);
    pthread_mutexattr_settype(&attributes_, PTHREAD_MUTEX_RECURSIVE);
  }
  const pthread_mutexattr_t* Get() const { return &attributes_; }

 private:
  pthread_mutexattr_t attributes_;
};

}  // namespace
}  // namespace mirolta::runtime

using namespace mirolta;
using namespace mirolta::runtime;

extern "C" void mirolta::MiroltaSetLockProbe(const MiroltaLockProbe* probe) {
  g_probe.store(probe, std::memory_order_release);
}

extern "C" void InitializeCriticalSection(CRITICAL_SECTION* section) {
  static const RecursiveAttributes recursive;
  pthread_mutex_init(&section->mutex, recursive.Get());
}

extern "C" void DeleteCriticalSection(CRITICAL_SECTION* section) {
  pthread_mutex_destroy(&section->mutex);
}

extern "C" void EnterCriticalSection(CRITICAL_SECTION* section) {
  pthread_mutex_lock(&section->mutex);
  const MiroltaLockProbe* probe = Probe();
  if (probe != nullptr && probe->entered != nullptr) probe->entered(section);
}

extern "C" void LeaveCriticalSection(CRITICAL_SECTION* section) {
  const MiroltaLockProbe* probe = Probe();
  if (probe != nullptr && probe->leaving != nullptr) probe->leaving(section);
  pthread_mutex_unlock(&section->mutex);
}

extern "C" DWORD GetCurrentThreadId() {
  return static_cast<DWORD>(syscall(SYS_gettid));
}
