#include "next_prime.h"

#include <initializer_list>
#include <new>

#include "divide.h"
#include "fermat_batch.h"
#include "fermat_test.h"
#include "limb_basics.h"
#include "limb_scratch.h"
#include "small_primes.h"

namespace mirolta {

namespace {

// The smallest prime that the search can find.
constexpr uint32_t kLeastFound = 1229;

// How many offsets are sieved at a time: about six times the mean distance of primes of that size.
constexpr uint32_t kMostWindow = 8192;
uint32_t WindowFor(size_t bits) {
  const size_t window = bits * 4 < 512 ? 512 : bits * 4;
  return window < kMostWindow ? static_cast<uint32_t>(window) : kMostWindow;
}

// base^e mod p for p < 2^16.
uint32_t SmallPower(uint32_t base, uint32_t e, uint32_t p) {
  uint32_t result = 1;
  for (base %= p; e != 0; e >>= 1) {
    if ((e & 1) != 0) result = result * base % p;
    base = base * base % p;
  }
  return result % p;
}

// Tests candidates[count * n], growing odd numbers of which the batch takes that many, and sets
// *found to the index of the first that is a Fermat prime, count if none is.
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

// The same, one after another if there is no faster way.
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

// PrimeSearch walks up from a number. Offsets with a divisor among the table's primes are passed
// over. So are those with a divisor p among the further small primes, unless p does not contradict
// that the candidate is a Fermat prime: a^(n-1) = 1 mod n needs a^(n-1) = 1 mod p, which is a test
// in small numbers, done when the search comes by.
class PrimeSearch {
 public:
  PrimeSearch() noexcept = default;
  ~PrimeSearch() { WipeMemory(this, sizeof *this); }

  // start[n] has a zero limb at the top for the carry; it becomes the prime.
  bool Run(Limb* start, size_t n);

 private:
  void FindResidues(const Limb* start, size_t n);
  void SieveWindow();
  static bool Contradicts(const Limb* candidate, size_t n, uint32_t p);

  size_t primes_ = 0;                 // how many are sieved with
  uint16_t first_[kSmallPrimeCount];  // offset of the first multiple in the window
  uint32_t window_ = 0;
  // For each offset: 0, kTableDivisor, or a further prime that divides the candidate.
  uint16_t divisor_[kMostWindow];
};

constexpr uint16_t kTableDivisor = 1;

// The further primes pay while finding a residue costs less than the exponentiations it saves.
size_t PrimesToSieve(size_t bits) {
  const size_t limit = bits * bits / 16;
  size_t count = kTablePrimes;
  while (count < kSmallPrimeCount && kSmallPrimes.primes[count] < limit) ++count;
  return count;
}

void PrimeSearch::FindResidues(const Limb* start, size_t n) {
  for (size_t i = 0; i < primes_;) {
    // As many primes as have a product in one limb share a pass.
    Limb product = 1;
    size_t end = i;
    while (end < primes_ && product <= kLimbMax / kSmallPrimes.primes[end]) {
      product = static_cast<Limb>(product * kSmallPrimes.primes[end++]);
    }
    const Limb residue = ModLimb(start, n, PrepareDivisor(product));
    for (; i < end; ++i) {
      const uint32_t p = kSmallPrimes.primes[i];
      const uint32_t r = static_cast<uint32_t>(residue % p);
      first_[i] = static_cast<uint16_t>(r == 0 ? 0 : p - r);
    }
  }
}

bool PrimeSearch::Contradicts(const Limb* candidate, size_t n, uint32_t p) {
  // (candidate - 1) mod (p - 1)
  const uint32_t residue = static_cast<uint32_t>(ModLimb(candidate, n, PrepareDivisor(p - 1)));
  const uint32_t e = (residue + p - 2) % (p - 1);
  for (const uint32_t base : {2u, 3u, 5u, 7u}) {
    if (SmallPower(base, e, p) != 1) return true;
  }
  return false;
}

void PrimeSearch::SieveWindow() {
  for (uint32_t offset = 0; offset < window_; ++offset) divisor_[offset] = 0;
  // The table's primes come last, as they decide alone.
  for (size_t i = primes_; i-- != 0;) {
    const uint32_t p = kSmallPrimes.primes[i];
    const uint16_t mark = i < kTablePrimes ? kTableDivisor : static_cast<uint16_t>(p);
    uint32_t offset = first_[i];
    for (; offset < window_; offset += p) divisor_[offset] = mark;
    // The next window starts window_ further on; offset is less than p beyond that.
    first_[i] = static_cast<uint16_t>(offset - window_);
  }
}

bool PrimeSearch::Run(Limb* start, size_t n) {
  const size_t bits = LimbBits(start, n);
  const FermatBatch batch(bits);
  const size_t together = batch.Capacity() != 0 ? batch.Capacity() : 1;
  LimbScratch memory((CheckedSize(together) + kOtherBaseCount) * CheckedSize(n));
  if (memory.Get() == nullptr) return false;
  Limb* const candidates = memory.Get();
  Limb* const spare = candidates + together * n;
  size_t waiting = 0;
  primes_ = PrimesToSieve(bits);
  window_ = WindowFor(bits);
  FindResidues(start, n);
  for (;;) {
    SieveWindow();
    uint32_t reached = 0;
    for (uint32_t offset = 0; offset < window_; ++offset) {
      const uint32_t divisor = divisor_[offset];
      if (divisor == kTableDivisor) continue;
      AddLimb(start, n, static_cast<Limb>(offset - reached));
      reached = offset;
      if (divisor != 0 && Contradicts(start, n, divisor)) continue;
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
    AddLimb(start, n, static_cast<Limb>(window_ - reached));
  }
}

}  // namespace

HRESULT IsFermatPrime(bool* result, const BigInt& n) noexcept {
  if (FAILED(n.Status())) return n.Status();
  if (n.IsZero() || n.IsNegative()) {
    // Modulo a number below zero no power is 1.
    *result = false;
    return S_OK;
  }
  const size_t limbs = LimbsForWords(n.Used());
  LimbScratch memory(2 * CheckedSize(limbs));
  if (memory.Get() == nullptr) return E_OUTOFMEMORY;
  LimbsFromWords(memory.Get(), n.Magnitude().Words(), n.Used());
  bool found = false;
  if (!FermatTest(&found, memory.Get(), limbs, memory.Get() + limbs)) return E_OUTOFMEMORY;
  *result = found;
  return S_OK;
}

HRESULT NextPrime(BigInt& n) noexcept {
  if (FAILED(n.Status())) return n.Status();
  if (n.IsNegative() || (n.Used() <= 1 && n.GetWord(0) <= kLeastFound)) {
    // No number below zero is a Fermat prime, and all primes below are in the table.
    BigInt least(kLeastFound);
    if (FAILED(least.Status())) return least.Status();
    n.Swap(least);
    return S_OK;
  }
  const size_t limbs = LimbsForWords(n.Used()) + 1;
  LimbScratch memory{CheckedSize(limbs)};
  PrimeSearch* const search = new (std::nothrow) PrimeSearch;
  HRESULT status = E_OUTOFMEMORY;
  if (memory.Get() != nullptr && search != nullptr) {
    memory.Get()[limbs - 1] = 0;
    LimbsFromWords(memory.Get(), n.Magnitude().Words(), n.Used());
    if (search->Run(memory.Get(), limbs)) {
      status = n.AssignLimbs(memory.Get(), limbs);
    }
  }
  delete search;
  if (SUCCEEDED(status)) n.SetSignFlag(false);
  return status;
}

}  // namespace mirolta
