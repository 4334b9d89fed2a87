// The rounds of a division by rows.
#pragma once

#include "limb.h"

namespace mirolta {

// SchoolbookDivide divides a[m] by d[n]: q becomes the quotient, a's lowest n limbs the remainder.
//
// If it truncates, the round of quotient limb j leaves out what stands under the top j + 2 limbs of
// d, and only a[n - 2] and a[n - 1] are set: to the remainder's upper limbs, too large by what was
// left out, which is less than (m - n) * B^(n - 1). It gives up, and returns false, where a limb
// cannot be told without that.
// Shapes: a[m], d[n], q[m - n], m >= n >= 2; d's top bit is set, the top n limbs of a are below d,
//         and reciprocal is floor((B^3 - 1) / (d[n - 1] B + d[n - 2])) - B.
// Alias:  none.
// Source: Knuth TAOCP 2, 4.3.1, algorithm D; Moeller and Granlund, Improved division by invariant
//         integers, 2011.
bool SchoolbookDivide(Limb* q, Limb* a, size_t m, const Limb* d, size_t n, Limb reciprocal,
                bool truncates) noexcept;

}  // namespace mirolta
