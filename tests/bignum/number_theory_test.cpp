#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "big_testing.h"
#include "gcd.h"
#include "mod_exp.h"
#include "montgomery_power.h"
#include "next_prime.h"
#include "power_kernels.h"

namespace mirolta {
namespace {

// The plain algorithms, step by step on signed numbers: the results, flags included, that the fast
// ones must have.
BigInt PlainGcd(BigInt a, BigInt b) {
  for (;;) {
    if (b == BigInt(0)) return a;
    a = a % b;
    if (a == BigInt(0)) return b;
    b = b % a;
  }
}

BigInt PlainInverse(const BigInt& a, const BigInt& m) {
  BigInt r0 = m, r1 = a, t0, t1(1);
  while (r1 != BigInt(0)) {
    const BigInt q = r0 / r1;
    const BigInt r = r0 - q * r1;
    r0 = r1;
    r1 = r;
    const BigInt t = t0 - q * t1;
    t0 = t1;
    t1 = t;
  }
  if (t0 < BigInt(0)) t0.Add(m);
  return t0;
}

BigInt CallGcd(const BigInt& a, const BigInt& b) {
  BigInt r;
  EXPECT_EQ(Gcd(r, a, b), S_OK);
  return r;
}
BigInt CallInverse(const BigInt& a, const BigInt& m) {
  BigInt r;
  EXPECT_EQ(Inverse(r, a, m), S_OK);
  return r;
}
BigInt CallModExp(const BigInt& base, const BigInt& e, const BigInt& m) {
  BigInt r;
  EXPECT_EQ(ModExp(r, base, e, m), S_OK);
  return r;
}

BigInt WithAnySign(BigInt n) {
  n.SetSignFlag(Below(2) != 0);
  return n;
}

// Numbers of every shape and sign, and small ones.
std::vector<BigInt> Operands(int most) {
  std::vector<BigInt> numbers = ShapedNumbers();
  for (int i = 1; i <= most; ++i) {
    for (const int n : {i, -i}) numbers.push_back(Big(std::to_string(n)));
  }
  return numbers;
}

TEST(GcdTest, OperandsOfEveryShapeAndSignAreRight) {
  for (const BigInt& a : Operands(40)) {
    for (const BigInt& b : Operands(40)) {
      ASSERT_EQ(Hex(CallGcd(a, b)), Hex(PlainGcd(a, b))) << Hex(a) << " " << Hex(b);
    }
  }
}

TEST(GcdTest, RandomOperandsOfEverySignAreRight) {
  for (int i = 0; i < Cases(400); ++i) {
    const BigInt common = RandomBig(i % 2 == 0 ? 10 : 300);
    const BigInt a = WithAnySign(RandomBig(700) * common);
    const BigInt b = WithAnySign(RandomBig(i % 3 == 0 ? 60 : 700) * common);
    ASSERT_EQ(Hex(CallGcd(a, b)), Hex(PlainGcd(a, b)));
  }
}

TEST(InverseTest, AZeroModulusIsRefused) {
  BigInt r(9);
  EXPECT_EQ(Inverse(r, BigInt(3), BigInt(0)), DISP_E_DIVBYZERO);
  EXPECT_EQ(Inverse(r, BigInt(0), Big("-0")), DISP_E_DIVBYZERO);
  EXPECT_EQ(Hex(r), "9");
}

TEST(InverseTest, OperandsOfEveryShapeAndSignAreRight) {
  for (const BigInt& a : Operands(60)) {
    for (const BigInt& m : Operands(40)) {
      if (m.IsZero()) continue;
      ASSERT_EQ(Hex(CallInverse(a, m)), Hex(PlainInverse(a, m))) << Hex(a) << " " << Hex(m);
    }
  }
}

TEST(InverseTest, RandomOperandsOfEverySignAreRight) {
  for (int i = 0; i < Cases(400); ++i) {
    const BigInt common = i % 2 == 0 ? BigInt(1) : RandomBig(200);
    const BigInt a = WithAnySign(RandomBig(i % 3 == 0 ? 60 : 700) * common);
    const BigInt m = WithAnySign(RandomBig(i % 5 == 0 ? 60 : 700) * common);
    if (m.IsZero()) continue;
    ASSERT_EQ(Hex(CallInverse(a, m)), Hex(PlainInverse(a, m)));
  }
}

// Fibonacci numbers take the most steps, neighbours of a power have the largest quotients.
TEST(InverseTest, FibonacciNumbersAndLargeQuotientsAreRight) {
  BigInt a(1), b(1);
  for (int i = 0; i < 900; ++i) {
    const BigInt next = a + b;
    a = b;
    b = next;
    if (i % 7 != 0) continue;
    ASSERT_EQ(Hex(CallInverse(a, b)), Hex(PlainInverse(a, b)));
    ASSERT_EQ(Hex(CallInverse(b, a)), Hex(PlainInverse(b, a)));
    ASSERT_EQ(Hex(CallGcd(a * BigInt(12), b * BigInt(12))), "c");
  }
  for (size_t i = 1; i < 400; i += 3) {
    const BigInt power = HexPower(i);
    for (const BigInt& x : {power + BigInt(1), power - BigInt(1), power * power - BigInt(1)}) {
      ASSERT_EQ(Hex(CallInverse(power, x)), Hex(PlainInverse(power, x)));
      ASSERT_EQ(Hex(CallInverse(x, power)), Hex(PlainInverse(x, power)));
    }
  }
}

TEST(ModExpTest, AZeroModulusIsRefused) {
  BigInt r(9);
  EXPECT_EQ(ModExp(r, BigInt(3), BigInt(5), BigInt(0)), DISP_E_DIVBYZERO);
  EXPECT_EQ(ModExp(r, BigInt(3), BigInt(0), Big("-0")), DISP_E_DIVBYZERO);
  EXPECT_EQ(Hex(r), "9");
}

// The power of magnitudes, with the sign flag of base^e; 0 for a negative modulus, unless e = 0.
TEST(ModExpTest, EverySmallOperandOfEverySignIsRight) {
  for (int m = -12; m < 50; ++m) {
    if (m == 0) continue;
    for (int base = -20; base < 60; ++base) {
      uint32_t power = 1 % static_cast<uint32_t>(std::abs(m));
      for (int e = 0; e < 12; ++e) {
        for (const int signed_e : {e, -e}) {
          const bool negative = m > 0 && base < 0 && e % 2 != 0;
          const uint32_t wanted = m > 0 || e == 0 ? power : 0;
          ASSERT_EQ(Hex(CallModExp(Big(std::to_string(base)), Big(std::to_string(signed_e)),
                                   Big(std::to_string(m)))),
                    (negative ? "-" : "") + Hex(BigInt(wanted)))
              << base << "^" << signed_e << " mod " << m;
        }
        power = power * static_cast<uint32_t>(std::abs(base)) % static_cast<uint32_t>(std::abs(m));
      }
    }
  }
}

TEST(ModExpTest, PowersOfLargeExponentsAreRight) {
  EXPECT_EQ(Hex(CallModExp(BigInt(4), BigInt(13), BigInt(497))), Hex(BigInt(445)));
  EXPECT_EQ(Hex(CallModExp(BigInt(2), BigInt(100), BigInt(8))), "0");
}

TEST(ModExpTest, ResultsMayBeOperands) {
  const BigInt base = RandomBigOf(200), e = RandomBigOf(90), m = RandomBigOf(150) + BigInt(2);
  const std::string wanted = Hex(CallModExp(base, e, m));
  BigInt r = base;
  ASSERT_EQ(ModExp(r, r, e, m), S_OK);
  EXPECT_EQ(Hex(r), wanted);
  r = e;
  ASSERT_EQ(ModExp(r, base, r, m), S_OK);
  EXPECT_EQ(Hex(r), wanted);
  r = m;
  ASSERT_EQ(ModExp(r, base, e, r), S_OK);
  EXPECT_EQ(Hex(r), wanted);
  r = m;
  ASSERT_EQ(Inverse(r, base, r), S_OK);
  EXPECT_EQ(Hex(r), Hex(CallInverse(base, m)));
  r = base;
  ASSERT_EQ(Gcd(r, r, r), S_OK);
  EXPECT_EQ(Hex(r), Hex(base));
}

// Operands are read before the result overwrites them: every kind of value and sign, with the
// result in each operand, against a separate result.
TEST(ModExpTest, TheResultInAnOperandIsTheSame) {
  std::vector<BigInt> values;
  for (const uint32_t word : {0u, 1u, 2u, 3u, 8u, 0xFFFFFFFFu}) {
    values.push_back(BigInt(word));
    values.push_back(BigInt(word));
    values.back().SetSignFlag(true);
  }
  values.push_back(RandomBigOf(80));
  values.push_back(values.back());
  values.back().SetSignFlag(true);
  for (const BigInt& base : values) {
    for (const BigInt& e : values) {
      for (const BigInt& m : values) {
        BigInt apart(9);
        const HRESULT status = ModExp(apart, base, e, m);
        BigInt x = base, y = e, z = m;
        EXPECT_EQ(ModExp(x, x, e, m), status);
        EXPECT_EQ(ModExp(y, base, y, m), status);
        EXPECT_EQ(ModExp(z, base, e, z), status);
        const BigInt* const operands[] = {&base, &e, &m};
        const BigInt* const results[] = {&x, &y, &z};
        for (size_t i = 0; i < 3; ++i) {
          const BigInt& wanted = SUCCEEDED(status) ? apart : *operands[i];
          ASSERT_EQ(Hex(*results[i]), Hex(wanted)) << i;
          ASSERT_EQ(results[i]->SignFlag(), wanted.SignFlag()) << i;
        }
      }
    }
  }
}

// The sign of the base is that of an odd power, also of one that is zero, and of a base that the
// result replaces.
TEST(ModExpTest, AModulusOfOneKeepsTheSignOfAnOddPower) {
  for (const bool negative : {false, true}) {
    for (const uint32_t e : {1u, 2u, 3u}) {
      BigInt r(5);
      r.SetSignFlag(negative);
      ASSERT_EQ(ModExp(r, r, BigInt(e), BigInt(1)), S_OK);
      EXPECT_TRUE(r.IsZero());
      EXPECT_EQ(r.SignFlag(), negative && e % 2 != 0) << e;
    }
    // The exponent zero makes a number of its own.
    BigInt r(5);
    r.SetSignFlag(negative);
    ASSERT_EQ(ModExp(r, r, BigInt(0), BigInt(1)), S_OK);
    EXPECT_TRUE(r.IsZero());
    EXPECT_FALSE(r.SignFlag());
  }
}

TEST(ModExpTest, PowersMultiplyAsTheirExponentsAdd) {
  for (int i = 0; i < Cases(60); ++i) {
    const BigInt m = RandomBig(500) + BigInt(2), x = RandomBig(600);
    const BigInt e = RandomBig(80), f = RandomBig(80);
    const BigInt product = CallModExp(x, e, m) * CallModExp(x, f, m) % m;
    EXPECT_EQ(Hex(CallModExp(x, e + f, m)), Hex(product));
  }
}

TEST(NumberTheoryTest, OperationsOnAFailedNumberFail) {
  const BigInt failed = BigInt::Failed(E_OUTOFMEMORY);
  BigInt r(9);
  EXPECT_EQ(Gcd(r, failed, r), E_OUTOFMEMORY);
  EXPECT_EQ(Inverse(r, r, failed), E_OUTOFMEMORY);
  EXPECT_EQ(ModExp(r, r, r, failed), E_OUTOFMEMORY);
  EXPECT_EQ(ModExp(r, r, failed, r), E_OUTOFMEMORY);
  bool result = true;
  EXPECT_EQ(IsFermatPrime(&result, failed), E_OUTOFMEMORY);
  EXPECT_TRUE(result);
  EXPECT_EQ(Hex(r), "9");
}

TEST(PowerKernelTest, ThePortableRowTakesEverything) {
  EXPECT_EQ(ChoosePower(1, 0).function, MontgomeryPower);
  EXPECT_EQ(ChoosePower(100000, 0).function, MontgomeryPower);
  for (const size_t bits : {size_t{0}, size_t{1}, SIZE_MAX}) {
    const PowerMethod& last = ChoosePower(bits, 0);
    EXPECT_EQ(last.least_bits, 0u);
    EXPECT_EQ(last.most_bits, SIZE_MAX);
    EXPECT_EQ(last.function, MontgomeryPower);
  }
  const auto& row = kPowerKernels[kPowerKernels.size() - 1];
  EXPECT_STREQ(row.name, "montgomery");
  EXPECT_EQ(row.needs, 0u);
}

}  // namespace
}  // namespace mirolta
