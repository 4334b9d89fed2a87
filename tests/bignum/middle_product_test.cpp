// Differences of products whose upper limbs are known, and products in cyclic rings: against the peer.
#include "middle_product.h"

#include <gtest/gtest.h>

#include "kernel_rows.h"
#include "limb_testing.h"

namespace mirolta {
namespace {

constexpr Limb kGuard = static_cast<Limb>(0xABCDEF0123456789u);

template <typename Check>
void ForEachTable(const Check& check) {
  test::ForEachKernel(kTransformKernels, [&](const auto& row) { check(*row.function); });
}

// What a ring's modulus is.
void ImportModulus(Mpz& z, const CyclicRing& ring) {
  mpz_set_ui(z, 1);
  mpz_mul_2exp(z, z, ring.n * kLimbBits);
  if (ring.plus) {
    mpz_add_ui(z, z, 1);
  } else {
    mpz_sub_ui(z, z, 1);
  }
}

// Expects a residue that is as its contract says and congruent to the number.
void ExpectResidue(const CyclicRing& ring, const Limbs& residue, const Mpz& number) {
  ASSERT_EQ(residue.size(), ring.n + 1);
  Mpz modulus, got, expected;
  ImportModulus(modulus, ring);
  Import(got, residue);
  mpz_mod(expected, number, modulus);
  if (!ring.plus && mpz_cmp(got, modulus) == 0) mpz_set_ui(got, 0);
  EXPECT_EQ(mpz_cmp(got, expected), 0) << ring.n << ring.plus;
}

// Numbers of that many limbs, often the extremes.
Limbs Number(size_t n) {
  const uint32_t kind = Below(8);
  if (kind == 0) return Limbs(n, kLimbMax);
  if (kind == 1) return Limbs(n);
  if (kind == 2) {
    Limbs one(n);
    one[Below(static_cast<uint32_t>(n))] = 1;
    return one;
  }
  return RandomLimbs(n);
}

TEST(CyclicRingTest, ResiduesAreRight) {
  for (const bool plus : {false, true}) {
    for (int i = 0; i < Cases(3000); ++i) {
      const CyclicRing ring = {2 + Below(9), plus};
      Limbs z(ring.n + 1, kGuard), x(ring.n + 1, kGuard);
      const Limbs a = Number(1 + Below(40)), b = Number(1 + Below(40));
      Mpz pa, pb;
      Import(pa, a);
      Import(pb, b);
      ring.Reduce(z.data(), a.data(), a.size());
      ExpectResidue(ring, z, pa);
      ring.Reduce(x.data(), b.data(), b.size());
      Limbs half = z;
      ring.Halve(half.data());
      Mpz modulus, expected;
      ImportModulus(modulus, ring);
      mpz_mod(expected, pa, modulus);
      Mpz odd;
      mpz_fdiv_r_2exp(odd, expected, 1);
      if (mpz_sgn(static_cast<mpz_srcptr>(odd)) != 0) mpz_add(expected, expected, modulus);
      mpz_fdiv_q_2exp(expected, expected, 1);
      ExpectResidue(ring, half, expected);
      ring.Subtract(z.data(), x.data());
      mpz_sub(pa, pa, pb);
      ExpectResidue(ring, z, pa);
      if (HasFailure()) FAIL() << i;
    }
  }
}

TEST(CyclicRingTest, ExtremeResiduesAreRight) {
  for (const bool plus : {false, true}) {
    const CyclicRing ring = {3, plus};
    for (int64_t top = -3; top <= 3; ++top) {
      for (const Limb fill : {Limb{0}, Limb{1}, kLimbMax}) {
        Limbs z = {fill, fill == 1 ? Limb{0} : fill, fill == 1 ? Limb{0} : fill, kGuard};
        Mpz number, power;
        Import(number, Limbs(z.begin(), z.end() - 1));
        mpz_set_ui(power, static_cast<unsigned long>(top < 0 ? -top : top));
        if (top < 0) mpz_neg(power, power);
        mpz_mul_2exp(power, power, 3 * kLimbBits);
        mpz_add(number, number, power);
        ring.Settle(z.data(), top);
        ExpectResidue(ring, z, number);
      }
    }
  }
}

void CheckCyclic(const TransformKernels& kernels, const CyclicRing& ring, const Limbs& x,
                 const Limbs& y) {
  const bool longer = x.size() >= y.size();
  const Limbs& a = longer ? x : y;
  const Limbs& b = longer ? y : x;
  ASSERT_TRUE(FitsCyclicProduct(a.size(), b.size(), ring));
  Limbs z(ring.n + 2, kGuard), scratch(CyclicScratch(ring).Value() + 1, kGuard);
  CyclicProduct(kernels, z.data(), ring, a.data(), a.size(), b.data(), b.size(), scratch.data());
  EXPECT_EQ(z.back(), kGuard);
  EXPECT_EQ(scratch.back(), kGuard);
  z.pop_back();
  Mpz px, py;
  Import(px, x);
  Import(py, y);
  mpz_mul(px, px, py);
  ExpectResidue(ring, z, px);
}

TEST(CyclicProductTest, ProductsAreRight) {
  if (kLimbBits != 64) GTEST_SKIP() << "cyclic products are those of 64-bit limbs";
  ForEachTable([](const TransformKernels& kernels) {
    for (const bool plus : {false, true}) {
      for (size_t n = kLeastBlocks * kBlockLimbs; n <= 2048; n *= 2) {
        const CyclicRing ring = {n, plus};
        for (int i = 0; i < Cases(15); ++i) {
          const auto most = static_cast<uint32_t>(4 * n);
          CheckCyclic(kernels, ring, Number(1 + Below(most)), Number(1 + Below(most)));
        }
        // The greatest coefficients, positive and negative, and what is B^n and -1.
        const Limbs ones(n, kLimbMax);
        Limbs power(n + 1);
        power.back() = 1;
        CheckCyclic(kernels, ring, ones, ones);
        CheckCyclic(kernels, ring, power, power);
        CheckCyclic(kernels, ring, power, ones);
        CheckCyclic(kernels, ring, power, Limbs(1, 1));
        CheckCyclic(kernels, ring, Limbs(n), ones);
        CheckCyclic(kernels, ring, Limbs(4 * n, kLimbMax), Limbs(3 * n, kLimbMax));
      }
    }
  });
}

// The greatest sum of a coefficient's terms is below half of the primes' product.
TEST(CyclicProductTest, CoefficientsOfEitherSignFitThePrimes) {
  const CyclicRing ring = {size_t{1} << 16, true};
  size_t n = 1;
  while (FitsCyclicProduct(ring.n, n + 1, ring)) n += 1 + (n < 1000000 ? 1000 : 0);
  EXPECT_GT(n, size_t{1} << 20);
  EXPECT_FALSE(FitsCyclicProduct(2 * ring.n, n, ring));
  EXPECT_FALSE(FitsCyclicProduct(1, 1, {size_t{1} << 21, true}));
  ForEachTable([&](const TransformKernels& kernels) {
    Mpz primes, p, terms;
    mpz_set_ui(primes, 1);
    for (size_t i = 0; i < kTransformPrimes; ++i) {
      const uint64_t modulus = kernels.primes[i].Modulus();
      mpz_set_ui(p, static_cast<uint32_t>(modulus >> 32));
      mpz_mul_2exp(p, p, 32);
      mpz_add_ui(p, p, static_cast<uint32_t>(modulus));
      mpz_mul(primes, primes, p);
    }
    // The comparison of the upper limbs alone takes two more.
    mpz_set_ui(terms, static_cast<uint32_t>(n + 2));
    mpz_mul_2exp(terms, terms, 2 * 64 + 1);
    EXPECT_LT(mpz_cmp(terms, primes), 0);
  });
}

// z := a - x y for a of that many limbs, where the difference is the given one.
void CheckDifference(const TransformKernels& kernels, const Limbs& x, const Limbs& y,
                     const Limbs& difference) {
  const size_t m = x.size(), n = y.size(), count = difference.size();
  Mpz pa, px, pd;
  Import(pa, y);
  Import(px, x);
  Import(pd, difference);
  mpz_mul(pa, pa, px);
  mpz_add(pa, pa, pd);
  const Limbs a = Export(pa, m + n + 1);
  Limbs scratch(MiddleProductScratch(kernels, count, m, n).Value() + 1, kGuard);
  Limbs z(count + 1, kGuard);
  SubtractProduct(kernels, z.data(), count, a.data(), a.size(), x.data(), m, y.data(), n,
                  scratch.data());
  EXPECT_EQ(z.back(), kGuard);
  EXPECT_EQ(scratch.back(), kGuard);
  z.pop_back();
  EXPECT_EQ(z, difference) << count << " limbs of " << m << " by " << n;
  // In place.
  Limbs in_place = a;
  SubtractProduct(kernels, in_place.data(), count, in_place.data(), in_place.size(), x.data(), m,
                  y.data(), n, scratch.data());
  EXPECT_EQ(in_place[count], a[count]);
  in_place.resize(count);
  EXPECT_EQ(in_place, difference);
}

// A table whose transforms are chosen for short operands too.
TransformKernels WithLeast(const TransformKernels& kernels, size_t least) {
  TransformKernels changed = kernels;
  changed.least = least;
  return changed;
}

TEST(MiddleProductTest, DifferencesAreRight) {
  ForEachTable([](const TransformKernels& kernels) {
    const TransformKernels all = WithLeast(kernels, 30);
    for (int i = 0; i < Cases(400); ++i) {
      const size_t m = 30 + Below(i % 4 == 0 ? 2500 : 400);
      const size_t n = 1 + Below(static_cast<uint32_t>(m));
      const size_t count = 1 + Below(static_cast<uint32_t>(m + n));
      CheckDifference(all, Number(m), Number(n), Number(count));
      if (testing::Test::HasFailure()) FAIL() << i;
    }
  });
}

// Around each length of the rings, of one ring to three.
TEST(MiddleProductTest, DifferencesOfEveryLengthAreRight) {
  ForEachTable([](const TransformKernels& kernels) {
    const TransformKernels all = WithLeast(kernels, 30);
    for (size_t count = 60; count < 2100; count = (count / 32 + 1) * 32) {
      for (size_t at = count - 1; at <= count + 1; ++at) {
        CheckDifference(all, RandomLimbs(at - 1), RandomLimbs(at / 2 + 1), Number(at));
        if (testing::Test::HasFailure()) FAIL() << at;
      }
    }
    for (const size_t n : {100u, 127u, 255u, 256u, 511u, 700u, 1000u}) {
      for (const Limb fill : {Limb{0}, kLimbMax}) {
        const Limbs x(n, kLimbMax);
        CheckDifference(all, x, x, Limbs(n + 1, fill));
        CheckDifference(all, x, Limbs(n), Limbs(n + 1, fill));
        CheckDifference(all, x, Limbs(n / 2 + 1, kLimbMax), Limbs(n + 1, fill));
      }
    }
  });
}

// Each length of the shorter operand has the scratch of longer ones.
TEST(MiddleProductTest, ScratchGrowsWithTheLengths) {
  const TransformKernels kernels = WithLeast(CurrentTransformKernels(), 130);
  for (const size_t m : {300u, 1000u, 2000u, 5000u, 12000u}) {
    size_t last = 0;
    for (size_t n = 1; n <= m; n += 1 + n / 20) {
      const size_t scratch = MiddleProductScratch(kernels, m + 1, m, n).Value();
      EXPECT_GE(scratch, last) << m << " by " << n;
      last = scratch;
    }
  }
}

}  // namespace
}  // namespace mirolta
