#include "four_limbs_x86_64.h"

#if MIROLTA_KERNELS_FOR(X86_64)

namespace mirolta {

namespace {

// t += factor * y for four limbs of y in registers or memory, the sum in six registers. Low halves are added
// through the carry flag, high halves through the overflow flag.
  #define MIROLTA_ADD_ROW(factor, y_form, y0, y1, y2, y3)                                 \
    __asm__(                                                                              \
        "xorl %k[low], %k[low]\n"                                                         \
        "mulx %[r0], %[low], %[high]\n"                                                   \
        "adcx %[low], %[t0]\n"                                                            \
        "adox %[high], %[t1]\n"                                                           \
        "mulx %[r1], %[low], %[high]\n"                                                   \
        "adcx %[low], %[t1]\n"                                                            \
        "adox %[high], %[t2]\n"                                                           \
        "mulx %[r2], %[low], %[high]\n"                                                   \
        "adcx %[low], %[t2]\n"                                                            \
        "adox %[high], %[t3]\n"                                                           \
        "mulx %[r3], %[low], %[high]\n"                                                   \
        "adcx %[low], %[t3]\n"                                                            \
        "adox %[high], %[t4]\n"                                                           \
        "movl $0, %k[low]\n"                                                              \
        "adox %[low], %[t5]\n"                                                            \
        "adcx %[low], %[t4]\n"                                                            \
        "adcx %[low], %[t5]\n"                                                            \
        : [t0] "+r"(t0), [t1] "+r"(t1), [t2] "+r"(t2), [t3] "+r"(t3), [t4] "+r"(t4),      \
          [t5] "+r"(t5), [low] "=&r"(low), [high] "=&r"(high)                             \
        : "d"(factor), [r0] y_form(y0), [r1] y_form(y1), [r2] y_form(y2), [r3] y_form(y3) \
        : "cc")
  #define MIROLTA_ROW_OF(factor, form, row) \
    MIROLTA_ADD_ROW(factor, form, (row)[0], (row)[1], (row)[2], (row)[3])
  #define MIROLTA_DROP_LIMB (t0 = t1, t1 = t2, t2 = t3, t3 = t4, t4 = t5, t5 = 0)

// z := x * y / B^4 mod m. Two steps modulo multiple * B - 1, whose quotient limb is the lowest limb itself, leave
// t < (B + 1) m. A step modulo m leaves t < 3 m, and the last one t < m + y + (2 m - 5 y) / B, since the top limb
// of x is at most B - 5: below 2 m.
inline __attribute__((always_inline)) void Multiply(Limb (&z)[4], const Limb (&x)[4],
                                                    const Limb (&y)[4],
                                                    const FourLimbModulus& modulus) {
  Limb t0 = 0, t1 = 0, t2 = 0, t3 = 0, t4 = 0, t5 = 0;
  Limb low, high;
  #pragma GCC unroll 2
  for (size_t i = 0; i < 2; ++i) {
    MIROLTA_ROW_OF(x[i], "r", y);
    const Limb quotient = t0;
    MIROLTA_DROP_LIMB;
    MIROLTA_ROW_OF(quotient, "m", modulus.multiple);
  }
  #pragma GCC unroll 2
  for (size_t i = 2; i < 4; ++i) {
    MIROLTA_ROW_OF(x[i], "r", y);
    MIROLTA_ROW_OF(t0 * modulus.inverse, "m", modulus.m);
    MIROLTA_DROP_LIMB;
  }
  // t := t - m unless that borrows.
  Limb d0 = t0, d1 = t1, d2 = t2, d3 = t3;
  __asm__(
      "subq %[m0], %[d0]\n"
      "sbbq %[m1], %[d1]\n"
      "sbbq %[m2], %[d2]\n"
      "sbbq %[m3], %[d3]\n"
      "sbbq $0, %[top]\n"
      "cmovcq %[t0], %[d0]\n"
      "cmovcq %[t1], %[d1]\n"
      "cmovcq %[t2], %[d2]\n"
      "cmovcq %[t3], %[d3]\n"
      : [d0] "+&r"(d0), [d1] "+&r"(d1), [d2] "+&r"(d2), [d3] "+&r"(d3), [top] "+&r"(t4)
      : [t0] "r"(t0), [t1] "r"(t1), [t2] "r"(t2), [t3] "r"(t3), [m0] "m"(modulus.m[0]),
        [m1] "m"(modulus.m[1]), [m2] "m"(modulus.m[2]), [m3] "m"(modulus.m[3])
      : "cc");
  z[0] = d0;
  z[1] = d1;
  z[2] = d2;
  z[3] = d3;
}

}  // namespace

FourLimbModulus PrepareFourLimbs(const Limb* m, Limb inverse) noexcept {
  FourLimbModulus modulus = {{m[0], m[1], m[2], m[3]}, {}, inverse};
  // The lowest limb of m * inverse + 1 is 0, with a carry.
  Limb carry = static_cast<Limb>(Product(m[0], inverse).high + 1);
  for (size_t i = 1; i < 4; ++i) {
    const LimbPair sum = AddPair(Product(m[i], inverse), {carry, 0});
    modulus.multiple[i - 1] = sum.low;
    carry = sum.high;
  }
  modulus.multiple[3] = carry;
  return modulus;
}

void FourLimbProduct(Limb* z, const Limb* x, const Limb* y, const FourLimbModulus& modulus,
                     size_t squares) noexcept {
  Limb power[4] = {x[0], x[1], x[2], x[3]};
  for (; squares != 0; --squares) Multiply(power, power, power, modulus);
  const Limb factor[4] = {y[0], y[1], y[2], y[3]};
  Multiply(power, factor, power, modulus);
  for (size_t i = 0; i < 4; ++i) z[i] = power[i];
}

}  // namespace mirolta

#endif
