#include "next_prime.h"

#include "fermat_test.h"
#include "limb_basics.h"
#include "limb_scratch.h"
#include "prime_search.h"
#include "seam/threads.h"

namespace mirolta {

namespace {

// The least prime that the search finds.
constexpr uint32_t kLeastFound = 1229;

}  // namespace

HRESULT IsFermatPrime(bool* result, const BigInt& n) noexcept {
  if (FAILED(n.Status())) return n.Status();
  if (n.IsZero() || n.IsNegative()) {
    // No power is 1 modulo a negative number or 0.
    *result = false;
    return S_OK;
  }
  const size_t limbs = LimbsForWords(n.Used());
  LimbScratch memory(2 * CheckedSize(limbs));
  if (memory.Get() == nullptr) return E_OUTOFMEMORY;
  LimbsFromWords(memory.Get(), n.Magnitude().Words(), n.Used());
  const bool tested = FermatTest(result, memory.Get(), limbs, memory.Get() + limbs);
  return tested ? S_OK : E_OUTOFMEMORY;
}

HRESULT NextPrime(BigInt& n) noexcept {
  if (FAILED(n.Status())) return n.Status();
  if (n.IsNegative() || (n.Used() <= 1 && n.GetWord(0) <= kLeastFound)) {
    // No negative number is a Fermat prime, and the primes below are in the table.
    BigInt least(kLeastFound);
    if (FAILED(least.Status())) return least.Status();
    n.Swap(least);
    return S_OK;
  }
  const size_t limbs = LimbsForWords(n.Used()) + 1;
  LimbScratch memory{CheckedSize(limbs)};
  if (memory.Get() == nullptr) return E_OUTOFMEMORY;
  memory.Get()[limbs - 1] = 0;
  LimbsFromWords(memory.Get(), n.Magnitude().Words(), n.Used());
  size_t threads = 1;
  if constexpr (kHasThreads) threads = UsableProcessors();
  if (!SearchPrime(memory.Get(), limbs, threads)) return E_OUTOFMEMORY;
  const HRESULT status = n.AssignLimbs(memory.Get(), limbs);
  if (SUCCEEDED(status)) n.SetSignFlag(false);
  return status;
}

}  // namespace mirolta
