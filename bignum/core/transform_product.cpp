#include "transform_product.h"

#include <bit>

#include "limb_basics.h"

namespace mirolta {

namespace {

// A coefficient of a product is a sum of fewer than 2^22 - 7 products below 2^128, which is less than
// the product of the primes.
constexpr size_t kMostElements = (size_t{1} << 23) - 64;
// With either sign they are below half of it.
constexpr size_t kMostSignedTerms = (size_t{1} << 21) - 64;
constexpr size_t kMostLimbs = kMostElements * kElementLimbs;
// Of 16 blocks, so that the table's entries are whole blocks.
constexpr size_t kLeastLimbs = 16 * kBlockLimbs;

size_t Elements(size_t limbs) {
  return (limbs + kElementLimbs - 1) / kElementLimbs;
}

// A product is computed modulo y^t0 - 1, y^t1 - R1 and y^t2 - R2, t0 > t1 > t2 powers of two: rings
// of one tree of nodes that follow each other. So the length is any sum of three powers, and the
// costs grow in small steps.
struct TransformParts {
  static constexpr size_t kMost = 3;
  size_t blocks;  // of all parts
  size_t count;
  size_t size[kMost];
  size_t offset[kMost];
  size_t node[kMost];
};

TransformParts PartsFor(size_t elements) {
  TransformParts parts = {};
  size_t blocks = (elements + kBlock - 1) / kBlock;
  size_t unit = std::bit_floor(blocks) / 16;
  if (unit < kLeastBlocks) unit = kLeastBlocks;
  blocks = (blocks + unit - 1) / unit * unit;
  while (std::popcount(blocks) > static_cast<int>(TransformParts::kMost)) {
    blocks += blocks & (0 - blocks);
  }
  parts.blocks = blocks;
  for (size_t offset = 0; offset != blocks; ++parts.count) {
    parts.offset[parts.count] = offset;
    parts.size[parts.count] = std::bit_floor(blocks - offset);
    parts.node[parts.count] = offset / parts.size[parts.count];
    offset += parts.size[parts.count];
  }
  return parts;
}

// Of a product of m by n limbs, or of the longest one if that is too long.
TransformParts PartsOfProduct(size_t m, size_t n) {
  const bool fits = m <= kMostLimbs && n <= kMostLimbs - m;
  return PartsFor(fits ? Elements(m) + Elements(n) - 1 : kMostElements);
}

// The one part of a ring: modulo y^n - 1 or y^n + 1, which are the nodes 0 and 1.
TransformParts PartOf(const CyclicRing& ring) {
  const size_t blocks = ring.n / kBlockLimbs;
  return {blocks, 1, {blocks}, {0}, {ring.plus ? size_t{1} : size_t{0}}};
}

// The table's entries: a root for every two of all roots of the first part's power of two, or twice
// as many if there are other nodes.
size_t TableSize(const TransformParts& parts) {
  const size_t size = parts.count == 1 && parts.node[0] == 0 ? parts.size[0] / 2 : parts.size[0];
  return size < kBlock ? kBlock : size;
}

CheckedSize PartsScratch(const TransformParts& parts) {
  const CheckedSize blocks = 3 * CheckedSize(parts.blocks) + CheckedSize(parts.size[0]);
  const size_t table = TableSize(parts);
  return blocks * SizeConstant(kBlockLimbs) + 2 * CheckedSize(table) * SizeConstant(kElementLimbs) +
         kBlockLimbs;
}

uint64_t LoadElement(const Limb* x) {
  if constexpr (kElementLimbs == 1) return x[0];
  return x[0] | static_cast<uint64_t>(x[kElementLimbs - 1]) << 32;
}
void StoreElement(Limb* z, uint64_t x) {
  z[0] = static_cast<Limb>(x);
  if constexpr (kElementLimbs == 2) z[1] = static_cast<Limb>(x >> 32);
}

// PrimeProduct: a product modulo one prime, or a pair of them. What products and sums share is not inlined, which
// would double the code for nothing.
class PrimeProduct {
 public:
  __attribute__((noinline))
  PrimeProduct(const TransformKernels& kernels, const TransformPrime& prime,
               const TransformParts& parts, const TransformTable& table)
      : kernels_(kernels), prime_(prime), parts_(parts), table_(table) {
    StoreEntry(0, prime.one);
    size_t filled = 1;
    size_t level = 0;
    for (; filled < kBlock; filled *= 2, ++level) {
      const TransformFactor root = prime_.Factor(prime_.roots[level]);
      for (size_t i = 0; i < filled; ++i) {
        StoreEntry(filled + i, prime_.Product(Root(2 * i), root));
      }
    }
    for (; filled < TableSize(parts); filled *= 2, ++level) {
      kernels_.extend(table_, filled, prime_.Factor(prime_.roots[level]), prime_);
    }
  }

