#include "middle_product.h"

#include <bit>

#include "limb_basics.h"
#include "multiply.h"

namespace mirolta {

namespace {

// The sums of the transforms' coefficients are those of 64-bit limbs.
constexpr bool kHasCyclicProducts = kHasTransforms && kLimbBits == 64;

// The modulus is (B^t0 + 1) (B^t1 + 1) (B^t2 - 1), t0 > t1 > t2 powers of two times a block, or has only the last
// one or two of these factors: they are coprime, and each is 2 modulo the later ones, up to 4.
struct CyclicRings {
  static constexpr size_t kMost = 3;
  size_t count;
  size_t limbs;  // of all
  CyclicRing ring[kMost];
};

// The rings of the least modulus above B^limbs that is no multiple of a short ring.
CyclicRings RingsFor(size_t limbs, size_t most_unit) {
  // Modulus is above B^(all - 1).
  size_t blocks = limbs / kBlockLimbs + 1;
  size_t unit = std::bit_floor(blocks) / most_unit;
  if (unit < kLeastBlocks) unit = kLeastBlocks;
  blocks = (blocks + unit - 1) / unit * unit;
  while (std::popcount(blocks) > static_cast<int>(CyclicRings::kMost)) {
    blocks += blocks & (0 - blocks);
  }
  CyclicRings rings = {};
  rings.limbs = blocks * kBlockLimbs;
  for (; blocks != 0; ++rings.count) {
    const size_t size = std::bit_floor(blocks);
    blocks -= size;
    rings.ring[rings.count] = {size * kBlockLimbs, blocks != 0};
  }
  return rings;
}

// The least length of a full product that costs more than cyclic ones of all rings.
size_t LeastFound(size_t limbs) {
  return limbs + limbs / 7;
}

// Finds rings in which a product of m by n limbs costs less than in full.
// Shapes: as for SubtractProduct.
bool FindRings(const TransformKernels& kernels, CyclicRings* rings, size_t count, size_t m,
               size_t n) {
  if (!kHasCyclicProducts || n < kernels.least) return false;
  for (size_t units = 8; units != 0; units /= 2) {
    *rings = RingsFor(count, units);
    if (m + n < LeastFound(rings->limbs)) return false;
    // The shortest ring is the last one, in which most products add up.
    if (FitsCyclicProduct(m, n, rings->ring[rings->count - 1])) return true;
  }
  return false;
}

// z := the number of the residues, all of them together below the modulus.
// Shapes: z[rings.limbs]; residues[i][ring[i].n + 1], destroyed.
[[maybe_unused]] void JoinResidues(Limb* z, const CyclicRings& rings, Limb* const* residues,
                                   Limb* scratch) {
  const LimbKernels& k = CurrentLimbKernels();
  // Newton interpolation: v0 + (B^t0 + 1) (v1 + (B^t1 + 1) v2).
  for (size_t i = 1; i < rings.count; ++i) {
    const CyclicRing& ring = rings.ring[i];
    for (size_t j = 0; j < i; ++j) {
      ring.Reduce(scratch, residues[j], rings.ring[j].n + 1);
      ring.Subtract(residues[i], scratch);
      ring.Halve(residues[i]);
    }
  }
  const size_t last = rings.count - 1;
  const size_t shortest = rings.ring[last].n;
  // 0 may be B^n - 1.
  size_t ones = 0;
  while (ones != shortest && residues[last][ones] == kLimbMax) ++ones;
  if (ones == shortest) ZeroLimbs(residues[last], shortest);
  Limb* above = z + rings.limbs - shortest;
  CopyLimbs(above, residues[last], shortest);
  size_t length = shortest;
  for (size_t i = last; i-- != 0;) {
    const size_t n = rings.ring[i].n;
    Limb* const to = above - n;
    const Limb carry = k.add(to, residues[i], above, length);
    CopyLimbs(to + length, residues[i] + length, n - length);
    const Limb top = AddLimb(to + length, n - length, carry);
    AddLimb(above, length, static_cast<Limb>(top + residues[i][n]));
    above = to;
    length += n;
  }
}

CheckedSize FullScratch(size_t m, size_t n) {
  return CheckedSize(m) + CheckedSize(n) + MultiplyScratch(m, n);
}

}  // namespace

CheckedSize MiddleProductScratch(const TransformKernels& kernels, size_t count, size_t m,
                                 size_t n) noexcept {
  CyclicRings rings;
  if (!FindRings(kernels, &rings, count, m, n)) return FullScratch(m, n);
  const size_t all = rings.limbs;
  const size_t residues = all + rings.count + rings.ring[0].n + 1;
  const CheckedSize cyclic =
      CheckedSize(residues) + LargerOf(CyclicScratch(rings.ring[0]), CheckedSize(all));
  // The full product of a shorter operand may take more.
  size_t shorter = LeastFound(all) > m ? LeastFound(all) - m : 0;
  if (shorter < kernels.least) shorter = kernels.least;
  return LargerOf(cyclic, FullScratch(m, shorter < n ? shorter : n));
}

void SubtractProduct(const TransformKernels& kernels, Limb* z, size_t count, const Limb* a,
                     size_t length, const Limb* x, size_t m, const Limb* y, size_t n,
                     Limb* scratch) noexcept {
  CyclicRings rings;
  if (!FindRings(kernels, &rings, count, m, n)) {
    MultiplyLimbs(scratch, x, m, y, n, scratch + m + n);
    CurrentLimbKernels().subtract(z, a, scratch, count);
    return;
  }
  if constexpr (kHasCyclicProducts) {
    Limb* residues[CyclicRings::kMost] = {};
    for (size_t i = 0; i < rings.count; ++i) {
      residues[i] = scratch;
      scratch += rings.ring[i].n + 1;
    }
    Limb* const other = scratch;
    Limb* const rest = other + rings.ring[0].n + 1;
    for (size_t i = 0; i < rings.count; ++i) {
      const CyclicRing& ring = rings.ring[i];
      CyclicProduct(kernels, other, ring, x, m, y, n, rest);
      ring.Reduce(residues[i], a, length);
      ring.Subtract(residues[i], other);
    }
    JoinResidues(rest, rings, residues, other);
    CopyLimbs(z, rest, count);
  }
}

}  // namespace mirolta
