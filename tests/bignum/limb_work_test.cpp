// What operations cost, counted: products of limbs in the portable loops, allocations, and bytes at once. A changed
// threshold, a method that is no longer chosen or a larger scratch changes a figure, though no result; who means to
// change a cost corrects its row by what this program prints. The figures are the same on every processor of x86-64,
// since this program has the portable loops alone.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "big_int.h"
#include "big_text.h"
#include "gcd.h"
#include "limb_kernel_tables.h"
#include "memory_watch.h"
#include "mod_exp.h"
#include "next_prime.h"
#include "transform_kernel_tables.h"

namespace mirolta {
namespace {

uint64_t work = 0;

// The portable table; each function counts its products, a sum as one product.
constexpr LimbKernels kCounted = {
    [](Limb* z, const Limb* x, const Limb* y, size_t n) {
      work += n;
      return kWideKernels.add(z, x, y, n);
    },
    [](Limb* z, const Limb* x, const Limb* y, size_t n) {
      work += n;
      return kWideKernels.subtract(z, x, y, n);
    },
    [](Limb* z, const Limb* x, size_t n, Limb y) {
      work += n;
      return kWideKernels.mul1(z, x, n, y);
    },
    [](Limb* z, const Limb* x, size_t n, Limb y) {
      work += n;
      return kWideKernels.mul_add1(z, x, n, y);
    },
    [](Limb* z, const Limb* x, size_t n, Limb y) {
      work += n;
      return kWideKernels.mul_sub1(z, x, n, y);
    },
    [](Limb* z, const Limb* x, size_t m, const Limb* y, size_t n) {
      work += m * n;
      kWideKernels.multiply(z, x, m, y, n);
    },
    [](Limb* z, const Limb* x, size_t n) {
      work += n * (n + 1) / 2;
      kWideKernels.square(z, x, n);
    },
    [](Limb* z, Limb* t, const Limb* m, size_t n, Limb inverse) {
      work += n * n;
      kWideKernels.reduce(z, t, m, n, inverse);
    },
    [](Limb* z, const Limb* x, const Limb* y, const Limb* m, size_t n, Limb inverse) {
      const bool done = kWideKernels.montgomery(z, x, y, m, n, inverse);
      if (done) work += 2 * n * n;
      return done;
    }};

// Of the transforms, the halves of a transform and the products at its roots are counted by their blocks.
TransformKernels CountedTransforms() {
  TransformKernels counted = kPortableTransforms;
  counted.forward = [](Limb* z, size_t n, size_t node, const TransformTable& table,
                       const TransformPrime& prime) {
    work += n * kBlock;
    kPortableTransforms.forward(z, n, node, table, prime);
  };
  counted.inverse = [](Limb* z, size_t n, size_t node, const TransformTable& table,
                       const TransformPrime& prime) {
    work += n * kBlock;
    kPortableTransforms.inverse(z, n, node, table, prime);
  };
  counted.multiply = [](Limb* z, const Limb* x, const Limb* y, size_t n, size_t node,
                        const TransformTable& table, TransformFactor scale,
                        const TransformPrime& prime) {
    work += n * kBlock * kBlock;
    kPortableTransforms.multiply(z, x, y, n, node, table, scale, prime);
  };
  return counted;
}

}  // namespace

// In place of the library's.
const LimbKernels& CurrentLimbKernels() noexcept {
  return kCounted;
}
const TransformKernels& CurrentTransformKernels() noexcept {
  static const TransformKernels counted = CountedTransforms();
  return counted;
}
uint32_t ProcessorFeatures() noexcept {
  return 0;
}

namespace {

// The number of that many bits whose words are those of a linear congruential generator.
BigInt Number(uint32_t bits, uint32_t seed) {
  const uint32_t words = (bits + 31) / 32;
  BigInt n;
  BigMagnitude* const m = n.Rewrite(words);
  for (uint32_t i = 0; i < words; ++i) m->Words()[i] = seed = seed * 1664525u + 1013904223u;
  const uint32_t top = 1u << (bits - 1) % 32;
  m->Words()[words - 1] = (m->Words()[words - 1] & (top - 1)) | top;
  m->Normalise();
  return n;
}

struct Row {
  const char* name;
  uint32_t bits;   // of the first operand
  uint32_t other;  // of the second one
  uint64_t products;
  long allocations;
  size_t bytes;
};

struct Operation {
  const char* name;
  HRESULT (*apply)(BigInt& r, const BigInt& a, const BigInt& b);
};

const Operation kOperations[] = {
    {"multiply", [](BigInt& r, const BigInt& a, const BigInt& b) { return Multiply(r, a, b); }},
    {"square", [](BigInt& r, const BigInt& a, const BigInt&) { return Multiply(r, a, a); }},
    {"divide", [](BigInt& r, const BigInt& a, const BigInt& b) { return Divide(r, a, b); }},
    {"remainder", [](BigInt& r, const BigInt& a, const BigInt& b) { return Remainder(r, a, b); }},
    {"divisor", [](BigInt& r, const BigInt& a, const BigInt& b) { return Gcd(r, a, b); }},
    {"inverse",
     [](BigInt& r, const BigInt& a, const BigInt& b) {
       return Inverse(r, b, a.IsOdd() == b.IsOdd() ? a + BigInt(1) : a);
     }},
    {"odd power", [](BigInt& r, const BigInt& a,
                     const BigInt& b) { return ModExp(r, a, b, a.IsOdd() ? a : a + BigInt(1)); }},
    {"even power", [](BigInt& r, const BigInt& a,
                      const BigInt& b) { return ModExp(r, a, b, a.IsOdd() ? a + BigInt(1) : a); }},
    {"next prime",
     [](BigInt& r, const BigInt& a, const BigInt&) {
       r = a;
       return NextPrime(r);
     }},
    {"text",
     [](BigInt&, const BigInt& a, const BigInt&) {
       NumberText text;
       return ToText(text, a, 10);
     }},
    {"from text",
     [](BigInt& r, const BigInt& a, const BigInt&) {
       const std::basic_string<OLECHAR> digits(static_cast<size_t>(a.BitLength()) * 3 / 10,
                                               OLECHAR{'7'});
       return FromDecimalText(r, digits.data(), static_cast<uint32_t>(digits.size()));
     }},
};

const Row kRows[] = {
    {"multiply", 640, 640, 100, 2, 184},
    {"multiply", 1280, 640, 200, 2, 264},
    {"multiply", 1472, 1472, 529, 2, 392},
    {"multiply", 2048, 2048, 1024, 2, 536},
    {"multiply", 3000, 2000, 1504, 2, 656},
    {"multiply", 4096, 4096, 3328, 3, 4568},
    {"multiply", 8192, 8192, 10496, 3, 8728},
    {"multiply", 12000, 9000, 14867, 3, 19336},
    {"multiply", 20000, 7000, 23757, 3, 17800},
    {"multiply", 32768, 32768, 84684, 3, 66200},
    {"multiply", 60000, 40000, 166393, 3, 85672},
    {"multiply", 130000, 130000, 636677, 3, 260824},
    {"multiply", 130000, 20000, 271356, 3, 68168},
    {"multiply", 400000, 100000, 1825869, 3, 275784},
    {"multiply", 700000, 700000, 787173, 3, 1054616},
    {"square", 640, 32, 55, 2, 184},
    {"square", 1472, 32, 276, 2, 392},
    {"square", 2048, 32, 528, 2, 536},
    {"square", 4096, 32, 1808, 3, 4568},
    {"square", 8192, 32, 5872, 3, 8728},
    {"square", 32768, 32, 50676, 3, 66200},
    {"square", 130000, 32, 419173, 3, 260824},
    {"square", 700000, 32, 719589, 3, 1054616},
    {"divide", 1280, 64, 0, 2, 176},
    {"divide", 1280, 640, 38, 2, 104},
    {"divide", 4096, 2048, 495, 3, 1576},
    {"divide", 6400, 3200, 1224, 3, 2440},
    {"divide", 9000, 3000, 3195, 3, 3424},
    {"divide", 16000, 8000, 9178, 3, 12376},
    {"divide", 40000, 20000, 48725, 3, 30532},
    {"divide", 40000, 4000, 33082, 3, 15048},
    {"divide", 60000, 50000, 14068, 3, 38140},
    {"divide", 200000, 100000, 710957, 3, 150664},
    {"divide", 700000, 350000, 5053006, 3, 525784},
    {"remainder", 1280, 64, 0, 2, 32},
    {"remainder", 1280, 640, 80, 2, 104},
    {"remainder", 40000, 20000, 69309, 3, 30532},
    {"remainder", 200000, 100000, 955895, 3, 150660},
    {"divisor", 64, 64, 0, 3, 108},
    {"divisor", 128, 96, 8, 3, 148},
    {"divisor", 640, 640, 296, 3, 468},
    {"divisor", 4096, 4096, 10580, 3, 2628},
    {"divisor", 16000, 16000, 156266, 3, 15652},
    {"divisor", 40000, 40000, 845744, 3, 55884},
    {"divisor", 40000, 9000, 113624, 6, 19464},
    {"divisor", 120000, 120000, 5388410, 3, 165948},
    {"inverse", 640, 640, 582, 3, 992},
    {"inverse", 4096, 4096, 20920, 3, 5312},
    {"inverse", 16000, 16000, 303168, 3, 28280},
    {"inverse", 60000, 60000, 3118692, 3, 121020},
    {"odd power", 256, 256, 8432, 6, 140},
    {"odd power", 640, 640, 123176, 7, 1652},
    {"odd power", 1024, 17, 10364, 6, 332},
    {"odd power", 1024, 1024, 491604, 7, 4660},
    {"odd power", 2048, 2048, 3821996, 9, 19780},
    {"odd power", 4096, 300, 2246078, 11, 17964},
    {"even power", 640, 640, 123190, 2, 1520},
    {"even power", 1024, 1024, 491624, 2, 4480},
    {"even power", 2048, 300, 596640, 5, 8048},
    {"next prime", 30, 32, 556, 3, 29488},
    {"next prime", 64, 32, 1723, 3, 29488},
    {"next prime", 128, 32, 16239, 3, 29488},
    {"next prime", 256, 32, 113944, 3, 29488},
    {"next prime", 512, 32, 245630, 6, 30704},
    {"text", 640, 32, 0, 1, 388},
    {"text", 3000, 32, 2833, 5, 2728},
    {"text", 8192, 32, 9405, 8, 8454},
    {"text", 20000, 32, 43987, 14, 23280},
    {"text", 60000, 32, 302463, 47, 70000},
    {"text", 200000, 32, 2232370, 104, 229088},
    {"from text", 640, 32, 55, 3, 490},
    {"from text", 3000, 32, 1128, 3, 2202},
    {"from text", 8192, 32, 7220, 7, 14396},
    {"from text", 20000, 32, 32165, 14, 42538},
    {"from text", 60000, 32, 188293, 24, 140098},
    {"from text", 200000, 32, 1279750, 73, 475698},
};

TEST(LimbWork, IsThatOfTheTable) {
#if !MIROLTA_KERNELS_FOR(X86_64)
  GTEST_SKIP() << "the figures are those of x86-64";
#endif
  for (const Row& row : kRows) {
    const Operation* operation = kOperations;
    while (std::string(operation->name) != row.name) ++operation;
    const BigInt a = Number(row.bits, 1);
    const BigInt b = Number(row.other, 2);
    BigInt r;
    work = 0;
    const long before = test::AllocationCount();
    size_t bytes = 0;
    {
      const test::WatchPeak peak;
      ASSERT_EQ(operation->apply(r, a, b), S_OK) << row.name;
      bytes = peak.Bytes();
    }
    const long allocations = test::AllocationCount() - before;
    if (work != row.products || allocations != row.allocations || bytes != row.bytes) {
      ADD_FAILURE() << "    {\"" << row.name << "\", " << row.bits << ", " << row.other << ", "
                    << work << ", " << allocations << ", " << bytes << "},";
    }
  }
}

}  // namespace
}  // namespace mirolta
