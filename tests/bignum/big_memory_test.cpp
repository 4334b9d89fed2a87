// Operations when memory is short, and what freed memory keeps of numbers.
#include <gtest/gtest.h>

#include "big_bytes.h"
#include "big_int.h"
#include "big_random.h"
#include "big_text.h"
#include "gcd.h"
#include "memory_watch.h"
#include "mod_exp.h"
#include "next_prime.h"

namespace mirolta {
namespace {

using test::FailAllocationsAfter;
using test::LiveAllocations;
using test::WatchFreedMemory;

constexpr uint32_t kSecret = 0x5EC2E75E;
constexpr uint32_t kWords = 300;

BigInt Repeated(uint32_t word, uint32_t words) {
  BigInt n;
  BigMagnitude* const m = n.Rewrite(words);
  for (uint32_t i = 0; i < words; ++i) m->Words()[i] = word;
  m->Normalise();
  return n;
}
BigInt Secret(uint32_t words) {
  return Repeated(kSecret, words);
}
BigInt Fives(uint32_t words) {
  return Repeated(0x55555555, words);
}

bool IsSecret(const BigInt& n, uint32_t words) {
  if (n.Used() != words || n.SignFlag() || FAILED(n.Status())) return false;
  for (uint32_t i = 0; i < words; ++i) {
    if (n.GetWord(i) != kSecret) return false;
  }
  return true;
}

struct Failing {
  const char* name;
  // n has kWords secret words; long_one and short_one are other numbers.
  HRESULT (*apply)(BigInt& n, const BigInt& long_one, const BigInt& short_one);
};

constexpr OLECHAR kText[] = OLESTR("123456789012345678901234567890");

const Failing kOperations[] = {
    {"add", [](BigInt& n, const BigInt& a, const BigInt&) { return n.Add(a); }},
    {"subtract", [](BigInt& n, const BigInt& a, const BigInt&) { return n.Subtract(a); }},
    {"Add", [](BigInt& n, const BigInt& a, const BigInt& b) { return Add(n, a, b); }},
    {"Subtract", [](BigInt& n, const BigInt& a, const BigInt& b) { return Subtract(n, b, a); }},
    {"Multiply", [](BigInt& n, const BigInt& a, const BigInt& b) { return Multiply(n, a, b); }},
    {"Square", [](BigInt& n, const BigInt& a, const BigInt&) { return Multiply(n, a, a); }},
    {"Divide", [](BigInt& n, const BigInt& a, const BigInt& b) { return Divide(n, a, b); }},
    {"Remainder", [](BigInt& n, const BigInt& a, const BigInt& b) { return Remainder(n, a, b); }},
    {"Gcd", [](BigInt& n, const BigInt& a, const BigInt& b) { return Gcd(n, a, b); }},
    {"Inverse", [](BigInt& n, const BigInt& a, const BigInt& b) { return Inverse(n, b, a); }},
    {"ModExp odd", [](BigInt& n, const BigInt& a, const BigInt& b) { return ModExp(n, a, b, b); }},
    {"ModExp even",
     [](BigInt& n, const BigInt& a, const BigInt& b) { return ModExp(n, a, b, b + b); }},
    {"FromBytes",
     [](BigInt& n, const BigInt&, const BigInt&) {
       static const uint8_t bytes[4096] = {1};
       return FromBytes(n, bytes, sizeof bytes);
     }},
    {"FromDecimalText",
     [](BigInt& n, const BigInt&, const BigInt&) { return FromDecimalText(n, kText, 30); }},
    {"FromHexText",
     [](BigInt& n, const BigInt&, const BigInt&) { return FromHexText(n, kText, 30); }},
    {"Random", [](BigInt& n, const BigInt&, const BigInt&) { return Random(n, 2000, true, true); }},
    {"ToText",
     [](BigInt& n, const BigInt& a, const BigInt&) {
       NumberText text;
       const HRESULT status = ToText(text, a, 10);
       return SUCCEEDED(status) ? ToText(text, n, 16) : status;
     }},
    {"IsFermatPrime",
     [](BigInt&, const BigInt&, const BigInt& b) {
       bool result = false;
       return IsFermatPrime(&result, b);
     }},
};

// Runs each operation with one more allocation allowed each time, until it succeeds. The number has
// a copy, so that writing to it needs memory too.
void FailEveryAllocation(uint32_t short_words) {
  for (const Failing& operation : kOperations) {
    const BigInt a = Fives(kWords), b = Fives(short_words);
    BigInt n = Secret(kWords);
    const BigInt copy(n);
    const long before = LiveAllocations();
    HRESULT status = E_UNEXPECTED;
    int failures = 0;
    for (long count = 0; count < 10000; ++count) {
      {
        const FailAllocationsAfter failing(count);
        status = operation.apply(n, a, b);
      }
      if (SUCCEEDED(status)) break;
      ++failures;
      ASSERT_EQ(status, E_OUTOFMEMORY) << operation.name;
      ASSERT_TRUE(IsSecret(n, kWords)) << operation.name << " after " << count;
      ASSERT_EQ(LiveAllocations(), before) << operation.name;
    }
    EXPECT_EQ(status, S_OK) << operation.name;
    EXPECT_GT(failures, 0) << operation.name;
    EXPECT_TRUE(IsSecret(copy, kWords)) << operation.name;
  }
}

TEST(BigMemoryTest, AFailedAllocationLeavesOperandsAndResult) {
  FailEveryAllocation(kWords / 2);
}

// Of a size whose powers are computed in radix 2^52.
TEST(BigMemoryTest, AFailedAllocationOfRadix52PowersLeavesOperandsAndResult) {
  FailEveryAllocation(120);
}

// Of one that 32-bit x86 computes in radix 2^27.
TEST(BigMemoryTest, AFailedAllocationOfRadix27PowersLeavesOperandsAndResult) {
  FailEveryAllocation(140);
}

TEST(BigMemoryTest, AFailedAllocationOfNextPrimeLeavesTheNumber) {
  BigInt n = Fives(4);
  HRESULT status = E_UNEXPECTED;
  int failures = 0;
  for (long count = 0; count < 10000 && FAILED(status); ++count) {
    const BigInt copy(n);
    {
      const FailAllocationsAfter failing(count);
      status = NextPrime(n);
    }
    if (SUCCEEDED(status)) break;
    ++failures;
    ASSERT_EQ(status, E_OUTOFMEMORY);
    ASSERT_TRUE(n == copy);
  }
  EXPECT_EQ(status, S_OK);
  EXPECT_GT(failures, 1);
}

TEST(BigMemoryTest, AFailedAllocationLeavesAMagnitude) {
  BigMagnitude a, b, r, q;
  ASSERT_TRUE(a.SetWord(1, 0xFFFFFFFF));
  ASSERT_TRUE(b.SetWord(5, 0xFFFFFFFF));
  {
    const FailAllocationsAfter none(0);
    EXPECT_FALSE(a.Reserve(3));
    EXPECT_FALSE(a.ClearTo(3));
    EXPECT_FALSE(a.SetWord(2, 1));
    EXPECT_FALSE(r.SetSmall(1));
    EXPECT_FALSE(a.CopyFrom(b));
    EXPECT_FALSE(a.Add(b));
    EXPECT_FALSE(a.ShiftLeft1());
    EXPECT_FALSE(BigMagnitude::MultiplyTrunc(r, a, b, 100));
    EXPECT_FALSE(BigMagnitude::Divide(q, b, a, r));
  }
  EXPECT_EQ(a.Used(), 2u);
  EXPECT_EQ(a.Capacity(), 2u);
  EXPECT_EQ(a.GetWord(1), 0xFFFFFFFFu);
  EXPECT_EQ(r.Used(), 0u);
  EXPECT_EQ(q.Used(), 0u);
}

TEST(BigMemoryTest, AFailedConstructionIsRecorded) {
  BigInt n, zero;
  {
    const FailAllocationsAfter none(0);
    n = BigInt(5);
    zero = BigInt(0);
  }
  EXPECT_EQ(n.Status(), E_OUTOFMEMORY);
  EXPECT_TRUE(n.IsZero());
  EXPECT_EQ(zero.Status(), S_OK);
  EXPECT_EQ((n + BigInt(1)).Status(), E_OUTOFMEMORY);
}

TEST(BigMemoryTest, NumbersAreWipedBeforeTheirMemoryIsFreed) {
  const WatchFreedMemory watch(&kSecret, sizeof kSecret);
  const long before = LiveAllocations();
  {
    BigInt n = Secret(40);
    BigInt copy(n);
    ASSERT_EQ(n.Add(BigInt(1)), S_OK);
    ASSERT_EQ(copy.Add(copy), S_OK);
    n = Secret(40);
    ASSERT_TRUE(n.Rewrite(80) != nullptr);  // a larger store replaces the words
    BigMagnitude m;
    ASSERT_TRUE(m.SetWord(0, kSecret));
    ASSERT_TRUE(m.Reserve(100));
    ASSERT_TRUE(m.SetWord(90, kSecret));
    ASSERT_TRUE(m.SetSmall(0));
    BigInt long_one = Secret(500), r;
    ASSERT_EQ(Multiply(r, long_one, BigInt(1)), S_OK);
    ASSERT_EQ(Remainder(r, long_one, Secret(300) + BigInt(1)), S_OK);
    ASSERT_EQ(Gcd(r, long_one, Secret(100)), S_OK);
    ASSERT_EQ(Inverse(r, Secret(100), long_one), S_OK);
    ASSERT_EQ(Gcd(r, Secret(900), Secret(890) + BigInt(1)), S_OK);
    ASSERT_EQ(Inverse(r, Secret(900), Secret(905) + BigInt(1)), S_OK);
    ASSERT_EQ(ModExp(r, Secret(100), BigInt(3), Secret(101) + BigInt(1)), S_OK);
    NumberText text;
    ASSERT_EQ(ToText(text, long_one, 10), S_OK);
    bool result = false;
    ASSERT_EQ(IsFermatPrime(&result, Secret(20) + BigInt(1)), S_OK);
  }
  EXPECT_GT(watch.Freed(), 0);
  EXPECT_EQ(watch.FreedWithSecret(), 0);
  EXPECT_EQ(LiveAllocations(), before);
}

}  // namespace
}  // namespace mirolta
