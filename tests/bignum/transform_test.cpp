// Transforms: each kernel against a plain one of the same primes, and products by each against the peer.
#include <gtest/gtest.h>

#include <bit>
#include <span>

#include "guarded_memory.h"
#include "kernel_rows.h"
#include "limb_testing.h"
#include "multiply.h"
#include "transform_kernel_tables.h"
#include "transform_product.h"

namespace mirolta {
namespace {

constexpr Limb kGuard = static_cast<Limb>(0xABCDEF0123456789u);

// The plain kernel of the same primes.
const TransformKernels& PlainOf(const TransformKernels& kernels) {
  return kernels.primes == kPortableTransforms.primes ? kPortableTransforms : kPairTransforms;
}
std::span<const TransformPrime> PrimesOf(const TransformKernels& kernels) {
  return {kernels.primes, kTransformPrimes};
}

template <typename Check>
void ForEachTable(const Check& check) {
  test::ForEachKernel(kTransformKernels, [&](const auto& row) { check(*row.function); });
}

TEST(TransformKernelListTest, KernelsNeedTheInstructionsThatTheyUse) {
  test::ExpectNeeds(
      kTransformKernels,
      {{"ifma", kFeatureAvx512 | kFeatureAvx512Ifma}, {"avx2", kFeatureAvx2}, {"portable", 0}});
  EXPECT_EQ(kTransformKernels[kTransformKernels.size() - 1].needs, 0u);
  EXPECT_EQ(&CurrentTransformKernels(), kTransformKernels.Choose(ProcessorFeatures()).function);
}

void Store(Limbs& z, size_t i, uint64_t x) {
  for (size_t k = 0; k < kElementLimbs; ++k) {
    z[i * kElementLimbs + k] = static_cast<Limb>(x >> (32 * k));
  }
}

// What is below times * p, of a pair each half, often the greatest or 0.
uint64_t ResidueBelow(const TransformPrime& prime, uint32_t times) {
  const auto below = [](uint64_t limit) {
    const uint32_t kind = Below(6);
    return kind == 0 ? 0 : kind == 1 ? limit - 1 : Generator()() % limit;
  };
  if (!prime.is_pair) return below(times * prime.p);
  const uint64_t low = below(times * (prime.p & UINT32_MAX));
  return low | below(times * (prime.p >> 32)) << 32;
}
uint64_t Reduced(const TransformPrime& prime, uint64_t x) {
  if (!prime.is_pair) return x % prime.p;
  return (x & UINT32_MAX) % (prime.p & UINT32_MAX) | ((x >> 32) % (prime.p >> 32)) << 32;
}
Limbs Residues(size_t blocks, const TransformPrime& prime, uint32_t times) {
  Limbs limbs(blocks * kBlockLimbs);
  for (size_t i = 0; i < blocks * kBlock; ++i) Store(limbs, i, ResidueBelow(prime, times));
  return limbs;
}

// Table: the entries of a transform of 2 * count blocks at most, by one kernel.
class Table {
 public:
  Table(const TransformKernels& kernels, const TransformPrime& prime, size_t count)
      : factors_(count * kElementLimbs), quotients_(count * kElementLimbs) {
    size_t filled = 1;
    std::vector<uint64_t> entries = {prime.one};
    for (size_t level = 0; filled < kBlock; filled *= 2, ++level) {
      for (size_t i = 0; i < filled; ++i) {
        entries.push_back(prime.Product(entries[i], prime.Factor(prime.roots[level])));
      }
    }
    for (size_t i = 0; i < kBlock; ++i) {
      Store(factors_, i, entries[i]);
      Store(quotients_, i, prime.Factor(entries[i]).quotient);
    }
    for (size_t level = 3; filled < count; filled *= 2, ++level) {
      kernels.extend(Get(), filled, prime.Factor(prime.roots[level]), prime);
    }
  }
  TransformTable Get() { return {factors_.data(), quotients_.data()}; }
  bool operator==(const Table& other) const {
    return factors_ == other.factors_ && quotients_ == other.quotients_;
  }

