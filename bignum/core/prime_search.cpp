#include "prime_search.h"

#include <atomic>
#include <memory>
#include <new>

#include "fermat_batch.h"
#include "fermat_test.h"
#include "limb_basics.h"
#include "limb_scratch.h"
#include "prime_sieve.h"
#include "seam/threads.h"

namespace mirolta {

namespace {

// Shorter searches end before other threads have begun.
constexpr size_t kLeastSharedBits = 1280;

// TestBatch sets *found to the index of the first Fermat prime, count if there is none.
// Shapes: candidates[count * n], ascending and odd, count <= batch.Capacity();
//         memory[kOtherBaseCount * n].
bool TestBatch(size_t* found, const FermatBatch& batch, const Limb* candidates, size_t count,
               size_t n, Limb* memory) {
  Limb bases[FermatBatch::kMost];
  for (size_t i = 0; i < count; ++i) bases[i] = 2;
  uint32_t passed = 0;
  if (!batch.Test(&passed, candidates, bases, count, n)) return false;
  for (size_t i = 0; i < count; ++i) {
    if ((passed >> i & 1) == 0) continue;
    for (size_t j = 0; j < kOtherBaseCount; ++j) CopyLimbs(memory + j * n, candidates + i * n, n);
    uint32_t others = 0;
    if (!batch.Test(&others, memory, kOtherBases, kOtherBaseCount, n)) return false;
    if (others == (1u << kOtherBaseCount) - 1) {
      *found = i;
      return true;
    }
  }
  *found = count;
  return true;
}

// TestCandidates does the same, one by one where the batch is too small.
bool TestCandidates(size_t* found, const Limb* candidates, size_t count, size_t n, Limb* memory) {
  const FermatBatch batch(LimbBits(candidates + (count - 1) * n, n));
  if (batch.Capacity() >= count) return TestBatch(found, batch, candidates, count, n, memory);
  for (size_t i = 0; i < count; ++i) {
    const Limb* const candidate = candidates + i * n;
    bool prime = false;
    if (!FermatTest(&prime, candidate, SignificantLimbs(candidate, n), memory)) return false;
    if (prime) {
      *found = i;
      return true;
    }
  }
  *found = count;
  return true;
}

bool SearchInOrder(Limb* start, size_t n, PrimeSieve* sieve) {
  const FermatBatch batch(LimbBits(start, n));
  const size_t together = batch.Capacity() != 0 ? batch.Capacity() : 1;
  LimbScratch memory((CheckedSize(together) + kOtherBaseCount) * CheckedSize(n));
  if (memory.Get() == nullptr) return false;
  Limb* const candidates = memory.Get();
  Limb* const spare = candidates + together * n;
  size_t waiting = 0;
  for (;; sieve->NextWindow()) {
    uint32_t reached = 0;
    for (uint32_t offset = 0; offset < sieve->Size(); ++offset) {
      if (!sieve->IsCandidate(offset)) continue;
      AddLimb(start, n, static_cast<Limb>(offset - reached));
      reached = offset;
      if (sieve->Contradicts(offset, start, n)) continue;
      CopyLimbs(candidates + waiting++ * n, start, n);
      if (waiting < together) continue;
      size_t found = waiting;
      if (!TestCandidates(&found, candidates, waiting, n, spare)) return false;
      if (found != waiting) {
        CopyLimbs(start, candidates + found * n, n);
        return true;
      }
      waiting = 0;
    }
    AddLimb(start, n, static_cast<Limb>(sieve->Size() - reached));
  }
}

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
    bool prime = false;
    const bool tested =
        FermatTest(&prime, candidate, SignificantLimbs(candidate, n), candidate + n);
    if (tested && !prime) continue;
    shared.EndAt(offset, !tested);
    return;
  }
}

bool SearchOnThreads(Limb* start, size_t n, PrimeSieve* sieve, size_t threads) {
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

}  // namespace

bool SearchPrime(Limb* start, size_t n, size_t threads) noexcept {
  const std::unique_ptr<PrimeSieve> sieve(new (std::nothrow) PrimeSieve(start, n));
  if (sieve == nullptr) return false;
  if constexpr (kHasThreads) {
    if (threads > 1 && LimbBits(start, n) >= kLeastSharedBits) {
      return SearchOnThreads(start, n, sieve.get(), threads);
    }
  }
  return SearchInOrder(start, n, sieve.get());
}

}  // namespace mirolta
