#include "heap/wipe_on_free.h"

#include <atomic>

#include "portable/test_hooks.h"

namespace mirolta {
namespace {

std::atomic<bool> g_keeps_destroyed{false};

}  // namespace

extern "C" void MiroltaKeepDestroyedArrays(bool keep) {
  g_keeps_destroyed.store(keep, std::memory_order_relaxed);
}

bool WipesOnFree() {
  return !g_keeps_destroyed.load(std::memory_order_relaxed);
}

}  // namespace mirolta