  // z := x * y modulo the prime, as residues below 2 p; y may be x.
  void Run(Limb* z, Limb* other, const Limb* x, size_t m, const Limb* y, size_t n) const {
    for (size_t i = 0; i < parts_.count; ++i) {
      const size_t size = parts_.size[i];
      Limb* const to = z + parts_.offset[i] * kBlockLimbs;
      Transform(to, i, x, m);
      const Limb* factor = to;
      if (x != y || m != n) {
        Transform(other, i, y, n);
        factor = other;
      }
      MultiplyPart(to, factor, i);
      kernels_.inverse(to, size, Node(i), table_, prime_);
    }
    Interpolate(z);
  }

  // z[i] := the sums of TransformSums modulo the prime, likewise.
  // Shapes: spare and other of the first part's length.
  void RunSums(Limb* const* z, const SumOfProducts* sums, size_t count, size_t m, const Limb* x,
               const Limb* y, size_t n, Limb* spare, Limb* other) const {
    for (size_t i = 0; i < parts_.count; ++i) {
      const size_t size = parts_.size[i];
      const size_t offset = parts_.offset[i] * kBlockLimbs;
      Transform(spare, i, x, n);
      for (size_t k = 0; k < count; ++k) {
        Transform(z[k] + offset, i, sums[k].u, m);
        MultiplyPart(z[k] + offset, spare, i);
      }
      Transform(spare, i, y, n);
      for (size_t k = 0; k < count; ++k) {
        Transform(other, i, sums[k].v, m);
        MultiplyPart(other, spare, i);
        kernels_.add_multiple(z[k] + offset, other, size, Factor(prime_.one), prime_);
        kernels_.inverse(z[k] + offset, size, Node(i), table_, prime_);
      }
    }
    for (size_t k = 0; k < count; ++k) Interpolate(z[k]);
  }

 private:
  TransformFactor Factor(uint64_t w) const { return prime_.Factor(w); }
  void StoreEntry(size_t j, uint64_t w) {
    const TransformFactor factor = Factor(w);
    StoreElement(table_.factors + j * kElementLimbs, factor.factor);
    StoreElement(table_.quotients + j * kElementLimbs, factor.quotient);
  }
  size_t Node(size_t part) const { return parts_.node[part]; }
  // R(node).
  uint64_t Root(size_t node) const {
    const uint64_t root = LoadElement(table_.factors + node / 2 * kElementLimbs);
    return node % 2 == 0 ? root : prime_.p - root;
  }
  TransformFactor PartRoot(size_t part) const { return Factor(Root(Node(part))); }

  void Transform(Limb* z, size_t part, const Limb* x, size_t limbs) const {
    kernels_.fold(z, parts_.size[part], x, limbs, PartRoot(part), prime_);
    kernels_.forward(z, parts_.size[part], Node(part), table_, prime_);
  }

  // z := z * factor, of transforms. The inverse transform multiplies by the size, the products divide by high_unit.
  __attribute__((noinline)) void MultiplyPart(Limb* z, const Limb* factor, size_t part) const {
    const size_t size = parts_.size[part];
    const uint32_t bits = static_cast<uint32_t>(std::countr_zero(size));
    const TransformFactor scale =
        Factor(prime_.Product(prime_.high_unit, Factor(prime_.PowerOfHalf(bits))));
    kernels_.multiply(z, z, factor, size, Node(part), table_, scale, prime_);
  }

  __attribute__((noinline)) void Interpolate(Limb* z) const {
    if (parts_.count > 1) AddSecondPart(z);
    if (parts_.count > 2) AddThirdPart(z);
  }

  // Newton interpolation: the product is s + (y^t0 - 1) q for its residue s modulo y^t0 - 1 and some
  // q of length t1. Modulo y^t1 - R1 the factor y^t0 - 1 is -2.
  void AddSecondPart(Limb* z) const {
    const size_t offset = parts_.offset[1] * kBlockLimbs;
    const TransformFactor scale = Factor(prime_.p - prime_.PowerOfHalf(1));
    kernels_.subtract_fold(z + offset, parts_.size[1], z, parts_.offset[1], PartRoot(1), scale,
                           prime_);
    kernels_.add_multiple(z, z + offset, parts_.size[1], Factor(prime_.p - prime_.one), prime_);
  }

