// Division by one limb.
#pragma once

#include "limb.h"

namespace mirolta {

// LimbDivisor: a one-limb divisor with its reciprocal, by which a quotient limb costs two products.
// Source: Moeller and Granlund, Improved division by invariant integers, 2011.
struct LimbDivisor {
  Limb normalised;  // the divisor shifted left until its top bit is set
  Limb reciprocal;  // floor((B^2 - 1) / normalised) - B
  uint32_t shift;
};

// PrepareDivisor returns d, not 0, with its reciprocal.
LimbDivisor PrepareDivisor(Limb d) noexcept;

// DivideByLimb: q := a / d; returns a mod d.
// Shapes: a[n], q[n].
// Alias:  q may be a.
Limb DivideByLimb(Limb* q, const Limb* a, size_t n, const LimbDivisor& d) noexcept;

// DivideRepeatedly: a := a / d^kRepeatedDivisions, with the remainders modulo d, the first
// division's first. Each division takes a quotient limb of the one before at once, so that they
// overlap.
// Shapes: a[n].
inline constexpr size_t kRepeatedDivisions = 4;
void DivideRepeatedly(Limb (&remainders)[kRepeatedDivisions], Limb* a, size_t n,
                      const LimbDivisor& d) noexcept;

// ModLimb returns a mod d.
// Shapes: a[n].
Limb ModLimb(const Limb* a, size_t n, const LimbDivisor& d) noexcept;

}  // namespace mirolta
