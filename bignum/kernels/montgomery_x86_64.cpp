#include "limb_kernel_tables.h"

#if MIROLTA_KERNELS_FOR(X86_64)

  #include <immintrin.h>

  #include "montgomery_fios.h"
  #include "mulx_rows.h"

namespace mirolta {

namespace {

// z := t mod m for t + top * B^kCount < 2 m.
template <size_t kCount>
inline void StoreReduced(Limb* z, const Limb (&t)[kCount], Limb top, const Limb* m) {
  unsigned long long difference[kCount];
  unsigned char borrow = 0;
  for (size_t i = 0; i < kCount; ++i) borrow = _subborrow_u64(borrow, t[i], m[i], &difference[i]);
  const Limb keep = static_cast<Limb>(0) - static_cast<Limb>(top < borrow);
  for (size_t i = 0; i < kCount; ++i) z[i] = (t[i] & keep) | (difference[i] & ~keep);
}

// Montgomery4, Montgomery6 and Montgomery8: z := x * y / B^n mod m for n = 4, 6 and 8. Each step
// adds a row of x * y and the multiple of m that makes the lowest limb zero, and drops that limb.
// With t < m + y before a step, the sums are below (m + y) * B, which the two top registers hold,
// and t < m + y after it.
// Source: Koc, Acar and Kaliski, Analyzing and comparing Montgomery multiplication algorithms,
//         1996, CIOS.
void Montgomery4(Limb* z, const Limb* x, const Limb* y, const Limb* m, Limb inverse) {
  Limb t0 = 0, t1 = 0, t2 = 0, t3 = 0, t4 = 0, t5 = 0;
  Limb low, high;
  #pragma GCC unroll 4
  for (size_t i = 0; i < 4; ++i) {
    MIROLTA_ROW_OF_4(y, x[i]);
    MIROLTA_ROW_OF_4(m, t0 * inverse);
    MIROLTA_DROP_LIMB_OF_4;
  }
  // t := t - m unless that borrows.
  Limb d0 = t0, d1 = t1, d2 = t2, d3 = t3;
  __asm__(
      "subq (%[m]), %[d0]\n"
      "sbbq 8(%[m]), %[d1]\n"
      "sbbq 16(%[m]), %[d2]\n"
      "sbbq 24(%[m]), %[d3]\n"
      "sbbq $0, %[top]\n"
      "cmovcq %[t0], %[d0]\n"
      "cmovcq %[t1], %[d1]\n"
      "cmovcq %[t2], %[d2]\n"
      "cmovcq %[t3], %[d3]\n"
      : [d0] "+&r"(d0), [d1] "+&r"(d1), [d2] "+&r"(d2), [d3] "+&r"(d3), [top] "+&r"(t4)
      : [t0] "r"(t0), [t1] "r"(t1), [t2] "r"(t2), [t3] "r"(t3), [m] "r"(m)
      : "cc", "memory");
  z[0] = d0;
  z[1] = d1;
  z[2] = d2;
  z[3] = d3;
}

void Montgomery6(Limb* z, const Limb* x, const Limb* y, const Limb* m, Limb inverse) {
  Limb t0 = 0, t1 = 0, t2 = 0, t3 = 0, t4 = 0, t5 = 0, t6 = 0, t7 = 0;
  Limb low, high;
  #pragma GCC unroll 6
  for (size_t i = 0; i < 6; ++i) {
    MIROLTA_ROW_OF_6(y, x[i]);
    MIROLTA_ROW_OF_6(m, t0 * inverse);
    MIROLTA_DROP_LIMB_OF_6;
  }
  StoreReduced<6>(z, {t0, t1, t2, t3, t4, t5}, t6, m);
}

void Montgomery8(Limb* z, const Limb* x, const Limb* y, const Limb* m, Limb inverse) {
  Limb t0 = 0, t1 = 0, t2 = 0, t3 = 0, t4 = 0, t5 = 0, t6 = 0, t7 = 0, t8 = 0, t9 = 0;
  Limb low, high;
  #pragma GCC unroll 8
  for (size_t i = 0; i < 8; ++i) {
    MIROLTA_ROW_OF_8(y, x[i]);
    MIROLTA_ROW_OF_8(m, t0 * inverse);
    MIROLTA_DROP_LIMB_OF_8;
  }
  StoreReduced<8>(z, {t0, t1, t2, t3, t4, t5, t6, t7}, t8, m);
}

}  // namespace

bool MontgomeryShortAdx(Limb* z, const Limb* x, const Limb* y, const Limb* m, size_t n,
                        Limb inverse) {
  switch (n) {
    case 2:
      MontgomeryOf<2>(z, x, y, m, inverse);
      return true;
    case 3:
      MontgomeryOf<3>(z, x, y, m, inverse);
      return true;
    case 4:
      Montgomery4(z, x, y, m, inverse);
      return true;
    case 6:
      Montgomery6(z, x, y, m, inverse);
      return true;
    case 8:
      Montgomery8(z, x, y, m, inverse);
      return true;
    default:
      return false;
  }
}

}  // namespace mirolta

#endif
