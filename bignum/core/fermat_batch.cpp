#include "fermat_batch.h"

#include "divide.h"
#include "fermat_ifma.h"
#include "limb_scratch.h"
#include "radix52.h"
#include "radix52_scratch.h"

namespace mirolta {

#if MIROLTA_KERNELS_FOR(X86)

namespace {

// The bits above a modulus that its radix-2^52 digits hold: 4 * 2^2 = 2^4, 4 * 7^2 < 2^8.
constexpr size_t kSpareForTwo = 4;
constexpr size_t kSpareForSeven = 8;

// The exponent's top bits by which base^top is computed directly: 7^15 is below 2^43.
constexpr size_t kFirstBits = 4;
// The limbs that a digit covers at any shift.
constexpr size_t kFirstLimbs = (kRadix52Bits - 1) / kLimbBits + 2;

Digit52 SmallPower(Digit52 base, uint32_t e) {
  Digit52 power = 1;
  for (; e != 0; --e) power *= base;
  return power;
}

}  // namespace

FermatBatch::FermatBatch(size_t bits) noexcept : bits_(bits) {
  const bool here = (kRadix52Features & ~ProcessorFeatures()) == 0;
  // Smaller numbers are fast to test, and larger ones are not faster in lanes.
  const bool fits = Radix52Count(bits, kSpareForTwo) >= kFermatLeastCount &&
                    Radix52Count(bits, kSpareForSeven) <= kFermatMostCount;
  if (here && fits) capacity_ = kLanes;
}

bool FermatBatch::Test(uint32_t* passed, const Limb* candidates, const Limb* bases, size_t count,
                       size_t n) const noexcept {
  size_t spare = kSpareForTwo;
  for (size_t i = 0; i < count; ++i) {
    if (bases[i] > 2) spare = kSpareForSeven;
  }
  const size_t digits = FermatLanesCount(Radix52Count(bits_, spare));
  const size_t zeros = digits * kRadix52Bits / kLimbBits;
  Radix52Scratch lanes((2 * CheckedSize(digits) + 2) * kLanes);
  const size_t first_limbs = zeros + kFirstLimbs;
  LimbScratch limbs(CheckedSize(first_limbs) + CheckedSize(n));
  Digit52* const m = lanes.Get();
  Limb* const first = limbs.Get();
  if (m == nullptr || first == nullptr) return false;
  Digit52* const power = m + digits * kLanes;
  Digit52* const inverse = power + digits * kLanes;
  Digit52* const base = inverse + kLanes;
  Limb* const residue = first + first_limbs;
  const size_t rest = bits_ - kFirstBits;

  for (size_t lane = 0; lane < kLanes; ++lane) {
    // Unused lanes repeat the first candidate.
    const size_t i = lane < count ? lane : 0;
    const Limb* const x = candidates + i * n;
    base[lane] = bases[i];
    inverse[lane] = Radix52Inverse(x, n);
    uint32_t top = 0;
    for (size_t bit = bits_; bit-- != rest;) top = top << 1 | (TestLimbBit(x, bit) ? 1 : 0);
    ZeroLimbs(first, first_limbs);
    OrRadix52Digit(first, first_limbs, digits * kRadix52Bits, SmallPower(base[lane], top));
    const size_t used = SignificantLimbs(x, n);
    if (!DivideLimbs(nullptr, residue, first, first_limbs, x, used)) return false;
    for (size_t j = 0; j < digits; ++j) {
      m[j * kLanes + lane] = Radix52Digit(x, used, j);
      power[j * kLanes + lane] = Radix52Digit(residue, used, j);
    }
  }
  const uint32_t ones = FermatLanesTestFor(digits)({m, inverse, base, rest, power});
  *passed = ones & static_cast<uint32_t>((uint64_t{1} << count) - 1);
  return true;
}

#else

FermatBatch::FermatBatch(size_t bits) noexcept : bits_(bits) {}

bool FermatBatch::Test(uint32_t* passed, const Limb*, const Limb*, size_t, size_t) const noexcept {
  *passed = 0;
  return bits_ == 0;
}

#endif

}  // namespace mirolta
