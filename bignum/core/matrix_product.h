// Products of a pair of numbers by the cofactors of many of Euclid's steps.
#pragma once

#include "limb.h"

namespace mirolta {

// EuclidMatrix: many of Euclid's steps from a pair x, y, which give +-(u0 x - v0 y) and
// -+(u1 x - v1 y), the upper signs for an even number of steps. Column 0 is u0, u1, column 1 v0, v1.
struct EuclidMatrix {
  Limb* first[2];   // u0, v0
  Limb* second[2];  // u1, v1
  size_t n;         // of each entry, one of which is that long
  bool odd;

  bool Changed() const { return n > 1 || second[0][0] != 0; }
};

// PlaceEntries gives a matrix entries of that many limbs.
// Shapes: memory[4 limbs].
void PlaceEntries(EuclidMatrix* matrix, Limb* memory, size_t limbs) noexcept;

// PairSums: whether both sums of a pair share the transforms of x and y, or each has its own, which takes less
// scratch.
enum class PairSums : uint32_t { kTogether, kInTurn };

// PairScratch returns the limbs of scratch of MultiplyPair.
CheckedSize PairScratch(size_t m, size_t n, PairSums sums = PairSums::kTogether) noexcept;

// MultiplyPair: z0 := u0 x + v0 y, z1 := u1 x + v1 y.
// Shapes: a matrix of m = matrix.n limbs; x[n], y[n], n >= 1; z0[m + n + 1], z1[m + n + 1];
//         scratch[PairScratch(m, n, sums)].
// Alias:  x and y may be one another; z0, z1 and scratch overlap nothing.
void MultiplyPair(const EuclidMatrix& matrix, Limb* z0, Limb* z1, const Limb* x, const Limb* y,
                  size_t n, Limb* scratch, PairSums sums = PairSums::kTogether) noexcept;

}  // namespace mirolta
