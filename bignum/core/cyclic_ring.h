// The integers modulo B^n - 1 or B^n + 1: products by cyclic convolutions.
#pragma once

#include "limb.h"

namespace mirolta {

// CyclicRing: residues have n + 1 limbs. Modulo B^n + 1 they are at most B^n, modulo B^n - 1 below B^n, and 0 is
// also B^n - 1.
struct CyclicRing {
  size_t n;
  bool plus;  // modulo B^n + 1

  // Settle: z := z + top * B^n, where z[n] does not count.
  // Shapes: z[n + 1]; |top| below B / 4.
  void Settle(Limb* z, int64_t top) const noexcept;
  // Reduce: z := a.
  // Shapes: a[m], z[n + 1]; m below n * B / 8.
  void Reduce(Limb* z, const Limb* a, size_t m) const noexcept;
  // Subtract: z := z - x.
  // Shapes: residues.
  void Subtract(Limb* z, const Limb* x) const noexcept;
  // Halve: z := z / 2, which is exact in the ring.
  // Shapes: a residue.
  void Halve(Limb* z) const noexcept;
};

}  // namespace mirolta
