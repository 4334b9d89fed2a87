#include "heap/wipe_on_free.h"

#include <atomic>

#include "portable/test_hooks.h"

namespace mirolta::runtime {
namespace {

std::atomic<bool> g_keeps_destroyed{false};

}  // namespace

// Relaxed: a test sets it before what it watches.
bool WipesOnFree() {
  return !g_keeps_destroyed.load(std::memory_order_relaxed);
}

}  // namespace mirolta::runtime

using namespace mirolta::runtime;

extern "C" void mirolta::MiroltaKeepDestroyedArrays(bool keep) {
  g_keeps_destroyed.store(keep, std::memory_order_relaxed);
}
