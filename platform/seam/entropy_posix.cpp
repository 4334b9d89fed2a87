#include <pthread.h>
#include <sys/random.h>

#include <atomic>
#include <cerrno>

#include "seam/random.h"

namespace mirolta {

namespace {

// Zero until forks are watched.
std::atomic<uint32_t> forks{0};

void CountFork() {
  forks.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace

uint32_t ForkCount() noexcept {
  return forks.load(std::memory_order_relaxed);
}

// Relaxed: a thread that sees the count without having registered forks after the registration, since
// both hold the C library's lock. A child reads what its only thread has counted.
bool WatchForks() noexcept {
  if (ForkCount() != 0) return true;
  // Two threads may register at once: a fork then counts twice.
  if (pthread_atfork(nullptr, nullptr, CountFork) != 0) return false;
  uint32_t unwatched = 0;
  forks.compare_exchange_strong(unwatched, 1);
  return true;
}

bool SystemEntropy(uint8_t* bytes, uint32_t count) noexcept {
  while (count > 0) {
    const auto got = getrandom(bytes, count, 0);
    if (got < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes += got;
    count -= static_cast<uint32_t>(got);
  }
  return true;
}

}  // namespace mirolta
