#include "montgomery_pair.h"

#include <gtest/gtest.h>

#include <random>

namespace mirolta {
namespace {

// x^e mod m bit by bit, with double limbs.
Limb Expected(const PairPower& of) {
  DoubleLimb power = 1;
  for (size_t i = kLimbBits; i-- != 0;) {
    power = power * power % of.m;
    if ((of.e >> i & 1) != 0) power = power * of.x % of.m;
  }
  return static_cast<Limb>(power);
}

void Expect(const PairPower& first, const PairPower& second) {
  Limb z[2] = {7, 7};
  PowerPair(z, {first, second});
  ASSERT_EQ(z[0], Expected(first)) << first.x << "^" << first.e << " mod " << first.m;
  ASSERT_EQ(z[1], Expected(second)) << second.x << "^" << second.e << " mod " << second.m;
}

TEST(PowerPairTest, PowersOfExtremeValuesAreRight) {
  constexpr Limb kHalf = Limb{1} << (kLimbBits - 1);
  const Limb moduli[] = {3, 5, kHalf - 1, kHalf + 1, kLimbMax - 2, kLimbMax};
  const Limb exponents[] = {0, 1, 2, 3, kHalf, kLimbMax};
  for (const Limb m : moduli) {
    for (const Limb e : exponents) {
      for (const Limb x : {Limb{0}, Limb{1}, Limb{2}, static_cast<Limb>(m - 1)}) {
        Expect({x, e, m}, {static_cast<Limb>(m - 2), 5, m});
        Expect({1, 2, 3}, {x, e, m});
      }
    }
  }
}

TEST(PowerPairTest, PowersOfRandomValuesAreRight) {
  std::mt19937_64 generator(5);
  const auto any = [&] { return static_cast<Limb>(generator() >> (generator() % 64)); };
  for (int i = 0; i < 20000; ++i) {
    PairPower powers[2];
    for (PairPower& power : powers) {
      power.m = static_cast<Limb>(any() | 3);
      power.x = static_cast<Limb>(any() % power.m);
      power.e = any();
    }
    Expect(powers[0], powers[1]);
  }
}

}  // namespace
}  // namespace mirolta
