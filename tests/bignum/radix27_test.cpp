// Products and powers in radix 2^27 against the peer and the portable kernels.
#include "radix27.h"

#include <gtest/gtest.h>

#include <string>

#include "kernel_rows.h"
#include "limb_testing.h"
#include "montgomery_power.h"
#include "power_kernels.h"
#include "radix27_power.h"
#include "radix52_power.h"

namespace mirolta {
namespace {

#if MIROLTA_KERNELS_FOR(X86_32)

constexpr Kernel<const Radix27Kernels*> kRows[] = {
    {"avx2", kFeatureAvx2, &kRadix27Avx2},
    {"sse2", kFeatureSse2, &kRadix27Sse2},
};

using Digits = std::vector<Digit27>;

// The digits of x, of which some are longer than 27 bits: they take one off the next digit.
Digits ExportDigits(const Mpz& x, size_t count, bool longer) {
  Digits digits(count);
  const Limbs limbs = Export(x, count);
  for (size_t i = 0; i < count; ++i) {
    const size_t bit = i * kRadix27Bits;
    const Digit27 above = bit / kLimbBits + 1 < count ? limbs[bit / kLimbBits + 1] : 0;
    digits[i] = (above << kLimbBits | limbs[bit / kLimbBits]) >> bit % kLimbBits & kRadix27Mask;
  }
  for (size_t i = 0; longer && i + 1 < count; ++i) {
    if (digits[i] >= kRadix27More || digits[i + 1] == 0) continue;
    digits[i] += Digit27{1} << kRadix27Bits;
    --digits[i + 1];
  }
  return digits;
}

void ImportDigits(Mpz& x, const Digits& digits) {
  mpz_set_ui(x, 0);
  for (size_t i = digits.size(); i-- != 0;) {
    mpz_mul_2exp(x, x, kRadix27Bits);
    mpz_add_ui(x, x, static_cast<unsigned long>(digits[i]));
  }
}

// A number of exactly that many bits, odd; all ones for every third.
void RandomModulus(Mpz& m, uint32_t bits, int i) {
  const Mpz random(RandomBigOf(bits));
  mpz_set(m, random);
  mpz_setbit(m, bits - 1);
  mpz_setbit(m, 0);
  if (i % 3 != 0) return;
  mpz_set_ui(m, 1);
  mpz_mul_2exp(m, m, bits);
  mpz_sub_ui(m, m, 1);
}

// The memory of products, by the definition of its content.
Digits WorkOf(const Mpz& m, size_t count) {
  Mpz base, inverse, multiple;
  mpz_setbit(base, kRadix27BlockBits);
  mpz_invert(inverse, m, base);
  mpz_sub(inverse, base, inverse);
  mpz_mul(multiple, m, inverse);
  mpz_add_ui(multiple, multiple, 1);
  mpz_fdiv_q_2exp(multiple, multiple, kRadix27BlockBits);
  Digits work(Radix27WorkDigits(CheckedSize(count)).Value());
  const Digits digits = ExportDigits(multiple, count, false);
  for (size_t i = 0; i < count; ++i) work[kRadix27Block + i] = digits[i];
  return work;
}

// Several products in one memory, of operands up to their bound and next to it, and a last one by 1.
void CheckProducts(const Radix27Kernels& kernels, uint32_t bits, int i) {
  const size_t count = Radix27Count(bits);
  Mpz m, bound, base, inverse;
  RandomModulus(m, bits, i);
  mpz_mul_2exp(bound, m, kRadix27BlockBits + 1);
  mpz_setbit(base, static_cast<mp_bitcnt_t>(count * kRadix27Bits));
  mpz_invert(inverse, base, m);
  Digits work = WorkOf(m, count);
  for (int j = 0; j < 5; ++j) {
    Mpz x, y, product, got;
    const Mpz a(RandomBigOf(bits + kRadix27BlockBits + 1)),
        b(RandomBigOf(bits + kRadix27BlockBits + 1));
    mpz_mod(x, a, bound);
    mpz_mod(y, b, bound);
    if (j % 2 == 0) mpz_sub_ui(x, bound, 1);
    if (j == 2) mpz_set(y, x);
    if (j == 4) mpz_set_ui(y, 1);
    mpz_mul(product, x, y);
    mpz_mul(product, product, inverse);
    mpz_mod(product, product, m);
    Digits xd = ExportDigits(x, count, j % 2 != 0), zd(count, ~Digit27{0});
    const Digits yd = ExportDigits(y, count, j == 3);
    kernels.product(zd.data(), xd.data(), yd.data(), work.data(), count);
    for (const Digit27 digit : zd) ASSERT_LE(digit, kRadix27Mask + kRadix27More) << bits;
    ImportDigits(got, zd);
    Mpz most;
    mpz_mul_2exp(most, m, kRadix27BlockBits);
    ASSERT_LT(mpz_cmp(got, j == 4 ? most : bound), j == 4 ? 1 : 0) << bits;
    mpz_mod(got, got, m);
    ASSERT_EQ(mpz_cmp(got, product), 0) << bits << " " << j;
    kernels.product(xd.data(), xd.data(), yd.data(), work.data(), count);
    ASSERT_EQ(xd, zd);
  }
}

TEST(Radix27Test, ProductsAgreeWithThePeer) {
  for (const auto& row : kRows) {
    if (!test::Runs(row.needs)) continue;
    SCOPED_TRACE(row.name);
    constexpr uint32_t kMost = static_cast<uint32_t>(kRadix27PowerMostBits);
    constexpr uint32_t kLeast = static_cast<uint32_t>(kRadix27PowerLeastBits);
    int i = 0;
    for (uint32_t bits = kLeast; bits < kMost; bits += 1 + Below(bits / 16)) {
      CheckProducts(*row.function, bits, i++);
    }
    CheckProducts(*row.function, kMost, 0);
  }
}

TEST(Radix27Test, EntriesAreSelected) {
  constexpr size_t kEntries = 16;
  for (const auto& row : kRows) {
    if (!test::Runs(row.needs)) continue;
    for (size_t n = kRadix27LeastDigits; n < 45; n += kRadix27Block) {
      const size_t stride = n + Below(2) * 8;
      Digits table(stride * kEntries);
      for (size_t i = 0; i < table.size(); ++i) table[i] = i + 1;
      for (size_t index = 0; index < kEntries; ++index) {
        Digits z(n + 1, 9);
        row.function->select(z.data(), table.data(), kEntries, stride, n, index);
        for (size_t i = 0; i < n; ++i) ASSERT_EQ(z[i], index * stride + i + 1) << row.name << n;
        ASSERT_EQ(z[n], 9u);
      }
    }
  }
}

#endif

// Powers by each kernel, around its least length, whole blocks of digits and its greatest.
TEST(PowerKernelTest, PowersByEveryRowAgreeWithThePeer) {
  test::ForEachKernel(kPowerKernels, [](const auto& row) {
    const PowerMethod& method = *row.function;
    int i = 0;
    const auto check = [&](uint32_t bits, uint32_t exponent_bits) {
      if (bits < method.least_bits || bits > method.most_bits) return;
      Mpz m, x, power;
      const Mpz random_m(RandomBigOf(bits)), random_x(RandomBigOf(bits));
      mpz_set(m, random_m);
      mpz_setbit(m, bits - 1);
      mpz_setbit(m, 0);
      mpz_mod(x, random_x, m);
      if (++i % 5 == 0) mpz_sub_ui(x, m, 1);
      if (i % 11 == 0) mpz_set_ui(x, static_cast<unsigned long>(i % 2));
      Mpz exponent(RandomBigOf(exponent_bits));
      mpz_setbit(exponent, exponent_bits - 1);
      mpz_powm(power, x, exponent, m);
      const size_t n = (bits + kLimbBits - 1) / kLimbBits;
      const size_t en = (exponent_bits + kLimbBits - 1) / kLimbBits;
      Limbs z(n, 7);
      ASSERT_TRUE(method.function(z.data(), Export(x, n).data(), Export(exponent, en).data(), en,
                                  Export(m, n).data(), n));
      ASSERT_EQ(z, Export(power, n)) << bits;
    };
    for (uint32_t bits = 250; bits < 2000; bits += 1 + Below(bits / 8)) check(bits, 1 + Below(200));
    for (uint32_t bits = 315; bits < 330; ++bits) check(bits, 1 + Below(40));
    for (const uint32_t bits : {256u, 1024u, 4096u, 8192u}) check(bits, 1 + Below(40));
    check(512, 512);
    check(4150, 20);
    check(13606, 17);
  });
}

#if MIROLTA_KERNELS_FOR(X86_32)
TEST(PowerKernelTest, LongModuliTakeTheVectorsThatThereAre) {
  const auto named = [](const char* name) -> const PowerMethod* {
    for (const auto& row : kPowerKernels) {
      if (std::string(row.name) == name) return row.function;
    }
    return nullptr;
  };
  const uint32_t all = ~0u;
  EXPECT_EQ(&ChoosePower(kRadix27PowerMostBits, all), named("ifma"));
  EXPECT_EQ(ChoosePower(kRadix52PowerMostBits + 1, all).function, MontgomeryPower);
  EXPECT_EQ(&ChoosePower(kRadix27PowerLeastBits, all), named("avx2"));
  EXPECT_EQ(&ChoosePower(2048, kFeatureAvx2 | kFeatureSse2), named("avx2"));
  EXPECT_EQ(&ChoosePower(2048, kFeatureSse2), named("sse2"));
  EXPECT_EQ(ChoosePower(2048, kFeatureSsse3).function, MontgomeryPower);
  EXPECT_EQ(ChoosePower(kRadix27PowerMostBits, kFeatureSse2).function, named("sse2")->function);
  EXPECT_EQ(ChoosePower(kRadix27PowerMostBits + 1, kFeatureAvx2 | kFeatureSse2).function, MontgomeryPower);
  EXPECT_EQ(ChoosePower(kRadix27PowerLeastBits - 1, all).function, MontgomeryPower);
}
#endif

}  // namespace
}  // namespace mirolta
