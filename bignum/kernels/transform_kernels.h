// Loops of the number-theoretic transforms, as one table for each instruction set.
//
// An operand is a polynomial in x whose coefficients have 64 bits. Its residues modulo a prime are
// stored as blocks of eight: coefficient 8 i + r belongs to lane r of block i. Lane r is a polynomial
// in y = x^8, and all lanes are transformed alike, so that no element leaves its lane. A transform
// ends with polynomials modulo x^8 - y for each of its roots y, which are multiplied as such.
//
// Node j of a transform is the ring modulo y^n - R(j), whose halves are the nodes 2j and 2j + 1:
// R(0) = 1, R(2j)^2 = R(j), R(2j + 1) = -R(2j). The rings of n roots that differ in n alone have the
// same R, so one table serves all lengths.
// Source: Harvey, A cache-friendly truncated FFT, 2009; Harvey 2014 for the lazy reductions.
#pragma once

#include "transform_primes.h"

namespace mirolta {

inline constexpr size_t kBlock = 8;
// A residue or a coefficient is stored in one limb of 64 bits or in two of 32.
inline constexpr size_t kElementLimbs = 64 / kLimbBits;
inline constexpr size_t kBlockLimbs = kBlock * kElementLimbs;
// A transform has a multiple of this many blocks.
inline constexpr size_t kLeastBlocks = 4;

// TransformTable: factor j is R(2j), with its quotient.
struct TransformTable {
  Limb* factors;
  Limb* quotients;
};

// TransformKernels: one implementation of every loop.
// Shapes: blocks of residues below 2 p unless stated; counts in blocks, multiples of kLeastBlocks.
// Alias:  unless stated, outputs overlap no inputs.
// Time:   depends on the counts only.
struct TransformKernels {
  // The kTransformPrimes primes, or pairs of primes, that these loops compute with. Residues, roots and
  // factors of a pair are below its primes half by half; additions do not carry from half to half.
  const TransformPrime* primes;
  // The least length of the shorter operand, in limbs, for which products are faster by transforms.
  size_t least;
  // Entries count to 2 count - 1 := the first count entries times root.
  // Shapes: count is a power of two, at least 8.
  void (*extend)(const TransformTable& table, size_t count, TransformFactor root,
                 const TransformPrime& prime);
  // z := the polynomial of 64-bit coefficients x mod y^n - w.
  // Shapes: x[limbs], limbs >= 1; z[n] below 4 p.
  void (*fold)(Limb* z, size_t n, const Limb* x, size_t limbs, TransformFactor w,
               const TransformPrime& prime);
  // z := its transform, of node j.
  // Shapes: z[n] below 4 p, n a power of two.
  void (*forward)(Limb* z, size_t n, size_t node, const TransformTable& table,
                  const TransformPrime& prime);
  // z := n times the polynomial whose transform is z, of node j.
  // Shapes: as for forward; z below 2 p.
  void (*inverse)(Limb* z, size_t n, size_t node, const TransformTable& table,
                  const TransformPrime& prime);
  // z := x * y * scale / 2^52, of a pair 2^32, modulo x^8 - R(j) for each root of node j.
  // Shapes: x, y below 4 p.
  // Alias:  z may be x or y.
  void (*multiply)(Limb* z, const Limb* x, const Limb* y, size_t n, size_t node,
                   const TransformTable& table, TransformFactor scale, const TransformPrime& prime);
  // z := (z - x mod y^n - w) * scale.
  // Shapes: z[n], x[count], count a multiple of n.
  void (*subtract_fold)(Limb* z, size_t n, const Limb* x, size_t count, TransformFactor w,
                        TransformFactor scale, const TransformPrime& prime);
  // z := z + x * w.
  // Shapes: z[n], x[n].
  void (*add_multiple)(Limb* z, const Limb* x, size_t n, TransformFactor w,
                       const TransformPrime& prime);
  // The numbers below the primes' product with the residues r0, r1, r2 := r0 + r1 * 2^64 + r2 * 2^128.
  // Shapes: r0[n], r1[n], r2[n].
  void (*combine)(Limb* r0, Limb* r1, Limb* r2, size_t n);
};

extern const KernelList<const TransformKernels*> kTransformKernels;

// CurrentTransformKernels returns the first table of kTransformKernels that this processor runs.
const TransformKernels& CurrentTransformKernels() noexcept;

}  // namespace mirolta
