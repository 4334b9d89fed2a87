#include "big_int.h"

#include <gtest/gtest.h>

#include "big_testing.h"

namespace mirolta {
namespace {

TEST(BigIntTest, ANewNumberIsZeroAndPositive) {
  BigInt n;
  EXPECT_TRUE(n.IsZero());
  EXPECT_FALSE(n.SignFlag());
  EXPECT_EQ(n.BitLength(), 0u);
  EXPECT_EQ(n.Status(), S_OK);
  EXPECT_EQ(Hex(BigInt(0)), "0");
  EXPECT_EQ(Hex(BigInt(0xFFFFFFFF)), "ffffffff");
  EXPECT_FALSE(BigInt(7).SignFlag());
}

TEST(BigIntTest, DifferencesMayBeNegative) {
  EXPECT_EQ(Hex(BigInt(3) - BigInt(5)), "-2");
  BigInt n(3);
  ASSERT_EQ(n.Subtract(BigInt(5)), S_OK);
  EXPECT_EQ(Hex(n), "-2");
  ASSERT_EQ(n.Add(BigInt(2)), S_OK);
  EXPECT_EQ(Hex(n), "-0");  // the flag stays with the zero
  EXPECT_FALSE(n.IsNegative());
  EXPECT_TRUE(n == BigInt(0));
}

// An operation, and the sign flag of a result that is zero by those of its operands. Other results
// have their sign.
struct SignedOperation {
  const char* name;
  BigInt (*apply)(const BigInt&, const BigInt&);
  void (*peer)(mpz_ptr, mpz_srcptr, mpz_srcptr);
  bool (*flag_of_zero)(bool a, bool b);
};
const SignedOperation kSignedOperations[] = {
    {"+", [](const BigInt& a, const BigInt& b) { return a + b; },
     [](mpz_ptr z, mpz_srcptr x, mpz_srcptr y) { mpz_add(z, x, y); },
     [](bool a, bool) { return a; }},
    {"-", [](const BigInt& a, const BigInt& b) { return a - b; },
     [](mpz_ptr z, mpz_srcptr x, mpz_srcptr y) { mpz_sub(z, x, y); },
     [](bool a, bool) { return a; }},
    {"*", [](const BigInt& a, const BigInt& b) { return a * b; },
     [](mpz_ptr z, mpz_srcptr x, mpz_srcptr y) { mpz_mul(z, x, y); },
     [](bool a, bool b) { return a != b; }},
    {"/", [](const BigInt& a, const BigInt& b) { return a / b; },
     [](mpz_ptr z, mpz_srcptr x, mpz_srcptr y) { mpz_tdiv_q(z, x, y); },
     [](bool a, bool b) { return a != b; }},
    {"%", [](const BigInt& a, const BigInt& b) { return a % b; },
     [](mpz_ptr z, mpz_srcptr x, mpz_srcptr y) {
       Mpz quotient;
       mpz_tdiv_qr(quotient, z, x, y);
     },
     [](bool a, bool) { return a; }},
};

TEST(BigIntTest, ResultsOfEveryShapeHaveTheirSignFlags) {
  const std::vector<BigInt> numbers = ShapedNumbers();
  for (const SignedOperation& operation : kSignedOperations) {
    for (const BigInt& a : numbers) {
      for (const BigInt& b : numbers) {
        const BigInt got = operation.apply(a, b);
        if (b.IsZero() && (*operation.name == '/' || *operation.name == '%')) {
          ASSERT_EQ(got.Status(), DISP_E_DIVBYZERO) << Hex(a) << operation.name << Hex(b);
          continue;
        }
        Mpz wanted;
        operation.peer(wanted, Mpz(a), Mpz(b));
        const bool negative_zero = mpz_sgn(static_cast<mpz_srcptr>(wanted)) == 0 &&
                                   operation.flag_of_zero(a.SignFlag(), b.SignFlag());
        ASSERT_EQ(Hex(got), (negative_zero ? "-" : "") + Hex(static_cast<mpz_srcptr>(wanted)))
            << Hex(a) << operation.name << Hex(b);
      }
    }
  }
}

TEST(BigIntTest, CompareOfTwoNegativesComparesTheirMagnitudes) {
  const std::vector<BigInt> numbers = ShapedNumbers();
  for (const BigInt& a : numbers) {
    for (const BigInt& b : numbers) {
      SCOPED_TRACE(Hex(a) + " " + Hex(b));
      const int by_value = mpz_cmp(Mpz(a), Mpz(b));
      int wanted = by_value > 0 ? 1 : by_value < 0 ? -1 : 0;
      if (a.IsNegative() && b.IsNegative()) wanted = -wanted;
      ASSERT_EQ(Compare(a, b), wanted);
      ASSERT_EQ(a == b, wanted == 0);
      ASSERT_EQ(a != b, wanted != 0);
      ASSERT_EQ(a < b, wanted < 0);
      ASSERT_EQ(a > b, wanted > 0);
      ASSERT_EQ(a >= b, wanted >= 0);
    }
  }
}

TEST(BigIntTest, DivisionByZeroIsReported) {
  BigInt r(9);
  for (const char* dividend : {"0", "7", "-7"}) {
    for (const char* zero : {"0", "-0"}) {
      EXPECT_EQ(Divide(r, Big(dividend), Big(zero)), DISP_E_DIVBYZERO);
      EXPECT_EQ(Remainder(r, Big(dividend), Big(zero)), DISP_E_DIVBYZERO);
      EXPECT_EQ(Hex(r), "9");
      EXPECT_EQ((Big(dividend) / Big(zero)).Status(), DISP_E_DIVBYZERO);
      EXPECT_EQ((Big(dividend) % Big(zero)).Status(), DISP_E_DIVBYZERO);
    }
  }
}

TEST(BigIntTest, OperationsOnAFailedNumberFail) {
  const BigInt failed = BigInt::Failed(E_OUTOFMEMORY);
  BigInt r(9);
  EXPECT_EQ(Add(r, failed, BigInt(1)), E_OUTOFMEMORY);
  EXPECT_EQ(Subtract(r, BigInt(1), failed), E_OUTOFMEMORY);
  EXPECT_EQ(Multiply(r, failed, failed), E_OUTOFMEMORY);
  EXPECT_EQ(Divide(r, failed, BigInt(1)), E_OUTOFMEMORY);
  EXPECT_EQ(Remainder(r, BigInt(1), failed), E_OUTOFMEMORY);
  EXPECT_EQ(r.Add(failed), E_OUTOFMEMORY);
  EXPECT_EQ(r.Subtract(failed), E_OUTOFMEMORY);
  EXPECT_EQ(Hex(r), "9");
  EXPECT_EQ(((failed + BigInt(1)) * BigInt(2)).Status(), E_OUTOFMEMORY);
  EXPECT_EQ(((BigInt(1) / BigInt(0)) + BigInt(1)).Status(), DISP_E_DIVBYZERO);
  BigInt again = failed;
  EXPECT_EQ(Add(again, BigInt(1), BigInt(2)), S_OK);
  EXPECT_EQ(again.Status(), S_OK);
  EXPECT_EQ(Hex(again), "3");
}

// Every operation with results that are operands.
TEST(BigIntTest, ResultsMayBeOperands) {
  using Operation = HRESULT (*)(BigInt&, const BigInt&, const BigInt&) noexcept;
  const Operation operations[] = {Add, Subtract, Multiply, Divide, Remainder};
  for (const Operation operation : operations) {
    for (int i = 0; i < Cases(200); ++i) {
      BigInt a = RandomBig(300), b = RandomBig(200);
      if (b.IsZero()) b = BigInt(3);
      a.SetSignFlag(Below(2) != 0);
      b.SetSignFlag(Below(2) != 0);
      BigInt wanted;
      ASSERT_EQ(operation(wanted, a, b), S_OK);
      BigInt r = a;
      ASSERT_EQ(operation(r, r, b), S_OK);
      EXPECT_EQ(Hex(r), Hex(wanted));
      r = b;
      ASSERT_EQ(operation(r, a, r), S_OK);
      EXPECT_EQ(Hex(r), Hex(wanted));
      const BigInt copy(b);
      ASSERT_EQ(operation(wanted, b, copy), S_OK);
      r = b;
      ASSERT_EQ(operation(r, r, r), S_OK);
      EXPECT_EQ(Hex(r), Hex(wanted));
      EXPECT_EQ(Hex(copy), Hex(b));
    }
  }
}

TEST(BigIntTest, NumbersAddAndSubtractThemselves) {
  BigInt n = BigHex("ffffffffffffffff");
  ASSERT_EQ(n.Add(n), S_OK);
  EXPECT_EQ(Hex(n), "1fffffffffffffffe");
  ASSERT_EQ(n.Subtract(n), S_OK);
  EXPECT_EQ(Hex(n), "0");
}

TEST(BigIntTest, CopiesShareUntilOneIsWritten) {
  BigInt a = BigHex("123456789abcdef0123456789");
  EXPECT_EQ(a.Magnitude().share_count, 0u);
  {
    const BigInt b(a);
    BigInt c;
    c = a;
    EXPECT_EQ(&b.Magnitude(), &a.Magnitude());
    EXPECT_EQ(&c.Magnitude(), &a.Magnitude());
    EXPECT_EQ(a.Magnitude().share_count, 2u);
    c = BigInt(1);
    EXPECT_EQ(a.Magnitude().share_count, 1u);
    BigInt moved(std::move(c));
    EXPECT_EQ(Hex(moved), "1");
    const BigInt& same = moved;
    moved = same;
    EXPECT_EQ(Hex(moved), "1");
  }
  EXPECT_EQ(a.Magnitude().share_count, 0u);
  const BigInt& same = a;
  a = same;
  EXPECT_EQ(Hex(a), "123456789abcdef0123456789");
  EXPECT_EQ(a.Magnitude().share_count, 0u);
}

// What each change leaves in the number and in a copy made before it.
TEST(BigIntTest, EveryChangeLeavesCopiesAlone) {
  const std::string start = "f123456789abcdef0123456789";
  struct Mutation {
    const char* name;
    void (*apply)(BigInt&);
  };
  const Mutation mutations[] = {
      {"add", [](BigInt& n) { n.Add(BigInt(1)); }},
      {"add of the other sign", [](BigInt& n) { n.Add(Big("-1")); }},
      {"add of a larger one of the other sign", [](BigInt& n) { n.Add(Negated(n * n)); }},
      {"add to itself", [](BigInt& n) { n.Add(n); }},
      {"subtract", [](BigInt& n) { n.Subtract(BigInt(1)); }},
      {"subtract a larger one", [](BigInt& n) { n.Subtract(n * n); }},
      {"subtract of the other sign", [](BigInt& n) { n.Subtract(Big("-1")); }},
      {"subtract from itself", [](BigInt& n) { n.Subtract(n); }},
      {"sign", [](BigInt& n) { n.SetSignFlag(true); }},
      {"assignment", [](BigInt& n) { n = BigInt(1); }},
      {"multiply", [](BigInt& n) { Multiply(n, n, n); }},
      {"divide", [](BigInt& n) { Divide(n, n, BigInt(3)); }},
      {"remainder", [](BigInt& n) { Remainder(n, n, BigInt(3)); }},
      {"rewrite", [](BigInt& n) { n.Rewrite(2)->Normalise(); }},
      {"limbs", [](BigInt& n) { n.AssignLimbs(nullptr, 0); }},
      {"bytes", [](BigInt& n) { FromBytes(n, reinterpret_cast<const uint8_t*>("abc"), 3); }},
      {"decimal text", [](BigInt& n) { FromDecimalText(n, OLESTR("12"), 2); }},
      {"hexadecimal text", [](BigInt& n) { FromHexText(n, OLESTR("12"), 2); }},
  };
  for (const Mutation& mutation : mutations) {
    BigInt lone = BigHex(start);
    mutation.apply(lone);
    BigInt changed = BigHex(start);
    const BigInt copy(changed);
    mutation.apply(changed);
    EXPECT_EQ(Hex(copy), start) << mutation.name;
    EXPECT_FALSE(copy.SignFlag()) << mutation.name;
    EXPECT_EQ(Hex(changed), Hex(lone)) << mutation.name;
    EXPECT_NE(Hex(changed), start) << mutation.name;
  }
}

TEST(BigIntTest, RandomNumbersKeepArithmeticIdentities) {
  for (int i = 0; i < Cases(500); ++i) {
    BigInt a = RandomBig(1500), b = RandomBig(900), c = RandomBig(1200);
    a.SetSignFlag(Below(2) != 0);
    b.SetSignFlag(Below(2) != 0);
    c.SetSignFlag(Below(2) != 0);
    EXPECT_TRUE(((a + b) - b - a).IsZero());
    EXPECT_TRUE(((a + b) * c - (a * c + b * c)).IsZero());
    EXPECT_TRUE((a * a - b * b - (a - b) * (a + b)).IsZero());
    if (b.IsZero()) continue;
    EXPECT_TRUE(((a / b) * b + a % b - a).IsZero());
    EXPECT_TRUE(((a * b) % b).IsZero());
    EXPECT_TRUE(((a * b) / b - a).IsZero());
  }
}

// Operands in whose words the result has room, and a copy that shares them.
TEST(BigIntTest, ProductsMayReplaceAnOperand) {
  for (const uint32_t bits : {90u, 250u, 2000u, 9000u}) {
    const BigInt a = RandomBigOf(bits), b = RandomBigOf(bits - 20), more = RandomBigOf(3 * bits);
    const BigInt by_other = a * b, by_itself = a * a;
    const auto roomy = [&] {
      BigInt r = more * a;
      EXPECT_EQ(Divide(r, r, more), S_OK);
      EXPECT_TRUE(r == a);
      return r;
    };
    BigInt first = roomy(), second = roomy(), both = roomy(), shared = roomy();
    EXPECT_EQ(Multiply(first, first, b), S_OK);
    EXPECT_TRUE(first == by_other) << bits;
    EXPECT_EQ(Multiply(second, b, second), S_OK);
    EXPECT_TRUE(second == by_other) << bits;
    EXPECT_EQ(Multiply(both, both, both), S_OK);
    EXPECT_TRUE(both == by_itself) << bits;
    const BigInt copy(shared);
    EXPECT_EQ(Multiply(shared, copy, b), S_OK);
    EXPECT_TRUE(shared == by_other) << bits;
    EXPECT_TRUE(copy == a) << bits;
  }
}

}  // namespace
}  // namespace mirolta
