// Operations with scratch on the heap when one of their allocations fails: the status reports it,
// the operands keep their values, nothing leaks, and the same call succeeds afterwards.
#include <gtest/gtest.h>

#include <algorithm>

#include "big_int.h"
#include "big_text.h"
#include "gcd.h"
#include "half_gcd.h"
#include "memory_watch.h"
#include "mod_exp.h"
#include "next_prime.h"
#include "transform_kernels.h"

namespace mirolta {
namespace {

using test::AllocationHasFailed;
using test::FailOneAllocation;
using test::LiveAllocations;

// words words of a pattern, the lowest one `low`.
BigInt Pattern(uint32_t words, uint32_t low) {
  BigInt n;
  BigMagnitude* const m = n.Rewrite(words);
  for (uint32_t i = 0; i < words; ++i) m->Words()[i] = 0x9E3779B9u * (i + 1) | 1;
  m->Words()[0] = low;
  m->Normalise();
  return n;
}

BigInt PowerOfTwo(uint32_t bit) {
  BigInt n;
  BigMagnitude* const m = n.Rewrite(bit / 32 + 1);
  for (uint32_t i = 0; i <= bit / 32; ++i) m->Words()[i] = 0;
  m->Words()[bit / 32] = 1u << (bit % 32);
  m->Normalise();
  return n;
}

struct Operands {
  const char* name;
  BigInt base;
  BigInt exponent;
  BigInt modulus;
};

class BigScratchMemoryTest : public testing::Test {
 protected:
  // Fails each allocation of ModExp in turn until none is left to fail.
  static void FailEachOfModExp(const Operands& operands) {
    SCOPED_TRACE(operands.name);
    BigInt expected;
    ASSERT_EQ(ModExp(expected, operands.base, operands.exponent, operands.modulus), S_OK);
    const BigInt base = operands.base, exponent = operands.exponent, modulus = operands.modulus;
    int failures = 0;
    for (long count = 0;; ++count) {
      const long before = LiveAllocations();
      {
        BigInt result;
        HRESULT status = S_OK;
        {
          const FailOneAllocation failing(count);
          status = ModExp(result, base, exponent, modulus);
        }
        if (!AllocationHasFailed()) {
          EXPECT_EQ(status, S_OK);
          EXPECT_EQ(Compare(result, expected), 0);
          break;
        }
        EXPECT_TRUE(status == E_OUTOFMEMORY || Compare(result, expected) == 0) << count;
        if (FAILED(status)) ++failures;
        EXPECT_EQ(ModExp(result, base, exponent, modulus), S_OK) << count;
        EXPECT_EQ(Compare(result, expected), 0) << count;
      }
      EXPECT_EQ(LiveAllocations(), before) << count;
    }
    EXPECT_EQ(Compare(base, operands.base), 0);
    EXPECT_EQ(Compare(exponent, operands.exponent), 0);
    EXPECT_EQ(Compare(modulus, operands.modulus), 0);
    EXPECT_GT(failures, 1);
  }
};

TEST_F(BigScratchMemoryTest, AFailedAllocationOfAnyModularPowerLeavesItsOperands) {
  const BigInt exponent(0xF00F1);
  const Operands rows[] = {
      {"odd, of lanes", Pattern(120, 5), exponent, Pattern(121, 3)},
      {"odd, longer", Pattern(250, 5), exponent, Pattern(251, 3)},
      {"even", Pattern(250, 5), exponent, Pattern(251, 6)},
      {"power of two", Pattern(250, 5), exponent, PowerOfTwo(9000)},
      {"a long exponent of a power of two", Pattern(300, 5), Pattern(301, 7), PowerOfTwo(9000)},
      {"zero words below", Pattern(250, 5), exponent, Pattern(200, 3) * PowerOfTwo(9000)},
  };
  for (const Operands& row : rows) FailEachOfModExp(row);
}

// Every single allocation of an operation fails once; results and operands are as they should be.
template <typename Operation>
void FailEachOf(const char* name, const BigInt& start, const Operation& operation) {
  SCOPED_TRACE(name);
  BigInt expected = start;
  ASSERT_EQ(operation(expected), S_OK);
  int failures = 0;
  for (long count = 0;; ++count) {
    const long before = LiveAllocations();
    {
      BigInt result = start;
      HRESULT status = S_OK;
      {
        const FailOneAllocation failing(count);
        status = operation(result);
      }
      const bool failed = AllocationHasFailed();
      if (FAILED(status)) {
        ++failures;
        EXPECT_EQ(status, E_OUTOFMEMORY) << count;
        EXPECT_EQ(Compare(result, start), 0) << count;
        EXPECT_EQ(result.SignFlag(), start.SignFlag()) << count;
      } else {
        EXPECT_EQ(Compare(result, expected), 0) << count;
        EXPECT_EQ(result.SignFlag(), expected.SignFlag()) << count;
      }
      EXPECT_EQ(result.Status(), S_OK) << count;
      if (!failed) break;
    }
    EXPECT_EQ(LiveAllocations(), before) << count;
  }
  EXPECT_GT(failures, 0);
}

TEST_F(BigScratchMemoryTest, AFailedAllocationOfAPowerWithExponentZeroLeavesItsOperands) {
  const BigInt base = Pattern(3, 5), odd = Pattern(200, 3), even = Pattern(200, 4);
  for (const BigInt* modulus : {&odd, &even}) {
    FailEachOf("apart", BigInt(7), [&](BigInt& r) { return ModExp(r, base, BigInt(), *modulus); });
    FailEachOf("in the base", base, [&](BigInt& r) { return ModExp(r, r, BigInt(), *modulus); });
    FailEachOf("in the modulus", *modulus, [&](BigInt& r) { return ModExp(r, base, BigInt(), r); });
  }
}

TEST_F(BigScratchMemoryTest, AFailedAllocationOfAProductByTransformsLeavesItsOperands) {
  const uint32_t words = static_cast<uint32_t>(CurrentTransformKernels().least * kLimbWords) + 50;
  const BigInt a = Pattern(words, 3), b = Pattern(2 * words, 9);
  FailEachOf("apart", BigInt(7), [&](BigInt& r) { return Multiply(r, a, b); });
  FailEachOf("in an operand", a, [&](BigInt& r) { return Multiply(r, r, b); });
  FailEachOf("square", BigInt(7), [&](BigInt& r) { return Multiply(r, a, a); });
  FailEachOf("square in place", a, [&](BigInt& r) { return Multiply(r, r, r); });
}

TEST_F(BigScratchMemoryTest, AFailedAllocationOfGcdAndInverseLeavesTheirOperands) {
  const BigInt common = Pattern(70, 7);
  const BigInt a = common * Pattern(130, 3), b = common * Pattern(60, 9);
  FailEachOf("long", BigInt(7), [&](BigInt& r) { return Gcd(r, a, b); });
  FailEachOf("the shorter first", BigInt(7), [&](BigInt& r) { return Gcd(r, b, a); });
  FailEachOf("in an operand", a, [&](BigInt& r) { return Gcd(r, r, b); });
  FailEachOf("one limb", BigInt(7), [&](BigInt& r) { return Gcd(r, a, BigInt(35)); });
  FailEachOf("zero", BigInt(7), [&](BigInt& r) { return Gcd(r, a, BigInt()); });
  FailEachOf("zero first", BigInt(7), [&](BigInt& r) { return Gcd(r, BigInt(), a); });
  FailEachOf("inverse", BigInt(7), [&](BigInt& r) { return Inverse(r, b, a + BigInt(2)); });
}

// A number whose text is made by powers that products with scratch give.
TEST_F(BigScratchMemoryTest, AFailedAllocationOfDecimalTextLeavesTheNumber) {
  const BigInt n = Pattern(1000, 7);
  FailEachOf("there and back", n, [](BigInt& r) {
    NumberText text;
    const HRESULT status = ToText(text, r, 10);
    return SUCCEEDED(status) ? FromDecimalText(r, text.Characters(), text.Length()) : status;
  });
}

// Numbers of so many limbs that steps are found from their upper parts, with a quotient of 1,600 bits among
// the steps, which needs memory too.
TEST_F(BigScratchMemoryTest, AFailedAllocationOfLongGcdAndInverseLeavesTheirOperands) {
  BigInt b = Pattern(950, 3);
  BigInt a = b * Pattern(50, 7) + Pattern(940, 9);
  for (int i = 0; i < 3000; ++i) {
    const BigInt sum = a + b;
    b = a;
    a = sum;
  }
  ASSERT_GT(a.Used() / kLimbWords, std::max(kHalfGcdLengths.gcd, kHalfGcdLengths.cofactor));
  FailEachOf("gcd", BigInt(7), [&](BigInt& r) { return Gcd(r, a, b); });
  FailEachOf("gcd in an operand", b, [&](BigInt& r) { return Gcd(r, a, r); });
  FailEachOf("inverse", BigInt(7), [&](BigInt& r) { return Inverse(r, b, a); });
  FailEachOf("inverse in an operand", a, [&](BigInt& r) { return Inverse(r, b, r); });
}

// Gcd and Inverse, with operands of equal and of different lengths.
TEST_F(BigScratchMemoryTest, GcdAndInverseTakeAFewTimesTheirOperands) {
  constexpr size_t kTimes = kLimbBits == 64 ? 8 : 9;
  constexpr size_t kConstant = 512 * sizeof(Limb);  // that short operands may take besides
  const uint32_t lengths[][2] = {{370, 370},   {370, 40},    {700, 700},     {700, 660},
                                 {3000, 3000}, {3000, 2900}, {3000, 2600},   {3000, 1500},
                                 {3000, 300},  {3000, 1},    {16300, 16200}, {22000, 21000}};
  for (const auto& words : lengths) {
    SCOPED_TRACE(testing::Message() << words[0] << ", " << words[1]);
    const BigInt a = Pattern(words[0], 7), b = Pattern(words[1], 9);
    const size_t most = kTimes * sizeof(uint32_t) * (a.Used() + b.Used()) + kConstant;
    const auto check = [&](const char* name, HRESULT (*work)(BigInt&, const BigInt&, const BigInt&),
                           const BigInt& first, const BigInt& second) {
      BigInt r;
      const test::WatchPeak peak;
      ASSERT_EQ(work(r, first, second), S_OK) << name;
      EXPECT_GT(peak.Bytes(), 0u) << name;
      EXPECT_LE(peak.Bytes(), most) << name;
    };
    check("gcd", Gcd, a, b);
    check("gcd, the shorter first", Gcd, b, a);
    check("inverse of the longer", Inverse, a, b);
    check("inverse of the shorter", Inverse, b, a);
  }
}

// Only the first allocations: the later ones are those of the search.
TEST_F(BigScratchMemoryTest, AFailedAllocationOfNextPrimeIsReported) {
  for (const uint32_t words : {1u, 4u, 12u, 40u}) {
    SCOPED_TRACE(words);
    int failures = 0;
    for (long count = 0; count < 6; ++count) {
      const BigInt start = Pattern(words, 0x12345671);
      BigInt n = start;
      HRESULT status = S_OK;
      {
        const FailOneAllocation failing(count);
        status = NextPrime(n);
      }
      if (!AllocationHasFailed()) {
        EXPECT_EQ(status, S_OK);
        break;
      }
      if (SUCCEEDED(status)) continue;
      EXPECT_EQ(status, E_OUTOFMEMORY) << count;
      ++failures;
    }
    EXPECT_GT(failures, 0);
  }
}

TEST_F(BigScratchMemoryTest, AFailedAllocationOfTheFermatTestIsReported) {
  const BigInt n = Pattern(250, 0x12345671);
  bool expected = true;
  ASSERT_EQ(IsFermatPrime(&expected, n), S_OK);
  EXPECT_FALSE(expected);
  for (const bool before : {false, true}) {
    int failures = 0;
    for (long count = 0;; ++count) {
      bool result = before;
      HRESULT status = S_OK;
      {
        const FailOneAllocation failing(count);
        status = IsFermatPrime(&result, n);
      }
      if (FAILED(status)) {
        EXPECT_EQ(status, E_OUTOFMEMORY) << count;
        ++failures;
      }
      EXPECT_EQ(result, FAILED(status) && before) << count;
      if (!AllocationHasFailed()) break;
    }
    EXPECT_GT(failures, 0);
  }
}

}  // namespace
}  // namespace mirolta
