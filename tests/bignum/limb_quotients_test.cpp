// Divisions of a limb pair that do without the processor's.
#include <gtest/gtest.h>

#include "limb_testing.h"
#include "reciprocal.h"
#include "small_quotient.h"

namespace mirolta {
namespace {

// v = floor((B^2 - 1) / d) - B: (B^2 - 1) - (B + v) d is a remainder.
void CheckReciprocal(Limb d, Limb v) {
  const LimbPair rest = SubtractPair({kLimbMax, static_cast<Limb>(~d)}, Product(v, d));
  ASSERT_EQ(rest.high, 0u) << d;
  ASSERT_LT(rest.low, d);
}

TEST(ReciprocalTest, DivisorsNearEveryPowerAndRandomOnesAreRight) {
  constexpr Limb kTop = static_cast<Limb>(Limb{1} << (kLimbBits - 1));
  Limbs divisors = RandomLimbs(static_cast<size_t>(Cases(20000)));
  for (uint32_t bit = 0; bit < kLimbBits; ++bit) {
    const Limb power = static_cast<Limb>(Limb{1} << bit);
    for (Limb distance = 0; distance < 64; ++distance) {
      divisors.push_back(static_cast<Limb>(power + distance));
      divisors.push_back(static_cast<Limb>(power - distance));
      divisors.push_back(static_cast<Limb>(~power - distance));
    }
  }
  for (const Limb each : divisors) {
    const Limb d = each | kTop;
    CheckReciprocal(d, ReciprocalByProducts(d));
    CheckReciprocal(d, Reciprocal(d));
  }
}

template <typename T>
void CheckQuotients(T (*divide)(T*, T), const std::vector<T>& operands) {
  for (const T x : operands) {
    for (const T y : operands) {
      if (y == 0) continue;
      T rest = x;
      const T quotient = divide(&rest, y);
      ASSERT_TRUE(rest < y);
      ASSERT_TRUE(static_cast<T>(quotient * y + rest) == x);
      // The product did not overflow.
      ASSERT_TRUE(quotient == 0 || (x - rest) / quotient == y);
    }
  }
}

template <typename T>
std::vector<T> Operands() {
  std::vector<T> operands;
  constexpr uint32_t kBits = static_cast<uint32_t>(sizeof(T)) * 8;
  for (uint32_t bit = 0; bit < kBits; ++bit) {
    const T power = static_cast<T>(T{1} << bit);
    operands.insert(operands.end(), {power, static_cast<T>(power - 1), static_cast<T>(~power),
                                     static_cast<T>(power | power >> 3)});
  }
  return operands;
}

TEST(SmallQuotientTest, OperandsNearEveryPowerAreRight) {
  CheckQuotients(QuotientByShifts<uint32_t>, Operands<uint32_t>());
  CheckQuotients(QuotientByShifts<uint64_t>, Operands<uint64_t>());
  CheckQuotients(SmallQuotient<uint32_t>, Operands<uint32_t>());
  CheckQuotients(SmallQuotient<uint64_t>, Operands<uint64_t>());
  CheckQuotients(SmallQuotient<DoubleLimb>, Operands<DoubleLimb>());
}

}  // namespace
}  // namespace mirolta
