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

// The least prime that the search finds.
constexpr uint32_t kLeastFound = 1229;

// WindowFor returns how many offsets are sieved at a time: about six times the mean prime gap.
constexpr uint32_t kMostWindow = 8192;
uint32_t WindowFor(size_t bits) {
  const size_t window = bits * 4 < 512 ? 512 : bits * 4;
  return window < kMostWindow ? static_cast<uint32_t>(window) : kMostWindow;
}

// SmallPowerModulo returns base^e mod p, p < 2^16.
uint32_t SmallPowerModulo(uint32_t base, uint32_t e, uint32_t p) {
  uint32_t result = 1;
  for (base %= p; e != 0; e >>= 1) {
    if ((e & 1) != 0) result = result * base % p;
    base = base * base % p;
  }
  return result % p;
}

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

// PrimeSearch searches upwards from a number n, with a sieve. It skips candidates with a divisor
// among the first kTablePrimes primes. It skips those with a divisor p among the other small primes
// unless a^(n-1) = 1 mod p for all bases a: a Fermat prime has a^(n-1) = 1 mod n, and so mod p.
// That condition is evaluated lazily.
// Source: sieve of Eratosthenes; Menezes, van Oorschot and Vanstone, Handbook of Applied
//         Cryptography, 4.4.
class PrimeSearch {
 public:
  PrimeSearch() noexcept = default;
  ~PrimeSearch() { WipeMemory(this, sizeof *this); }

  // Run replaces start by the prime.
  // Shapes: start[n], its top limb 0 for the carry.
  // Errors: false if memory runs out.
  bool Run(Limb* start, size_t n);

 private:
  void FindResidues(const Limb* start, size_t n);
  void SieveWindow();
  static bool Contradicts(const Limb* candidate, size_t n, uint32_t p);

  SmallPrime end_;                    // the first prime that does not sieve
  uint16_t first_[kSmallPrimeCount];  // offset of the first multiple in the window
  uint32_t window_ = 0;
  // For each offset 0, kTableDivisor, or another small prime that divides the candidate.
  uint16_t divisor_[kMostWindow];
};

constexpr uint16_t kTableDivisor = 1;

// The first prime that does not sieve: a residue costs as much as the exponentiations that it saves.
SmallPrime BreakEvenPrime(size_t bits) {
  const size_t limit = bits * bits / 16;
  SmallPrime prime;
  while (prime.Index() < kTablePrimes) prime.Next();
  while (prime.Index() < kSmallPrimeCount && prime.Value() < limit) prime.Next();
  return prime;
}

void PrimeSearch::FindResidues(const Limb* start, size_t n) {
  for (SmallPrime prime; prime.Index() < end_.Index();) {
    // Primes whose product fits a limb share one division.
    Limb product = 1;
    SmallPrime end = prime;
    for (; end.Index() < end_.Index() && product <= kLimbMax / end.Value(); end.Next()) {
      product = static_cast<Limb>(product * end.Value());
    }
    const Limb residue = ModLimb(start, n, PrepareDivisor(product));
    for (; prime.Index() < end.Index(); prime.Next()) {
      const uint32_t p = prime.Value();
      const uint32_t r = static_cast<uint32_t>(residue % p);
      first_[prime.Index()] = static_cast<uint16_t>(r == 0 ? 0 : p - r);
    }
  }
}

bool PrimeSearch::Contradicts(const Limb* candidate, size_t n, uint32_t p) {
  // (candidate - 1) mod (p - 1)
  const uint32_t residue = static_cast<uint32_t>(ModLimb(candidate, n, PrepareDivisor(p - 1)));
  const uint32_t e = (residue + p - 2) % (p - 1);
  for (const uint32_t base : {2u, 3u, 5u, 7u}) {
    if (SmallPowerModulo(base, e, p) != 1) return true;
  }
  return false;
}

void PrimeSearch::SieveWindow() {
  for (uint32_t offset = 0; offset < window_; ++offset) divisor_[offset] = 0;
  // The table's primes mark last: they overrule the others.
  SmallPrime prime = end_;
  for (size_t i = end_.Index(); i-- != 0;) {
    prime.Previous();
    const uint32_t p = prime.Value();
    const uint16_t mark = i < kTablePrimes ? kTableDivisor : static_cast<uint16_t>(p);
    uint32_t offset = first_[i];
    for (; offset < window_; offset += p) divisor_[offset] = mark;
    // Relative to the next window; offset - window_ < p.
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
  end_ = BreakEvenPrime(bits);
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
    // No power is 1 modulo a negative number or 0.
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
    // No negative number is a Fermat prime, and the primes below are in the table.
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