  // The product is s + (y^t0 - 1) (y^t1 - R1) q for s of length t0 + t1 and some q of length t2. Modulo
  // y^t2 - R2, y^t1 is -R1, and the factor is 4 R1.
  void AddThirdPart(Limb* z) const {
    const size_t size = parts_.size[2];
    const size_t offset = parts_.offset[2] * kBlockLimbs;
    // -1 / R(2j) for the power of two j is R(2 (2j - 1)).
    const uint64_t root = Root(Node(1));
    const uint64_t inverse = prime_.p - Root(2 * Node(1) - 2);
    const TransformFactor scale = Factor(prime_.Product(inverse, Factor(prime_.PowerOfHalf(2))));
    kernels_.subtract_fold(z + offset, size, z, parts_.offset[2], PartRoot(2), scale, prime_);
    const Limb* const q = z + offset;
    kernels_.add_multiple(z, q, size, Factor(root), prime_);
    kernels_.add_multiple(z + parts_.size[0] * kBlockLimbs, q, size, Factor(prime_.p - root),
                          prime_);
    kernels_.add_multiple(z + parts_.size[1] * kBlockLimbs, q, size, Factor(prime_.p - prime_.one),
                          prime_);
  }

  const TransformKernels& kernels_;
  const TransformPrime& prime_;
  const TransformParts& parts_;
  const TransformTable& table_;
};

// z := z + x * 2^(64 words); the sum fits n limbs, and x is zero above them.
void AddWords(Limb* z, size_t n, const Limb* x, size_t count, size_t words) {
  const size_t offset = words * kElementLimbs;
  if (offset >= n) return;
  const size_t used = count < n - offset ? count : n - offset;
  const Limb carry = CurrentLimbKernels().add(z + offset, z + offset, x, used);
  AddLimb(z + offset + used, n - offset - used, carry);
}

// Places the table at the beginning of scratch. Whole vectors do not cross lines of the cache.
TransformTable PlaceTable(const TransformParts& parts, Limb* scratch) {
  while (reinterpret_cast<uintptr_t>(scratch) % (kBlock * sizeof(uint64_t)) != 0) ++scratch;
  return {scratch, scratch + TableSize(parts) * kElementLimbs};
}
Limb* AfterTable(const TransformParts& parts, const TransformTable& table) {
  return table.quotients + TableSize(parts) * kElementLimbs;
}

// The coefficients low + 2^64 middle + 2^128 high of a product.
struct Coefficients {
  const Limb* low;
  const Limb* middle;
  const Limb* high;
};

// The coefficients of x * y modulo the parts' polynomial, below the primes' product.
// Shapes: scratch[PartsScratch(parts)].
Coefficients Multiply(const TransformKernels& kernels, const TransformParts& parts, const Limb* x,
                      size_t m, const Limb* y, size_t n, Limb* scratch) {
  const TransformTable table = PlaceTable(parts, scratch);
  const size_t size = parts.blocks * kBlockLimbs;
  Limb* const first = AfterTable(parts, table);
  Limb* const second = first + size;
  Limb* const third = second + size;
  Limb* const results[kTransformPrimes] = {first, second, third};
  for (size_t i = 0; i < kTransformPrimes; ++i) {
    PrimeProduct(kernels, kernels.primes[i], parts, table)
        .Run(results[i], third + size, x, m, y, n);
  }
  kernels.combine(first, second, third, parts.blocks);
  return {first, second, third};
}

// z := the sum of c(i) 2^(64 i), which fits.
// Shapes: z[n]; so many coefficients.
void CarryCoefficients(Limb* z, size_t n, const Coefficients& c, size_t elements) {
  const size_t count = elements * kElementLimbs < n ? elements * kElementLimbs : n;
  CopyLimbs(z, c.low, count);
  ZeroLimbs(z + count, n - count);
  AddWords(z, n, c.middle, count, 1);
  AddWords(z, n, c.high, count, 2);
}

// z := the sum of c(i) B^i. In a ring modulo B^n + 1 coefficients above half of the primes' product are negative.
// Shapes: c[ring.n], |c(i)| < B^2 * kMostSignedTerms; z[ring.n + 1].
void CarrySigned(Limb* z, const Coefficients& c, const CyclicRing& ring, const Limb* primes) {
  const Limb half = ring.plus ? primes[2] / 2 : kLimbMax;
  const DoubleLimb low_primes = static_cast<DoubleLimb>(primes[1]) << kLimbBits | primes[0];
  DoubleLimb carry = 0;  // modulo B^2, negative from B^2 / 2 on
  for (size_t i = 0; i < ring.n; ++i) {
    const bool negative = c.high[i] > half;
    DoubleLimb low = static_cast<DoubleLimb>(c.middle[i]) << kLimbBits | c.low[i];
    const DoubleLimb less = negative ? low_primes : 0;
    Limb high = c.high[i] - (negative ? primes[2] : 0) - (low < less ? 1 : 0);
    low -= less;
    low += carry;
    high += (low < carry ? 1 : 0) - static_cast<Limb>(carry >> (2 * kLimbBits - 1));
    z[i] = static_cast<Limb>(low);
    carry = low >> kLimbBits | static_cast<DoubleLimb>(high) << kLimbBits;
  }
  // The carry is high * B + low, high signed and short.
  const int64_t sign = ring.plus ? -1 : 1;
  const auto low = static_cast<Limb>(carry);
  const auto high = static_cast<int64_t>(carry >> kLimbBits);
  Limb* const above = z + 1;
  int64_t top = 0;
  if (ring.plus) {
    top -= static_cast<int64_t>(SubtractLimb(z, ring.n, low));
  } else {
    top += static_cast<int64_t>(AddLimb(z, ring.n, low));
  }
  if (sign * high < 0) {
    top -= static_cast<int64_t>(SubtractLimb(above, ring.n - 1, static_cast<Limb>(-sign * high)));
  } else {
    top += static_cast<int64_t>(AddLimb(above, ring.n - 1, static_cast<Limb>(sign * high)));
  }
  ring.Settle(z, top);
}

}  // namespace

bool FitsTransforms(size_t m, size_t n) noexcept {
  return m <= kMostLimbs && n <= kMostLimbs - m && m + n >= kLeastLimbs;
}

CheckedSize TransformScratch(size_t m, size_t n) noexcept {
  return PartsScratch(PartsOfProduct(m, n));
}

void TransformProduct(const TransformKernels& kernels, Limb* z, const Limb* x, size_t m,
                      const Limb* y, size_t n, Limb* scratch) noexcept {
  const size_t elements = Elements(m) + Elements(n) - 1;
  CarryCoefficients(z, m + n, Multiply(kernels, PartsFor(elements), x, m, y, n, scratch), elements);
}

bool FitsTransformSums(size_t m, size_t n) noexcept {
  return FitsTransforms(m, n) && Elements(m < n ? m : n) <= kMostSignedTerms;
}

CheckedSize TransformSumsScratch(size_t count, size_t m, size_t n) noexcept {
  const TransformParts parts = PartsOfProduct(m, n);
  // The other results, and another transform.
  const size_t others = (count - 1) * kTransformPrimes;
  const CheckedSize blocks =
      CheckedSize(others) * CheckedSize(parts.blocks) + CheckedSize(parts.size[0]);
  return PartsScratch(parts) + blocks * SizeConstant(kBlockLimbs);
}

void TransformSums(const TransformKernels& kernels, const SumOfProducts* sums, size_t count,
                   size_t m, const Limb* x, const Limb* y, size_t n, Limb* scratch) noexcept {
  const size_t elements = Elements(m) + Elements(n) - 1;
  const TransformParts parts = PartsFor(elements);
  const TransformTable table = PlaceTable(parts, scratch);
  const size_t size = parts.blocks * kBlockLimbs;
  Limb* const first = AfterTable(parts, table);
  Limb* const second = first + (count - 1) * kTransformPrimes * size;
  Limb* const spare = second + kTransformPrimes * size;
  for (size_t i = 0; i < kTransformPrimes; ++i) {
    Limb* const results[] = {first + i * size, second + i * size};
    PrimeProduct(kernels, kernels.primes[i], parts, table)
        .RunSums(results, sums, count, m, x, y, n, spare, spare + parts.size[0] * kBlockLimbs);
  }
  for (size_t k = 0; k < count; ++k) {
    Limb* const low = k == 0 ? first : second;
    kernels.combine(low, low + size, low + 2 * size, parts.blocks);
    CarryCoefficients(sums[k].z, m + n + 1, {low, low + size, low + 2 * size}, elements);
  }
}

bool FitsCyclicProduct(size_t m, size_t n, const CyclicRing& ring) noexcept {
  // Each element of y meets so many of x in one coefficient.
  const size_t times = (m + ring.n - 1) / ring.n;
  return n <= kMostSignedTerms / times && ring.n <= kMostSignedTerms;
}

CheckedSize CyclicScratch(const CyclicRing& ring) noexcept {
  return PartsScratch(PartOf(ring));
}

void CyclicProduct(const TransformKernels& kernels, Limb* z, const CyclicRing& ring, const Limb* x,
                   size_t m, const Limb* y, size_t n, Limb* scratch) noexcept {
  const Coefficients c = Multiply(kernels, PartOf(ring), x, m, y, n, scratch);
  Limb primes[kTransformPrimes] = {1, 0, 0};
  for (size_t i = 0; i < kTransformPrimes; ++i) {
    CurrentLimbKernels().mul1(primes, primes, kTransformPrimes,
                              static_cast<Limb>(kernels.primes[i].Modulus()));
  }
  CarrySigned(z, c, ring, primes);
}

}  // namespace mirolta
