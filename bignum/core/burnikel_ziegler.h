// Divide-and-conquer division.
#pragma once

#include "multiply.h"

namespace mirolta {

// Divisors and quotients shorter than this divide faster by the schoolbook method: measured for
// 64-bit limbs, estimated for 32-bit limbs.
inline constexpr size_t kBurnikelZieglerLimbs = kLimbBits == 64 ? 32 : 64;

// BurnikelZieglerScratch returns the limbs of scratch of a division of count quotient limbs by n limbs, or of
// several: its longest product is that of half a divisor by the other half, or of a shorter quotient by
// the other limbs of the divisor.
inline CheckedSize BurnikelZieglerScratch(size_t n, size_t count) noexcept {
  const size_t half = n - n / 2;
  const size_t less = count < half ? count : half;
  return CheckedSize(n) + MultiplyScratch(less, n - less);
}

// BurnikelZieglerDivide: q := a / d, the lowest n limbs of a := a mod d; returns the limb above q,
// 0 or 1.
// Shapes: a[n + count], its top n limbs below 2 d; d[n], its top bit set; q[count], count <= n;
//         scratch[BurnikelZieglerScratch(n, count)]; v is Reciprocal3By2(d[n - 1], d[n - 2]).
// Alias:  none.
// Source: Burnikel and Ziegler, Fast recursive division, 1998.
Limb BurnikelZieglerDivide(Limb* q, Limb* a, const Limb* d, size_t n, size_t count, Limb v,
                           Limb* scratch) noexcept;

// BurnikelZieglerQuotient: q := a / d, omitting products that cannot affect q. The upper two limbs
// of the remainder are those that a truncated SchoolbookDivide gives. Returns false if q is
// undetermined by the truncated products.
// Shapes: as for BurnikelZieglerDivide, and the top n limbs of a are below d.
// Alias:  none.
bool BurnikelZieglerQuotient(Limb* q, Limb* a, const Limb* d, size_t n, size_t count, Limb v,
                             Limb* scratch) noexcept;

}  // namespace mirolta
