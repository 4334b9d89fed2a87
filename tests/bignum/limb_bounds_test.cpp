// Limb kernels touch nothing before or behind their operands, and agree with the portable one.
#include <gtest/gtest.h>

#include <new>
#include <vector>

#include "guarded_memory.h"
#include "kernel_rows.h"
#include "limb_kernels.h"
#include "limb_scratch.h"
#include "limb_testing.h"

namespace mirolta {
namespace {

using test::Guard;
using test::GuardedMemory;

// GuardedLimbs: limbs with a page that cannot be touched before or behind them.
class GuardedLimbs {
 public:
  GuardedLimbs(Guard guard, const Limbs& limbs)
      : memory_(guard, limbs.size() * sizeof(Limb)),
        data_(memory_.Copy(limbs.data(), limbs.size())),
        count_(limbs.size()) {}

  Limb* data() const { return data_; }
  Limbs limbs() const { return Limbs(data_, data_ + count_); }

 private:
  GuardedMemory memory_;
  Limb* data_;
  size_t count_;
};

Limbs Ones(size_t n, size_t step) {
  Limbs limbs(n);
  for (size_t i = 0; i < n; ++i) limbs[i] = static_cast<Limb>(0 - (i + step) * (i + step));
  return limbs;
}

template <typename Check>
void ForEachTable(const Check& check) {
  test::ForEachKernel(kLimbKernels, [&](const auto& row) {
    for (const Guard guard : {Guard::kBefore, Guard::kBehind}) {
      check(*row.function, *test::PortableOf(kLimbKernels), guard);
    }
  });
}

TEST(LimbBounds, SumsAndDifferencesTouchNothingElse) {
  ForEachTable([](const LimbKernels& k, const LimbKernels& portable, Guard guard) {
    for (size_t n = 0; n < 40; ++n) {
      const GuardedLimbs x(guard, Ones(n, 1)), y(guard, Ones(n, 7)), z(guard, Ones(n, 0));
      Limbs expected(n);
      EXPECT_EQ(k.add(z.data(), x.data(), y.data(), n),
                portable.add(expected.data(), x.data(), y.data(), n));
      EXPECT_EQ(z.limbs(), expected) << n;
      EXPECT_EQ(k.subtract(z.data(), x.data(), y.data(), n),
                portable.subtract(expected.data(), x.data(), y.data(), n));
      EXPECT_EQ(z.limbs(), expected) << n;
    }
  });
}

TEST(LimbBounds, ProductsByOneLimbTouchNothingElse) {
  ForEachTable([](const LimbKernels& k, const LimbKernels& portable, Guard guard) {
    const Limb factor = static_cast<Limb>(0) - 3;
    for (size_t n = 0; n < 40; ++n) {
      const GuardedLimbs x(guard, Ones(n, 1)), z(guard, Ones(n, 5));
      Limbs expected = z.limbs();
      EXPECT_EQ(k.mul_add1(z.data(), x.data(), n, factor),
                portable.mul_add1(expected.data(), x.data(), n, factor));
      EXPECT_EQ(z.limbs(), expected) << n;
      EXPECT_EQ(k.mul_sub1(z.data(), x.data(), n, factor),
                portable.mul_sub1(expected.data(), x.data(), n, factor));
      EXPECT_EQ(z.limbs(), expected) << n;
      EXPECT_EQ(k.mul1(z.data(), x.data(), n, factor),
                portable.mul1(expected.data(), x.data(), n, factor));
      EXPECT_EQ(z.limbs(), expected) << n;
    }
  });
}

TEST(LimbBounds, ProductsAndSquaresTouchNothingElse) {
  ForEachTable([](const LimbKernels& k, const LimbKernels& portable, Guard guard) {
    for (size_t n = 1; n < 36; ++n) {
      const GuardedLimbs y(guard, Ones(n, 2));
      for (const size_t m : {n, n + 1, n + 5}) {
        const GuardedLimbs x(guard, Ones(m, 1)), z(guard, Ones(m + n, 0));
        Limbs expected(m + n);
        k.multiply(z.data(), x.data(), m, y.data(), n);
        portable.multiply(expected.data(), x.data(), m, y.data(), n);
        EXPECT_EQ(z.limbs(), expected) << m << " " << n;
      }
      const GuardedLimbs z(guard, Ones(2 * n, 0));
      Limbs expected(2 * n);
      k.square(z.data(), y.data(), n);
      portable.square(expected.data(), y.data(), n);
      EXPECT_EQ(z.limbs(), expected) << n;
    }
  });
}

TEST(LimbBounds, MontgomeryProductsTouchNothingElse) {
  ForEachTable([](const LimbKernels& k, const LimbKernels& portable, Guard guard) {
    for (size_t n = 1; n < 36; ++n) {
      Limbs modulus = Ones(n, 3);
      modulus[0] |= 1;
      modulus[n - 1] |= static_cast<Limb>(1) << (kLimbBits - 1);
      const Limb inverse = NegatedInverse(modulus[0]);
      Limbs small = Ones(n, 9);
      small[n - 1] >>= 1;
      const GuardedLimbs m(guard, modulus), x(guard, small), z(guard, Ones(n, 0));
      Limbs product(2 * n);
      portable.square(product.data(), small.data(), n);
      const GuardedLimbs t(guard, product);
      Limbs expected(n);
      k.reduce(z.data(), t.data(), m.data(), n, inverse);
      portable.reduce(expected.data(), product.data(), modulus.data(), n, inverse);
      EXPECT_EQ(z.limbs(), expected) << n;
      const GuardedLimbs w(guard, Ones(n, 0));
      if (k.montgomery(w.data(), x.data(), x.data(), m.data(), n, inverse)) {
        EXPECT_EQ(w.limbs(), expected) << n;
      } else {
        EXPECT_EQ(w.limbs(), Ones(n, 0)) << n;
      }
    }
  });
}

TEST(LimbBounds, ScratchHoldsItsLimbs) {
  for (size_t count = 1; count < 200; ++count) {
    const GuardedMemory memory(Guard::kBehind, sizeof(LimbScratch));
    LimbScratch* const scratch = new (memory.data()) LimbScratch(CheckedSize(count));
    ASSERT_NE(scratch->Get(), nullptr);
    for (size_t i = 0; i < count; ++i) scratch->Get()[i] = static_cast<Limb>(i + 1);
    EXPECT_EQ(scratch->Get()[count - 1], count);
    scratch->~LimbScratch();
  }
}

}  // namespace
}  // namespace mirolta
