#include "limb_kernel_tables.h"

#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)

  #include <immintrin.h>

namespace mirolta {

namespace {

// Low halves go up the carry flag's chain, high halves up the overflow flag's.
  #define MIROLTA_TERM(offset, at, above) \
    "mulx " offset                        \
    "(%[y]), %[low], %[high]\n"           \
    "adcx %[low], %[" at                  \
    "]\n"                                 \
    "adox %[high], %[" above "]\n"
  #define MIROLTA_TERM_END(top, over) \
    "movl $0, %k[low]\n"              \
    "adox %[low], %[" over            \
    "]\n"                             \
    "adcx %[low], %[" top             \
    "]\n"                             \
    "adcx %[low], %[" over "]\n"

// t += y * factor for 4 limbs of y, the sum in 6 registers.
  #define MIROLTA_ROW_OF_4(row, factor)                                                           \
    __asm__("xorl %k[low], %k[low]\n" MIROLTA_TERM("0", "t0", "t1") MIROLTA_TERM("8", "t1", "t2") \
                MIROLTA_TERM("16", "t2", "t3") MIROLTA_TERM("24", "t3", "t4")                     \
                    MIROLTA_TERM_END("t4", "t5")                                                  \
            : [t0] "+r"(t0), [t1] "+r"(t1), [t2] "+r"(t2), [t3] "+r"(t3), [t4] "+r"(t4),          \
              [t5] "+r"(t5), [low] "=&r"(low), [high] "=&r"(high)                                 \
            : "d"(factor), [y] "r"(row)                                                           \
            : "cc", "memory")

// t += y * factor for 8 limbs of y, the sum in 10 registers.
  #define MIROLTA_ROW_OF_8(row, factor)                                                           \
    __asm__("xorl %k[low], %k[low]\n" MIROLTA_TERM("0", "t0", "t1") MIROLTA_TERM("8", "t1", "t2") \
                MIROLTA_TERM("16", "t2", "t3") MIROLTA_TERM("24", "t3", "t4")                     \
                    MIROLTA_TERM("32", "t4", "t5") MIROLTA_TERM("40", "t5", "t6")                 \
                        MIROLTA_TERM("48", "t6", "t7") MIROLTA_TERM("56", "t7", "t8")             \
                            MIROLTA_TERM_END("t8", "t9")                                          \
            : [t0] "+r"(t0), [t1] "+r"(t1), [t2] "+r"(t2), [t3] "+r"(t3), [t4] "+r"(t4),          \
              [t5] "+r"(t5), [t6] "+r"(t6), [t7] "+r"(t7), [t8] "+r"(t8), [t9] "+r"(t9),          \
              [low] "=&r"(low), [high] "=&r"(high)                                                \
            : "d"(factor), [y] "r"(row)                                                           \
            : "cc", "memory")

// z := the lower n limbs of t less m if t, with the limb top above them, is m or more.
template <size_t kCount>
inline void StoreReduced(Limb* z, const Limb (&t)[kCount], Limb top, const Limb* m) {
  unsigned long long difference[kCount];
  unsigned char borrow = 0;
  for (size_t i = 0; i < kCount; ++i) borrow = _subborrow_u64(borrow, t[i], m[i], &difference[i]);
  const Limb keep = static_cast<Limb>(0) - static_cast<Limb>(top < borrow);
  for (size_t i = 0; i < kCount; ++i) z[i] = (t[i] & keep) | (difference[i] & ~keep);
}

// Each round adds a row of x * y and the multiple of m that makes the lowest limb zero, and drops
// that limb. With t < m + y before a round, the sums stay below (m + y) * B, which the two
// registers above hold, and t < m + y holds after it.
void Montgomery4(Limb* z, const Limb* x, const Limb* y, const Limb* m, Limb inverse) {
  Limb t0 = 0, t1 = 0, t2 = 0, t3 = 0, t4 = 0, t5 = 0;
  Limb low, high;
  #pragma GCC unroll 4
  for (size_t i = 0; i < 4; ++i) {
    MIROLTA_ROW_OF_4(y, x[i]);
    MIROLTA_ROW_OF_4(m, t0 * inverse);
    t0 = t1;
    t1 = t2;
    t2 = t3;
    t3 = t4;
    t4 = t5;
    t5 = 0;
  }
  StoreReduced<4>(z, {t0, t1, t2, t3}, t4, m);
}

void Montgomery8(Limb* z, const Limb* x, const Limb* y, const Limb* m, Limb inverse) {
  Limb t0 = 0, t1 = 0, t2 = 0, t3 = 0, t4 = 0, t5 = 0, t6 = 0, t7 = 0, t8 = 0, t9 = 0;
  Limb low, high;
  #pragma GCC unroll 8
  for (size_t i = 0; i < 8; ++i) {
    MIROLTA_ROW_OF_8(y, x[i]);
    MIROLTA_ROW_OF_8(m, t0 * inverse);
    t0 = t1;
    t1 = t2;
    t2 = t3;
    t3 = t4;
    t4 = t5;
    t5 = t6;
    t6 = t7;
    t7 = t8;
    t8 = t9;
    t9 = 0;
  }
  StoreReduced<8>(z, {t0, t1, t2, t3, t4, t5, t6, t7}, t8, m);
}

}  // namespace

bool MontgomeryShortAdx(Limb* z, const Limb* x, const Limb* y, const Limb* m, size_t n,
                        Limb inverse) {
  switch (n) {
    case 4:
      Montgomery4(z, x, y, m, inverse);
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
