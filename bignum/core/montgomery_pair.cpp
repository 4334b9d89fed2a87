#include "montgomery_pair.h"

#include "divide.h"
#include "limb_basics.h"
#include "montgomery.h"

namespace mirolta {

namespace {

// One of the powers, in Montgomery representation.
struct Chain {
  Limb m;
  Limb inverse;  // 1 / m mod B
  Limb one;
  Limb x;
  Limb power;

  explicit Chain(const PairPower& of) noexcept : m(of.m), inverse(LimbInverse(m)) {
    const LimbDivisor divisor = PrepareDivisor(m);
    const Limb unit[2] = {0, 1};
    const Limb value[2] = {0, of.x};
    one = ModLimb(unit, 2, divisor);
    x = ModLimb(value, 2, divisor);
    power = one;
  }

  // a * b / B mod m: a b and a multiple of m have the same low limb, and high limbs below m, which
  // are subtracted.
  Limb Multiply(Limb a, Limb b) const noexcept {
    const LimbPair t = Product(a, b);
    const Limb multiple = Product(static_cast<Limb>(t.low * inverse), m).high;
    const Limb below_zero = static_cast<Limb>(0 - static_cast<Limb>(t.high < multiple));
    return static_cast<Limb>(t.high - multiple + (m & below_zero));
  }
  void Step(Limb bit) noexcept {
    const Limb mask = static_cast<Limb>(0 - bit);
    power = Multiply(power, power);
    power = Multiply(power, static_cast<Limb>((x & mask) | (one & ~mask)));
  }
};

}  // namespace

void PowerPair(Limb (&z)[2], const PairPower (&powers)[2]) noexcept {
  Chain first(powers[0]);
  Chain second(powers[1]);
  const Limb both = powers[0].e | powers[1].e;
  for (size_t i = LimbBits(&both, 1); i-- != 0;) {
    first.Step(powers[0].e >> i & 1);
    second.Step(powers[1].e >> i & 1);
  }
  z[0] = first.Multiply(first.power, 1);
  z[1] = second.Multiply(second.power, 1);
  WipeMemory(&first, sizeof first);
  WipeMemory(&second, sizeof second);
}

}  // namespace mirolta
