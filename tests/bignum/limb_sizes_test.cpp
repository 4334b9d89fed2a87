// Sizes of scratch that a size_t does not hold: the allocation fails, and no wrapped size is asked
// for. The heap is the test's own and always fails.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstdlib>
#include <limits>
#include <new>

#include "big_magnitude.h"
#include "decimal_conversion.h"
#include "divide.h"
#include "fermat_test.h"
#include "lehmer_gcd.h"
#include "limb_basics.h"
#include "limb_scratch.h"
#include "montgomery.h"
#include "montgomery_power.h"
#include "multiply.h"
#include "power_modulo.h"

namespace {

bool refuses = false;
size_t asked_times = 0;

void* Give(size_t size) {
  ++asked_times;
  return refuses ? nullptr : std::malloc(size != 0 ? size : 1);
}

// Not inlined: gcc would warn that free does not match the operator new that it sees.
[[gnu::noinline]] void Free(void* memory) {
  std::free(memory);
}

}  // namespace

void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return Give(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return Give(size);
}
// All of them: the standard library allocates by those above and frees by these.
void* operator new(size_t size) {
  void* const memory = std::malloc(size != 0 ? size : 1);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new[](size_t size) {
  return operator new(size);
}
void operator delete(void* memory) noexcept {
  Free(memory);
}
void operator delete(void* memory, size_t) noexcept {
  Free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  Free(memory);
}
void operator delete[](void* memory) noexcept {
  Free(memory);
}
void operator delete[](void* memory, size_t) noexcept {
  Free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  Free(memory);
}

namespace mirolta {
namespace {

constexpr size_t kTooLarge = CheckedSize::kTooLarge;

class LimbSizesTest : public testing::Test {
 protected:
  void SetUp() override {
    asked_times = 0;
    refuses = true;
  }
  void TearDown() override { refuses = false; }
};

// The least n for which factor * n + more does not fit a size_t.
constexpr size_t FirstTooLong(size_t factor, size_t more) {
  return (SIZE_MAX - more) / factor + 1;
}

TEST_F(LimbSizesTest, SizesOfScratchDoNotWrap) {
  for (size_t n = SIZE_MAX; n > SIZE_MAX / 12; n -= n / 16) {
    EXPECT_EQ(MultiplyScratch(n, n).Value(), kTooLarge) << n;
    EXPECT_EQ(MultiplyScratch(SIZE_MAX, n).Value(), kTooLarge) << n;
    EXPECT_EQ(MontgomeryScratch(n).Value(), kTooLarge) << n;
  }
  const size_t balanced = FirstTooLong(4, 8 * (std::numeric_limits<size_t>::digits - 2));
  EXPECT_EQ(BalancedScratch(balanced).Value(), kTooLarge);
  EXPECT_LT(BalancedScratch(balanced - 1).Value(), kTooLarge);
  EXPECT_EQ(DivideScratch(SIZE_MAX, SIZE_MAX / 7 + 1).Value(), kTooLarge);
  EXPECT_EQ(DecimalRoom(SIZE_MAX / kDecimalDigits + 1).Value(), kTooLarge);
  EXPECT_LT(DecimalRoom(SIZE_MAX / kDecimalDigits / 2).Value(), kTooLarge);
}

TEST_F(LimbSizesTest, ScratchThatIsTooLargeIsNotAllocated) {
  const size_t quarter = SIZE_MAX / 4;
  const LimbScratch wrapped(4 * CheckedSize(quarter) + 8);  // 4 limbs, if the count wrapped
  EXPECT_EQ(wrapped.Get(), nullptr);
  const size_t addressable = SIZE_MAX / sizeof(Limb) + 1;
  const LimbScratch wide{CheckedSize(addressable)};  // no bytes, if the product wrapped
  EXPECT_EQ(wide.Get(), nullptr);
  EXPECT_EQ(asked_times, 0u);
}

TEST_F(LimbSizesTest, BitLengthsOfTheLongestNumbersFit) {
  static_assert(SIZE_MAX / 32 >= BigMagnitude::kMostWords);
  if (BigMagnitude::kMostWords == UINT32_MAX) {
    GTEST_SKIP() << "a size_t of 64 bits counts the bits of every number of 32-bit words";
  }
  BigMagnitude m;
  EXPECT_FALSE(m.Reserve(static_cast<uint32_t>(BigMagnitude::kMostWords)));
  EXPECT_EQ(asked_times, 1u);
  EXPECT_FALSE(m.Reserve(static_cast<uint32_t>(BigMagnitude::kMostWords + 1)));
  EXPECT_FALSE(m.Reserve(UINT32_MAX));
  EXPECT_FALSE(m.SetWord(UINT32_MAX - 1, 1));
  EXPECT_EQ(asked_times, 1u);
}

// Operands can be as long as that where a pointer has 32 bits only. Their memory is mapped, not
// present: what the operations read before they ask for working memory is a page or two.
class LongLimbs {
 public:
  explicit LongLimbs(size_t n) : size_(n * sizeof(Limb)) {
    void* const mapped = mmap(nullptr, size_, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapped == MAP_FAILED) return;
    limbs_ = static_cast<Limb*>(mapped);
    limbs_[n - 1] = 1;
  }
  ~LongLimbs() {
    if (limbs_ != nullptr) munmap(limbs_, size_);
  }
  LongLimbs(const LongLimbs&) = delete;
  LongLimbs& operator=(const LongLimbs&) = delete;
  Limb* get() { return limbs_; }

 private:
  size_t size_;
  Limb* limbs_ = nullptr;
};

// An operation on operands of n limbs that needs factor * n + more limbs of working memory.
struct LongOperation {
  const char* name;
  size_t factor;
  size_t more;
  bool (*succeeds)(Limb* x, size_t n);
};

constexpr size_t kExponentLimbs = 64;  // of a window of seven bits
Limb exponent[kExponentLimbs];

const LongOperation kLongOperations[] = {
    {"power by an odd modulus", 79, 512,
     [](Limb* x, size_t n) {
       x[0] = 3;
       exponent[kExponentLimbs - 1] = kLimbMax;
       return MontgomeryPower(x, x, exponent, kExponentLimbs, x, n);
     }},
    {"power of two by an odd modulus", 16, 512,
     [](Limb* x, size_t n) {
       x[0] = 3;
       bool result = false;
       exponent[0] = 5;
       return TwoToPowerIsOne(&result, exponent, 1, x, n);
     }},
    {"power by a modulus with a power of two", 39, 1024,
     [](Limb* x, size_t n) {
       // Of 2n limbs, half of which are zero: 8n + 5n + 14n + 12n.
       Limb* const m = x;
       x[n] = 1;
       x[2 * n - 1] = 1;
       exponent[0] = 5;
       return PowerModulo(x, x, 2 * n, exponent, 1, m, 2 * n);
     }},
    {"division", 15, 770, [](Limb* x, size_t n) { return DivideLimbs(x, x, x, n + 128, x, n); }},
    {"greatest common divisor with a cofactor", 12, 512,
     [](Limb*, size_t n) { return LehmerGcd().Reserve(n, n, true); }},
};

TEST_F(LimbSizesTest, OperandsThatAreTooLongAreRefused) {
  if (sizeof(size_t) > 4) {
    GTEST_SKIP()
        << "no memory holds operands whose working memory a size_t of 64 bits does not count";
  }
  for (const LongOperation& operation : kLongOperations) {
    SCOPED_TRACE(operation.name);
    const size_t n = FirstTooLong(operation.factor, operation.more);
    LongLimbs x(operation.factor > 30 ? 2 * n + 128 : n + 128);
    ASSERT_NE(x.get(), nullptr);
    x.get()[n - 1] = 1;
    asked_times = 0;
    EXPECT_FALSE(operation.succeeds(x.get(), n));
    EXPECT_EQ(asked_times, 0u);
  }
}

}  // namespace
}  // namespace mirolta
