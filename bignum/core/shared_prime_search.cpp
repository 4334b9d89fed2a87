#include "shared_prime_search.h"

#include <atomic>

#include "fermat_test.h"
#include "limb_basics.h"
#include "limb_scratch.h"
#include "seam/threads.h"

namespace mirolta {

namespace {

// The threads' work on one window. All atomics are relaxed: threads read nothing that others have
// written but them, and the caller reads after all have ended.
struct SharedWindow {
  const PrimeSieve& sieve;
  const Limb* start;
  size_t n;
  Limb* memory;  // 2 * n limbs a thread
  std::atomic<size_t> threads{0};
  std::atomic<uint32_t> next{0};  // the next offset that no thread has taken
  // Twice the least offset where the search ends so far, plus 1 if memory was short there.
  std::atomic<uint32_t> end;

  void EndAt(uint32_t offset, bool failed) {
    const uint32_t here = 2 * offset + (failed ? 1 : 0);
    uint32_t least = end.load(std::memory_order_relaxed);
    while (here < least && !end.compare_exchange_weak(least, here, std::memory_order_relaxed)) {
    }
  }
};

// TakeCandidates tests candidates that no other thread has taken, in ascending order. A thread that
// finds a prime is done, while those with lesser candidates go on.
void TakeCandidates(void* context) {
  SharedWindow& shared = *static_cast<SharedWindow*>(context);
  const size_t n = shared.n;
  Limb* const candidate =
      shared.memory + shared.threads.fetch_add(1, std::memory_order_relaxed) * 2 * n;
  CopyLimbs(candidate, shared.start, n);
  uint32_t reached = 0;
  for (;;) {
    const uint32_t offset = shared.next.fetch_add(1, std::memory_order_relaxed);
    if (2 * offset >= shared.end.load(std::memory_order_relaxed)) return;
    if (!shared.sieve.IsCandidate(offset)) continue;
    AddLimb(candidate, n, static_cast<Limb>(offset - reached));
    reached = offset;
    if (shared.sieve.Contradicts(offset, candidate, n)) continue;
    bool ends = true;  // also without memory
    const bool tested = FermatTest(&ends, candidate, SignificantLimbs(candidate, n), candidate + n);
    if (!ends) continue;
    shared.EndAt(offset, !tested);
    return;
  }
}

}  // namespace

bool SearchOnThreads(Limb* start, size_t n, PrimeSieve* sieve, size_t threads) noexcept {
  LimbScratch memory(CheckedSize(threads) * 2 * CheckedSize(n));
  if (memory.Get() == nullptr) return false;
  for (;; sieve->NextWindow()) {
    SharedWindow shared = {
        .sieve = *sieve, .start = start, .n = n, .memory = memory.Get(), .end = 2 * sieve->Size()};
    RunOnThreads(threads, TakeCandidates, &shared);
    const uint32_t end = shared.end.load(std::memory_order_relaxed);
    AddLimb(start, n, static_cast<Limb>(end / 2));
    if (end / 2 != sieve->Size()) return (end & 1) == 0;
  }
}

}  // namespace mirolta
