#include "prime_search.h"

#include <memory>
#include <new>

#include "fermat_batch.h"
#include "fermat_test.h"
#include "limb_basics.h"
#include "limb_scratch.h"
#include "prime_sieve.h"
#include "seam/threads.h"
#include "shared_prime_search.h"

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
