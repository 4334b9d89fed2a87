// What operations do when the heap has nothing to give, and that it gets all back, wiped.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <new>

#include "big_bytes.h"
#include "big_int.h"
#include "big_random.h"
#include "big_text.h"
#include "gcd.h"
#include "mod_exp.h"
#include "next_prime.h"

namespace {

// How many allocations still succeed; below zero all do.
long allowed = -1;
long live = 0;

struct Header {
  size_t size;
  size_t unused;  // keeps the alignment
};

void* Give(size_t size) {
  if (allowed == 0) return nullptr;
  if (allowed > 0) --allowed;
  Header* const header = static_cast<Header*>(std::malloc(sizeof(Header) + size));
  if (header == nullptr) return nullptr;
  header->size = size;
  ++live;
  return header + 1;
}

// A store with this content was given back unwiped.
constexpr uint32_t kSecret = 0x5EC2E75E;
bool leaked = false;

void TakeBack(void* memory) {
  if (memory == nullptr) return;
  Header* const header = static_cast<Header*>(memory) - 1;
  const unsigned char* const bytes = static_cast<unsigned char*>(memory);
  for (size_t i = 0; i + 4 <= header->size; i += 4) {
    uint32_t word = 0;
    std::memcpy(&word, bytes + i, 4);
    if (word == kSecret) leaked = true;
  }
  --live;
  std::free(header);
}

}  // namespace

void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return Give(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return Give(size);
}
void* operator new(size_t size) {
  const long before = allowed;
  allowed = -1;  // the test's own memory
  void* const memory = Give(size);
  allowed = before;
  return memory;
}
void* operator new[](size_t size) {
  return operator new(size);
}
void operator delete(void* memory) noexcept {
  TakeBack(memory);
}
void operator delete[](void* memory) noexcept {
  TakeBack(memory);
}
void operator delete(void* memory, size_t) noexcept {
  TakeBack(memory);
}
void operator delete[](void* memory, size_t) noexcept {
  TakeBack(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  TakeBack(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  TakeBack(memory);
}

namespace mirolta {
namespace {

constexpr uint32_t kWords = 300;

BigInt Secret(uint32_t words) {
  BigInt n;
  BigMagnitude* const m = n.Rewrite(words);
  for (uint32_t i = 0; i < words; ++i) m->Words()[i] = kSecret;
  m->Normalise();
  return n;
}

bool IsSecret(const BigInt& n, uint32_t words) {
  if (n.Used() != words || n.SignFlag() || FAILED(n.Status())) return false;
  for (uint32_t i = 0; i < words; ++i) {
    if (n.GetWord(i) != kSecret) return false;
  }
  return true;
}

BigInt Fives(uint32_t words) {
  BigInt n;
  BigMagnitude* const m = n.Rewrite(words);
  for (uint32_t i = 0; i < words; ++i) m->Words()[i] = 0x55555555;
  m->Normalise();
  return n;
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
    const long before = live;
    HRESULT status = E_UNEXPECTED;
    int failures = 0;
    for (long count = 0; count < 10000; ++count) {
      allowed = count;
      status = operation.apply(n, a, b);
      allowed = -1;
      if (SUCCEEDED(status)) break;
      ++failures;
      ASSERT_EQ(status, E_OUTOFMEMORY) << operation.name;
      ASSERT_TRUE(IsSecret(n, kWords)) << operation.name << " after " << count;
      ASSERT_EQ(live, before) << operation.name;
    }
    EXPECT_EQ(status, S_OK) << operation.name;
    EXPECT_GT(failures, 0) << operation.name;
    EXPECT_TRUE(IsSecret(copy, kWords)) << operation.name;
  }
}

TEST(BigMemoryTest, EveryAllocationMayFail) {
  FailEveryAllocation(kWords / 2);
}

// Of the size that powers compute with in vectors.
TEST(BigMemoryTest, EveryAllocationForDigitsMayFail) {
  FailEveryAllocation(120);
}

TEST(BigMemoryTest, NextPrimeKeepsItsNumber) {
  BigInt n = Fives(4);
  HRESULT status = E_UNEXPECTED;
  int failures = 0;
  for (long count = 0; count < 10000 && FAILED(status); ++count) {
    const BigInt copy(n);
    allowed = count;
    status = NextPrime(n);
    allowed = -1;
    if (SUCCEEDED(status)) break;
    ++failures;
    ASSERT_EQ(status, E_OUTOFMEMORY);
    ASSERT_TRUE(n == copy);
  }
  EXPECT_EQ(status, S_OK);
  EXPECT_GT(failures, 1);
}

TEST(BigMemoryTest, MagnitudesReportAndKeepTheirValue) {
  BigMagnitude a, b, r, q;
  ASSERT_TRUE(a.SetWord(1, 0xFFFFFFFF));
  ASSERT_TRUE(b.SetWord(5, 0xFFFFFFFF));
  allowed = 0;
  EXPECT_FALSE(a.Reserve(3));
  EXPECT_FALSE(a.ClearTo(3));
  EXPECT_FALSE(a.SetWord(2, 1));
  EXPECT_FALSE(r.SetSmall(1));
  EXPECT_FALSE(a.CopyFrom(b));
  EXPECT_FALSE(a.Add(b));
  EXPECT_FALSE(a.ShiftLeft1());
  EXPECT_FALSE(BigMagnitude::MultiplyTrunc(r, a, b, 100));
  EXPECT_FALSE(BigMagnitude::Divide(q, b, a, r));
  allowed = -1;
  EXPECT_EQ(a.Used(), 2u);
  EXPECT_EQ(a.Capacity(), 2u);
  EXPECT_EQ(a.GetWord(1), 0xFFFFFFFFu);
  EXPECT_EQ(r.Used(), 0u);
  EXPECT_EQ(q.Used(), 0u);
}

TEST(BigMemoryTest, ConstructionRecordsItsFailure) {
  allowed = 0;
  const BigInt n(5);
  const BigInt zero(0);
  allowed = -1;
  EXPECT_EQ(n.Status(), E_OUTOFMEMORY);
  EXPECT_TRUE(n.IsZero());
  EXPECT_EQ(zero.Status(), S_OK);
  EXPECT_EQ((n + BigInt(1)).Status(), E_OUTOFMEMORY);
}

TEST(BigMemoryTest, MemoryIsWipedBeforeItGoesBack) {
  leaked = false;
  const long before = live;
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
    ASSERT_EQ(ModExp(r, Secret(100), BigInt(3), Secret(101) + BigInt(1)), S_OK);
    NumberText text;
    ASSERT_EQ(ToText(text, long_one, 10), S_OK);
    bool result = false;
    ASSERT_EQ(IsFermatPrime(&result, Secret(20) + BigInt(1)), S_OK);
  }
  EXPECT_FALSE(leaked);
  EXPECT_EQ(live, before);
}

}  // namespace
}  // namespace mirolta