 private:
  Limbs factors_;
  Limbs quotients_;
};

TEST(TransformKernelsTest, RootsHaveTheirOrder) {
  ForEachTable([](const TransformKernels& kernels) {
    for (const TransformPrime& prime : PrimesOf(kernels)) {
      uint64_t root = prime.roots[TransformPrime::kMostRoots - 1];
      for (size_t k = TransformPrime::kMostRoots; k-- != 0;) {
        EXPECT_EQ(root, prime.roots[k]);
        root = prime.Product(root, prime.Factor(root));
      }
      EXPECT_EQ(root, prime.p - prime.one);
    }
  });
}

TEST(TransformKernelsTest, MembersOfPairsAreRight) {
  for (const TransformPrime& pair : kPrimePairs) {
    for (const uint32_t shift : {0u, 32u}) {
      const uint64_t p = static_cast<uint32_t>(pair.p >> shift);
      const auto half = [=](uint64_t x) { return x >> shift & UINT32_MAX; };
      EXPECT_LT(p, 1u << 30);
      for (uint64_t d = 2; d * d <= p; ++d) ASSERT_NE(p % d, 0u);
      EXPECT_EQ((p * half(pair.inverse)) & UINT32_MAX, 1u);
      EXPECT_EQ(half(pair.one), (uint64_t{1} << 32) % p);
      EXPECT_EQ(half(pair.high_unit), (half(pair.one) << 32) % p);
      for (uint32_t bits = 0; bits <= TransformPrime::kMostRoots; ++bits) {
        EXPECT_EQ((half(pair.PowerOfHalf(bits)) << bits) % p, half(pair.one));
      }
      for (int i = 0; i < Cases(300); ++i) {
        const uint64_t w = ResidueBelow(pair, 1), x = Generator()();
        const uint64_t product = half(pair.Product(x, pair.Factor(w)));
        EXPECT_LT(product, p);
        EXPECT_EQ((product << 32) % p, half(x) * half(w) % p);
      }
    }
  }
}

TEST(TransformKernelsTest, QuotientsAreRight) {
  for (const TransformPrime& prime : kPrimes) {
    for (int i = 0; i < Cases(3000); ++i) {
      const uint64_t w = i == 0 ? 0 : i == 1 ? prime.p - 1 : Generator()() % prime.p;
      Mpz expected, p;
      Import(expected, Limbs());
      mpz_set_ui(expected, static_cast<uint32_t>(w >> 32));
      mpz_mul_2exp(expected, expected, 32);
      mpz_add_ui(expected, expected, static_cast<uint32_t>(w));
      mpz_mul_2exp(expected, expected, kResidueBits);
      mpz_set_ui(p, static_cast<uint32_t>(prime.p >> 32));
      mpz_mul_2exp(p, p, 32);
      mpz_add_ui(p, p, static_cast<uint32_t>(prime.p));
      mpz_tdiv_q(expected, expected, p);
      Limbs quotient(kElementLimbs);
      Store(quotient, 0, prime.Factor(w).quotient);
      ASSERT_EQ(quotient, Export(expected, kElementLimbs)) << w;
    }
  }
}

// The greatest coefficient of the longest product is below the product of the primes.
TEST(TransformKernelsTest, CoefficientsFitThePrimes) {
  size_t n = kElementLimbs << 20;
  while (FitsTransforms(n + kElementLimbs, n + kElementLimbs)) n += kElementLimbs;
  EXPECT_GT(n, kElementLimbs << 21);
  Mpz coefficient;
  Import(coefficient, Limbs(kElementLimbs, kLimbMax));
  mpz_mul(coefficient, coefficient, coefficient);
  mpz_mul_ui(coefficient, coefficient, static_cast<uint32_t>(n / kElementLimbs));
  ForEachTable([&](const TransformKernels& kernels) {
    Mpz primes, p;
    mpz_set_ui(primes, 1);
    for (const TransformPrime& prime : PrimesOf(kernels)) {
      mpz_set_ui(p, static_cast<uint32_t>(prime.p >> 32));
      if (prime.is_pair) {
        mpz_mul_ui(p, p, static_cast<uint32_t>(prime.p));
      } else {
        mpz_mul_2exp(p, p, 32);
        mpz_add_ui(p, p, static_cast<uint32_t>(prime.p));
      }
      mpz_mul(primes, primes, p);
    }
    EXPECT_LT(mpz_cmp(coefficient, primes), 0);
  });
}

TEST(TransformKernelsTest, TablesAgree) {
  ForEachTable([](const TransformKernels& kernels) {
    for (const TransformPrime& prime : PrimesOf(kernels)) {
      EXPECT_TRUE(Table(kernels, prime, 2048) == Table(PlainOf(kernels), prime, 2048));
    }
  });
}

TEST(TransformKernelsTest, TransformsAgreeAndAreInverse) {
  ForEachTable([](const TransformKernels& kernels) {
    for (const TransformPrime& prime : PrimesOf(kernels)) {
      Table table(PlainOf(kernels), prime, 4096);
      for (size_t n = kLeastBlocks; n <= 2048; n *= 2) {
        for (const size_t node : {size_t{0}, size_t{2}, size_t{6}}) {
          if ((node + 1) * n > 8192) continue;
          SCOPED_TRACE(std::to_string(n) + " blocks of node " + std::to_string(node));
          const Limbs x = Residues(n, prime, 4);
          Limbs z = x, expected = x;
          kernels.forward(z.data(), n, node, table.Get(), prime);
          PlainOf(kernels).forward(expected.data(), n, node, table.Get(), prime);
          ASSERT_EQ(z, expected);
          Limbs y = Residues(n, prime, 2);
          z = y;
          expected = y;
          kernels.inverse(z.data(), n, node, table.Get(), prime);
          PlainOf(kernels).inverse(expected.data(), n, node, table.Get(), prime);
          ASSERT_EQ(z, expected);
          // Back to n times the residues.
          kernels.forward(z.data(), n, node, table.Get(), prime);
          const TransformFactor half_of_n =
              prime.Factor(prime.PowerOfHalf(static_cast<uint32_t>(std::countr_zero(n))));
          for (size_t i = 0; i < n * kBlock; ++i) {
            uint64_t value = 0, wanted = 0;
            for (size_t k = kElementLimbs; k-- != 0;) {
              value = value << (32 * (kElementLimbs - 1)) | z[i * kElementLimbs + k];
              wanted = wanted << (32 * (kElementLimbs - 1)) | y[i * kElementLimbs + k];
            }
            ASSERT_EQ(prime.Product(value, half_of_n), Reduced(prime, wanted)) << i;
          }
        }
      }
    }
  });
}

TEST(TransformKernelsTest, ProductsOfBlocksAgree) {
  ForEachTable([](const TransformKernels& kernels) {
    for (const TransformPrime& prime : PrimesOf(kernels)) {
      Table table(PlainOf(kernels), prime, 64);
      const TransformFactor scale = prime.Factor(ResidueBelow(prime, 1));
      for (const size_t n : {size_t{4}, size_t{8}, size_t{32}}) {
        for (const size_t node : {size_t{0}, size_t{2}}) {
          const Limbs x = Residues(n, prime, 4), y = Residues(n, prime, 4);
          Limbs z = x, expected(x.size());
          kernels.multiply(z.data(), z.data(), y.data(), n, node, table.Get(), scale, prime);
          PlainOf(kernels).multiply(expected.data(), x.data(), y.data(), n, node, table.Get(),
                                    scale, prime);
          EXPECT_EQ(z, expected);
          kernels.multiply(expected.data(), x.data(), x.data(), n, node, table.Get(), scale, prime);
          z = x;
          PlainOf(kernels).multiply(z.data(), z.data(), z.data(), n, node, table.Get(), scale,
                                    prime);
          EXPECT_EQ(z, expected);
        }
      }
    }
  });
}

// Operands of every length up to some blocks, at both ends of memory that cannot be touched.
TEST(TransformKernelsTest, FoldsAgreeAndTouchNothingElse) {
  ForEachTable([](const TransformKernels& kernels) {
    const TransformPrime& prime = kernels.primes[Below(kTransformPrimes)];
    const TransformFactor w = prime.Factor(ResidueBelow(prime, 1));
    for (const size_t n : {size_t{4}, size_t{16}}) {
      for (size_t limbs = 1; limbs < 14 * kBlockLimbs; ++limbs) {
        const Limbs x = RandomLimbs(limbs);
        Limbs expected(n * kBlockLimbs);
        PlainOf(kernels).fold(expected.data(), n, x.data(), limbs, w, prime);
        for (const test::Guard guard : {test::Guard::kBefore, test::Guard::kBehind}) {
          test::GuardedMemory memory(guard, limbs * sizeof(Limb));
          const Limb* const guarded = memory.Copy(x.data(), limbs);
          Limbs z(n * kBlockLimbs, kGuard);
          kernels.fold(z.data(), n, guarded, limbs, w, prime);
          ASSERT_EQ(z, expected) << limbs << " limbs in " << n << " blocks";
        }
      }
    }
  });
}

TEST(TransformKernelsTest, StepsOfInterpolationAgree) {
  ForEachTable([](const TransformKernels& kernels) {
    for (const TransformPrime& prime : PrimesOf(kernels)) {
      const TransformFactor w = prime.Factor(ResidueBelow(prime, 1));
      const TransformFactor scale = prime.Factor(prime.p - prime.one);
      for (const size_t n : {size_t{4}, size_t{8}}) {
        const Limbs x = Residues(5 * n, prime, 2), z = Residues(n, prime, 2);
        Limbs got = z, expected = z;
        kernels.subtract_fold(got.data(), n, x.data(), 5 * n, w, scale, prime);
        PlainOf(kernels).subtract_fold(expected.data(), n, x.data(), 5 * n, w, scale, prime);
        EXPECT_EQ(got, expected);
        kernels.add_multiple(got.data(), x.data(), n, w, prime);
        PlainOf(kernels).add_multiple(expected.data(), x.data(), n, w, prime);
        EXPECT_EQ(got, expected);
      }
    }
  });
}

TEST(TransformKernelsTest, CombinationsAgree) {
  ForEachTable([](const TransformKernels& kernels) {
    constexpr size_t kBlocks = 64;
    Limbs r[kTransformPrimes], expected[kTransformPrimes];
    for (size_t i = 0; i < kTransformPrimes; ++i) {
      r[i] = Residues(kBlocks, kernels.primes[i], 2);
      expected[i] = r[i];
    }
    kernels.combine(r[0].data(), r[1].data(), r[2].data(), kBlocks);
    PlainOf(kernels).combine(expected[0].data(), expected[1].data(), expected[2].data(), kBlocks);
    for (size_t i = 0; i < kTransformPrimes; ++i) EXPECT_EQ(r[i], expected[i]);
  });
}

void CheckProduct(const TransformKernels& kernels, const Limbs& x, const Limbs& y, bool square) {
  const size_t m = x.size(), n = y.size();
  Limbs z(m + n + 1, kGuard);
  Limbs scratch(TransformScratch(m, n).Value() + 1, kGuard);
  ASSERT_TRUE(FitsTransforms(m, n));
  TransformProduct(kernels, z.data(), x.data(), m, square ? x.data() : y.data(), n, scratch.data());
  EXPECT_EQ(z.back(), kGuard);
  EXPECT_EQ(scratch.back(), kGuard);
  z.pop_back();
  Mpz px, py;
  Import(px, x);
  Import(py, y);
  mpz_mul(px, px, py);
  ASSERT_EQ(z, Export(px, m + n)) << m << " by " << n;
}

// Lengths around each step of the transforms' lengths, of one part to three.
TEST(TransformProductTest, ProductsOfEveryLengthAreRight) {
  ForEachTable([](const TransformKernels& kernels) {
    const size_t least = 64 * kElementLimbs, most = 540 * kElementLimbs;
    for (size_t n = least; n < most; n += 1 + Below(4 * kFewerCases)) {
      const Limbs x = RandomLimbs(n);
      CheckProduct(kernels, x, RandomLimbs(n), false);
      CheckProduct(kernels, x, x, true);
    }
    for (size_t size = 1024; size <= 4096; size *= 2) {
      for (const size_t part : {0u, 16u, 8u, 4u, 2u}) {
        const size_t n = (size + (part != 0 ? size / part : 0)) / 2 * kElementLimbs;
        for (size_t m = n - 1; m <= n + 1; ++m) {
          CheckProduct(kernels, RandomLimbs(m), RandomLimbs(n), false);
        }
      }
    }
  });
}

TEST(TransformProductTest, UnbalancedProductsAreRight) {
  ForEachTable([](const TransformKernels& kernels) {
    for (int i = 0; i < Cases(200); ++i) {
      const size_t m = 128 * kElementLimbs + Below(1500);
      const size_t n = 1 + Below(i % 2 == 0 ? 20 : 600);
      CheckProduct(kernels, RandomLimbs(m), RandomLimbs(n), false);
      CheckProduct(kernels, RandomLimbs(n), RandomLimbs(m), false);
    }
    // The same limbs with other lengths are no square.
    const Limbs x = RandomLimbs(400);
    Limbs z(700), expected(700), scratch(TransformScratch(400, 300).Value());
    TransformProduct(kernels, z.data(), x.data(), 400, x.data(), 300, scratch.data());
    const Limbs y(x.begin(), x.begin() + 300);
    TransformProduct(kernels, expected.data(), x.data(), 400, y.data(), 300, scratch.data());
    EXPECT_EQ(z, expected);
  });
}

// The greatest coefficients of a product, zero runs, and powers of B.
TEST(TransformProductTest, ExtremeProductsAreRight) {
  ForEachTable([](const TransformKernels& kernels) {
    for (const size_t n : {128 * kElementLimbs, 384 * kElementLimbs + 1, 2000 * kElementLimbs}) {
      const Limbs ones(n, kLimbMax);
      Limbs top(n), runs(n);
      top.back() = Limb{1} << (kLimbBits - 1);
      for (size_t i = 0; i < n; ++i) runs[i] = i / 50 % 2 == 0 ? kLimbMax : 0;
      const Limbs* const kinds[] = {&ones, &top, &runs};
      for (const Limbs* const x : kinds) {
        CheckProduct(kernels, *x, *x, true);
        for (const Limbs* const y : kinds) CheckProduct(kernels, *x, *y, false);
      }
      CheckProduct(kernels, ones, Limbs(1, kLimbMax), false);
      CheckProduct(kernels, ones, Limbs(1, 1), false);
    }
  });
}

void CheckSums(const TransformKernels& kernels, const Limbs (&entries)[4], const Limbs& x,
               const Limbs& y) {
  const size_t m = entries[0].size(), n = x.size();
  Limbs z0(m + n + 2, kGuard), z1(m + n + 2, kGuard), again = z1;
  const SumOfProducts sums[] = {{z0.data(), entries[0].data(), entries[1].data()},
                                {z1.data(), entries[2].data(), entries[3].data()},
                                {again.data(), entries[2].data(), entries[3].data()}};
  ASSERT_TRUE(FitsTransformSums(m, n));
  for (const size_t count : {2u, 1u}) {
    Limbs scratch(TransformSumsScratch(count, m, n).Value() + 1, kGuard);
    TransformSums(kernels, count == 2 ? sums : sums + 2, count, m, x.data(), y.data(), n,
                  scratch.data());
    EXPECT_EQ(scratch.back(), kGuard);
  }
  EXPECT_EQ(again, z1);
  for (Limbs* const result : {&z0, &z1}) {
    EXPECT_EQ(result->back(), kGuard);
    result->pop_back();
  }
  Mpz px, py;
  Import(px, x);
  Import(py, y);
  for (size_t row = 0; row < 2; ++row) {
    Mpz u, v;
    Import(u, entries[2 * row]);
    Import(v, entries[2 * row + 1]);
    mpz_mul(u, u, px);
    mpz_mul(v, v, py);
    mpz_add(u, u, v);
    ASSERT_EQ(row == 0 ? z0 : z1, Export(u, m + n + 1)) << m << " by " << n;
  }
}

TEST(TransformSumsTest, SumsOfEveryLengthAreRight) {
  ForEachTable([](const TransformKernels& kernels) {
    for (size_t n = 64 * kElementLimbs; n < 540 * kElementLimbs; n += 1 + Below(40)) {
      const size_t m = n + Below(static_cast<uint32_t>(n));
      const Limbs entries[] = {RandomLimbs(m), RandomLimbs(m), RandomLimbs(m), RandomLimbs(m)};
      CheckSums(kernels, entries, RandomLimbs(n), RandomLimbs(n));
      // The same number twice, and the longer numbers as the pair.
      const Limbs short_entries[] = {RandomLimbs(n), Limbs(n), Limbs(n, 1), RandomLimbs(n)};
      const Limbs x = RandomLimbs(m);
      CheckSums(kernels, short_entries, x, x);
    }
  });
}

// The greatest sums of coefficients, and zeros.
TEST(TransformSumsTest, ExtremeSumsAreRight) {
  ForEachTable([](const TransformKernels& kernels) {
    for (const size_t n : {128 * kElementLimbs, 384 * kElementLimbs + 1, 2000 * kElementLimbs}) {
      const Limbs ones(n, kLimbMax), zero(n);
      const Limbs all[] = {ones, ones, ones, ones}, half[] = {ones, zero, zero, ones};
      CheckSums(kernels, all, ones, ones);
      CheckSums(kernels, half, ones, zero);
      CheckSums(kernels, all, Limbs(1, kLimbMax), Limbs(1, 0));
    }
  });
}

// Both products of a greatest coefficient are below the primes' product together.
TEST(TransformSumsTest, CoefficientsFitThePrimes) {
  size_t n = kElementLimbs << 20;
  while (FitsTransformSums(n + kElementLimbs, n + kElementLimbs)) n += kElementLimbs;
  EXPECT_GT(n, kElementLimbs << 20);
  EXPECT_TRUE(FitsTransforms(2 * n, n + kElementLimbs));
  EXPECT_FALSE(FitsTransformSums(2 * n, n + kElementLimbs));
  // A single product may have twice as many terms.
  EXPECT_TRUE(FitsTransforms(2 * n - kElementLimbs, 2 * n - kElementLimbs));
}

TEST(TransformProductTest, ScratchGrowsWithTheLengthsAndIsBounded) {
  const size_t least = CurrentTransformKernels().least;
  constexpr size_t kConstant = 512;  // of the recursive methods
  size_t last = 0;
  for (size_t n = least - 10; n < (size_t{1} << 24) * kElementLimbs; n += 1 + n / 97) {
    const size_t scratch = MultiplyScratch(n, n).Value();
    EXPECT_GE(scratch, last) << n;
    last = scratch;
    EXPECT_GE(MultiplyScratch(2 * n, n).Value(), scratch) << n;
    // With copies of the operands and the product at most eight times the operands. Longer ones are
    // split.
    if (!FitsTransforms(9 * n, n)) continue;
    EXPECT_LE(scratch + 2 * n + 2 * n, 8 * (2 * n) + kConstant) << n;
    EXPECT_LE(MultiplyScratch(9 * n, n).Value() + 10 * n + 10 * n, 8 * (10 * n) + kConstant) << n;
  }
}

// MultiplyLimbs on both sides of the least length of transforms.
TEST(TransformProductTest, ProductsAroundTheLeastLengthAreRight) {
  const size_t least = CurrentTransformKernels().least;
  for (size_t n = least - 1; n <= least; ++n) {
    for (const size_t m : {n, n + 1, 3 * n + 5}) {
      const Limbs x = RandomLimbs(m), y = RandomLimbs(n);
      Limbs z(m + n + 1, kGuard), scratch(MultiplyScratch(m, n).Value() + 1, kGuard);
      MultiplyLimbs(z.data(), x.data(), m, y.data(), n, scratch.data());
      EXPECT_EQ(z.back(), kGuard);
      EXPECT_EQ(scratch.back(), kGuard);
      z.pop_back();
      Mpz px, py;
      Import(px, x);
      Import(py, y);
      mpz_mul(px, px, py);
      ASSERT_EQ(z, Export(px, m + n)) << m << " by " << n;
    }
  }
}

}  // namespace
}  // namespace mirolta
