// Rows of a product whose sum stays in registers, for AArch64: umulh yields the high half of a
// product, mul the low one, and neither changes the carry.
#pragma once

#include "limb.h"

namespace mirolta {

// Limbs of y and of the sum t, in registers. With them, one temporary for each carry chain and the
// pointers of a loop, a row of eight takes nearly all registers that there are.
struct FourLimbs {
  Limb a, b, c, d;
};

inline __attribute__((always_inline)) FourLimbs LoadFour(const Limb* x) {
  return {x[0], x[1], x[2], x[3]};
}
inline __attribute__((always_inline)) void StoreFour(Limb* z, const FourLimbs& t) {
  z[0] = t.a;
  z[1] = t.b;
  z[2] = t.c;
  z[3] = t.d;
}

// One limb of the low halves, and one of the high halves, which moves the sum down by a limb.
#define MIROLTA_LOW_TERM(y, t) \
  "mul x14, %[" y              \
  "], %[factor]\n"             \
  "adcs %[" t "], %[" t "], x14\n"
#define MIROLTA_HIGH_TERM(y, t, above) \
  "umulh x14, %[" y                    \
  "], %[factor]\n"                     \
  "adcs %[" t "], %[" above "], x14\n"

// Returns the lowest limb of t + y * factor + in, and divides the sum by B:
// t + y * factor + in <= (B^k - 1) + (B^k - 1) (B - 1) + (B - 1) = B^(k + 1) - 1, for k limbs.
inline __attribute__((always_inline)) Limb AddRow(FourLimbs& t, const FourLimbs& y, Limb factor,
                                                  Limb in) {
  Limb out;
  __asm__(
      "mul x14, %[y0], %[factor]\n"
      "umulh x15, %[y0], %[factor]\n"
      "adds x14, x14, %[in]\n"
      "cinc x15, x15, cs\n"
      "adds %[out], %[t0], x14\n"
      MIROLTA_LOW_TERM("y1", "t1")
      MIROLTA_LOW_TERM("y2", "t2")
      MIROLTA_LOW_TERM("y3", "t3")
      "cset x16, cs\n"
      "adds %[t0], %[t1], x15\n"
      MIROLTA_HIGH_TERM("y1", "t1", "t2")
      MIROLTA_HIGH_TERM("y2", "t2", "t3")
      "umulh x14, %[y3], %[factor]\n"
      "adc %[t3], x16, x14\n"
      : [t0] "+&r"(t.a), [t1] "+&r"(t.b), [t2] "+&r"(t.c), [t3] "+&r"(t.d), [out] "=&r"(out)
      : [y0] "r"(y.a), [y1] "r"(y.b), [y2] "r"(y.c), [y3] "r"(y.d), [factor] "r"(factor),
        [in] "r"(in)
      : "x14", "x15", "x16", "cc");
  return out;
}

// The same for eight limbs.
inline __attribute__((always_inline)) Limb AddRow(FourLimbs& t, FourLimbs& u, const FourLimbs& y,
                                                  const FourLimbs& v, Limb factor, Limb in) {
  Limb out;
  __asm__(
      "mul x14, %[y0], %[factor]\n"
      "umulh x15, %[y0], %[factor]\n"
      "adds x14, x14, %[in]\n"
      "cinc x15, x15, cs\n"
      "adds %[out], %[t0], x14\n"
      MIROLTA_LOW_TERM("y1", "t1")
      MIROLTA_LOW_TERM("y2", "t2")
      MIROLTA_LOW_TERM("y3", "t3")
      MIROLTA_LOW_TERM("y4", "t4")
      MIROLTA_LOW_TERM("y5", "t5")
      MIROLTA_LOW_TERM("y6", "t6")
      MIROLTA_LOW_TERM("y7", "t7")
      "cset x16, cs\n"
      "adds %[t0], %[t1], x15\n"
      MIROLTA_HIGH_TERM("y1", "t1", "t2")
      MIROLTA_HIGH_TERM("y2", "t2", "t3")
      MIROLTA_HIGH_TERM("y3", "t3", "t4")
      MIROLTA_HIGH_TERM("y4", "t4", "t5")
      MIROLTA_HIGH_TERM("y5", "t5", "t6")
      MIROLTA_HIGH_TERM("y6", "t6", "t7")
      "umulh x14, %[y7], %[factor]\n"
      "adc %[t7], x16, x14\n"
      : [t0] "+&r"(t.a), [t1] "+&r"(t.b), [t2] "+&r"(t.c), [t3] "+&r"(t.d), [t4] "+&r"(u.a),
        [t5] "+&r"(u.b), [t6] "+&r"(u.c), [t7] "+&r"(u.d), [out] "=&r"(out)
      : [y0] "r"(y.a), [y1] "r"(y.b), [y2] "r"(y.c), [y3] "r"(y.d), [y4] "r"(v.a), [y5] "r"(v.b),
        [y6] "r"(v.c), [y7] "r"(v.d), [factor] "r"(factor), [in] "r"(in)
      : "x14", "x15", "x16", "cc");
  return out;
}

// The same without `in`, for the factor that makes the lowest limb zero: its sum carries out
// unless it was zero already.
inline __attribute__((always_inline)) void CancelRow(FourLimbs& t, const FourLimbs& y,
                                                     Limb factor) {
  __asm__(
      "subs xzr, %[t0], #1\n"
      MIROLTA_LOW_TERM("y1", "t1")
      MIROLTA_LOW_TERM("y2", "t2")
      MIROLTA_LOW_TERM("y3", "t3")
      "cset x16, cs\n"
      "umulh x14, %[y0], %[factor]\n"
      "adds %[t0], %[t1], x14\n"
      MIROLTA_HIGH_TERM("y1", "t1", "t2")
      MIROLTA_HIGH_TERM("y2", "t2", "t3")
      "umulh x14, %[y3], %[factor]\n"
      "adc %[t3], x16, x14\n"
      : [t0] "+&r"(t.a), [t1] "+&r"(t.b), [t2] "+&r"(t.c), [t3] "+&r"(t.d)
      : [y0] "r"(y.a), [y1] "r"(y.b), [y2] "r"(y.c), [y3] "r"(y.d), [factor] "r"(factor)
      : "x14", "x16", "cc");
}

inline __attribute__((always_inline)) void CancelRow(FourLimbs& t, FourLimbs& u, const FourLimbs& y,
                                                     const FourLimbs& v, Limb factor) {
  __asm__(
      "subs xzr, %[t0], #1\n"
      MIROLTA_LOW_TERM("y1", "t1")
      MIROLTA_LOW_TERM("y2", "t2")
      MIROLTA_LOW_TERM("y3", "t3")
      MIROLTA_LOW_TERM("y4", "t4")
      MIROLTA_LOW_TERM("y5", "t5")
      MIROLTA_LOW_TERM("y6", "t6")
      MIROLTA_LOW_TERM("y7", "t7")
      "cset x16, cs\n"
      "umulh x14, %[y0], %[factor]\n"
      "adds %[t0], %[t1], x14\n"
      MIROLTA_HIGH_TERM("y1", "t1", "t2")
      MIROLTA_HIGH_TERM("y2", "t2", "t3")
      MIROLTA_HIGH_TERM("y3", "t3", "t4")
      MIROLTA_HIGH_TERM("y4", "t4", "t5")
      MIROLTA_HIGH_TERM("y5", "t5", "t6")
      MIROLTA_HIGH_TERM("y6", "t6", "t7")
      "umulh x14, %[y7], %[factor]\n"
      "adc %[t7], x16, x14\n"
      : [t0] "+&r"(t.a), [t1] "+&r"(t.b), [t2] "+&r"(t.c), [t3] "+&r"(t.d), [t4] "+&r"(u.a),
        [t5] "+&r"(u.b), [t6] "+&r"(u.c), [t7] "+&r"(u.d)
      : [y0] "r"(y.a), [y1] "r"(y.b), [y2] "r"(y.c), [y3] "r"(y.d), [y4] "r"(v.a), [y5] "r"(v.b),
        [y6] "r"(v.c), [y7] "r"(v.d), [factor] "r"(factor)
      : "x14", "x16", "cc");
}

}  // namespace mirolta
