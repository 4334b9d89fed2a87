// Quotients and remainders: by one limb, by rows, and by halves for long operands.
#pragma once

#include "limb.h"

namespace mirolta {

// LimbDivisor: a one-limb divisor prepared so that each quotient limb costs two products.
// Source: Moeller and Granlund, Improved division by invariant integers, 2011.
struct LimbDivisor {
  Limb normalised;  // the divisor shifted left until its top bit is set
  Limb reciprocal;  // floor((B^2 - 1) / normalised) - B
  uint32_t shift;
};

// PrepareDivisor: d != 0.
LimbDivisor PrepareDivisor(Limb d) noexcept;

// DivideByLimb: q := a / d, returns a mod d. Shapes: a[n], q[n]; q may be a.
Limb DivideByLimb(Limb* q, const Limb* a, size_t n, const LimbDivisor& d) noexcept;

// DivideRepeatedly: a := a / d^k and its remainders modulo d, the first division's first, for the
// fixed number k. A division's limb goes into the next one at once, so that they run side by side.
inline constexpr size_t kRepeatedDivisions = 4;
void DivideRepeatedly(Limb (&remainders)[kRepeatedDivisions], Limb* a, size_t n,
                      const LimbDivisor& d) noexcept;

// ModLimb returns a mod d. Shapes: a[n].
Limb ModLimb(const Limb* a, size_t n, const LimbDivisor& d) noexcept;

// DivideLimbs: q := a / d, r := a mod d.
// Shapes: a[m], d[n], q[m - n + 1], r[n], m >= n >= 1, d[n - 1] != 0.
// Alias:  q and r overlap nothing of each other; either may be null when not wanted, and either may
//         be a or d.
// Errors: false if memory runs out; q and r are then untouched.
// Source: Knuth TAOCP 2, 4.3.1, algorithm D; Burnikel and Ziegler 1998.
[[nodiscard]] bool DivideLimbs(Limb* q, Limb* r, const Limb* a, size_t m, const Limb* d,
                               size_t n) noexcept;

// DivideInPlace does the same in the operands' own memory: u's lowest n limbs become the remainder;
// the rest of u, and v, are destroyed.
// Shapes: u[m + 1] of which m are the dividend, v[n], q[m - n + 1], scratch[DivideScratch(m, n)].
// Alias:  none.
CheckedSize DivideScratch(size_t m, size_t n) noexcept;
void DivideInPlace(Limb* q, Limb* u, size_t m, Limb* v, size_t n, Limb* scratch) noexcept;

// QuotientInPlace computes q alone, of the same shapes, with about half of the products: what
// cannot change it is left out. Returns false if that may have changed it, as where the division
// leaves no remainder; q is then of no use. u and v are destroyed.
[[nodiscard]] bool QuotientInPlace(Limb* q, Limb* u, size_t m, Limb* v, size_t n,
                                   Limb* scratch) noexcept;

}  // namespace mirolta
