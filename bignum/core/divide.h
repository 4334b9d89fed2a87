// Division: the method is chosen by the operands' lengths.
#pragma once

#include "divide_by_limb.h"

namespace mirolta {

// DivideLimbs: q := a / d, r := a mod d. Either result may be null.
// Shapes: a[m], d[n], q[m - n + 1], r[n], m >= n >= 1, d[n - 1] != 0.
// Alias:  q or r may be a or d; q and r do not overlap.
// Errors: false if memory runs out; q and r are unchanged.
[[nodiscard]] bool DivideLimbs(Limb* q, Limb* r, const Limb* a, size_t m, const Limb* d,
                               size_t n) noexcept;

// DivideScratch returns the limbs of scratch of the divisions in place.
CheckedSize DivideScratch(size_t m, size_t n) noexcept;

// DivideInPlace: q := u / v, the lowest n limbs of u := u mod v. The rest of u, and v, are
// destroyed.
// Shapes: u[m + 1], the dividend in the lowest m; v[n], v[n - 1] != 0; q[m - n + 1], m >= n >= 1;
//         scratch[DivideScratch(m, n)].
// Alias:  none.
void DivideInPlace(Limb* q, Limb* u, size_t m, Limb* v, size_t n, Limb* scratch) noexcept;

// QuotientInPlace: q := u / v, with about half of the products: it omits those that cannot affect
// q. u and v are destroyed. Returns false, with q undefined, if q is undetermined by the truncated
// products, as where the division leaves no remainder.
// Shapes: as for DivideInPlace.
// Alias:  none.
[[nodiscard]] bool QuotientInPlace(Limb* q, Limb* u, size_t m, Limb* v, size_t n,
                                   Limb* scratch) noexcept;

}  // namespace mirolta
