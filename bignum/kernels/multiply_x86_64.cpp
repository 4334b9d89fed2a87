#include "limb_kernel_tables.h"

#if MIROLTA_KERNELS_FOR(X86_64)

  #include "mulx_rows.h"

namespace mirolta {

namespace {

// BlockOf8: z[m + 8] := x[m] * y[8], plus z[m] if kAdds; then m >= 8. Before a step the sum in t0
// to t9 is below 2 B^8. Adding a limb of z and a row keeps it below 2 B^9, which t9 <= 1 holds.
template <bool kAdds>
inline __attribute__((always_inline)) void BlockOf8(Limb* z, const Limb* x, size_t m,
                                                    const Limb* y) {
  Limb t0 = kAdds ? z[0] : 0, t1 = kAdds ? z[1] : 0, t2 = kAdds ? z[2] : 0, t3 = kAdds ? z[3] : 0,
       t4 = kAdds ? z[4] : 0, t5 = kAdds ? z[5] : 0, t6 = kAdds ? z[6] : 0, t7 = kAdds ? z[7] : 0,
       t8 = 0, t9 = 0;
  Limb low, high;
  for (size_t i = 0; i < m; ++i) {
    if (kAdds && i + 8 < m) {
      t8 += z[i + 8];
      t9 = t8 < z[i + 8];
    }
    MIROLTA_ROW_OF_8(y, x[i]);
    z[i] = t0;
    MIROLTA_DROP_LIMB_OF_8;
  }
  z[m + 0] = t0;
  z[m + 1] = t1;
  z[m + 2] = t2;
  z[m + 3] = t3;
  z[m + 4] = t4;
  z[m + 5] = t5;
  z[m + 6] = t6;
  z[m + 7] = t7;
}

// BlockOf4: the same for y[4], m >= 4 if kAdds.
template <bool kAdds>
inline __attribute__((always_inline)) void BlockOf4(Limb* z, const Limb* x, size_t m,
                                                    const Limb* y) {
  Limb t0 = kAdds ? z[0] : 0, t1 = kAdds ? z[1] : 0, t2 = kAdds ? z[2] : 0, t3 = kAdds ? z[3] : 0,
       t4 = 0, t5 = 0;
  Limb low, high;
  for (size_t i = 0; i < m; ++i) {
    if (kAdds && i + 4 < m) {
      t4 += z[i + 4];
      t5 = t4 < z[i + 4];
    }
    MIROLTA_ROW_OF_4(y, x[i]);
    z[i] = t0;
    MIROLTA_DROP_LIMB_OF_4;
  }
  z[m + 0] = t0;
  z[m + 1] = t1;
  z[m + 2] = t2;
  z[m + 3] = t3;
}

// Adds a row to the four limbs t1 to t4, which become five: the sum is below B^5, so that t5
// carries nothing out.
  #define MIROLTA_NEXT_ROW(factor, t1, t2, t3, t4, t5) \
    __asm__("xorl %k[top], %k[top]\n" MIROLTA_TERM("0", "a", "b") MIROLTA_TERM("8", "b", "c")       \
                MIROLTA_TERM("16", "c", "d") MIROLTA_TERM("24", "d", "top") "movl $0, %k[low]\n"    \
                                                                            "adcx %[low], %[top]\n" \
            : [a] "+r"(t1), [b] "+r"(t2), [c] "+r"(t3), [d] "+r"(t4), [top] "=&r"(t5),              \
              [low] "=&r"(low), [high] "=&r"(high)                                                  \
            : "d"(factor), [y] "r"(y)                                                               \
            : "cc", "memory")

// z[8] := x[4] * y[4].
__attribute__((noinline)) void MultiplyFours(Limb* z, const Limb* x, const Limb* y) {
  Limb t0, t1, t2, t3, t4, t5, t6, t7, low, high;
  __asm__(
      "mulx (%[y]), %[t0], %[t1]\n"
      "mulx 8(%[y]), %[low], %[t2]\n"
      "addq %[low], %[t1]\n"
      "mulx 16(%[y]), %[low], %[t3]\n"
      "adcq %[low], %[t2]\n"
      "mulx 24(%[y]), %[low], %[t4]\n"
      "adcq %[low], %[t3]\n"
      "adcq $0, %[t4]\n"
      : [t0] "=&r"(t0), [t1] "=&r"(t1), [t2] "=&r"(t2), [t3] "=&r"(t3), [t4] "=&r"(t4),
        [low] "=&r"(low)
      : "d"(x[0]), [y] "r"(y)
      : "cc", "memory");
  z[0] = t0;
  MIROLTA_NEXT_ROW(x[1], t1, t2, t3, t4, t5);
  z[1] = t1;
  MIROLTA_NEXT_ROW(x[2], t2, t3, t4, t5, t6);
  z[2] = t2;
  MIROLTA_NEXT_ROW(x[3], t3, t4, t5, t6, t7);
  z[3] = t3;
  z[4] = t4;
  z[5] = t5;
  z[6] = t6;
  z[7] = t7;
}

__attribute__((noinline)) void MultiplyEights(Limb* z, const Limb* x, const Limb* y) {
  BlockOf8<false>(z, x, 8, y);
}

// MultiplyBlocks: z[m + n] := x[m] * y[n], m >= n >= 1.
__attribute__((noinline)) void MultiplyBlocks(Limb* z, const Limb* x, size_t m, const Limb* y,
                                              size_t n) {
  size_t i = 0;
  if (n >= 8) {
    BlockOf8<false>(z, x, m, y);
    for (i = 8; i + 8 <= n; i += 8) BlockOf8<true>(z + i, x, m, y + i);
    if (i + 4 <= n) {
      BlockOf4<true>(z + i, x, m, y + i);
      i += 4;
    }
  } else if (n >= 4) {
    BlockOf4<false>(z, x, m, y);
    i = 4;
  } else {
    z[m] = kMulxAdxKernels.mul1(z, x, m, y[0]);
    i = 1;
  }
  for (; i < n; ++i) z[m + i] = kMulxAdxKernels.mul_add1(z + i, x, m, y[i]);
}

}  // namespace

void MultiplyMulxAdx(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n) {
  // Unrolled for the primes of 512-bit and 1024-bit moduli.
  if (m == 4 && n == 4) return MultiplyFours(z, x, y);
  if (m == 8 && n == 8) return MultiplyEights(z, x, y);
  MultiplyBlocks(z, x, m, y, n);
}

}  // namespace mirolta

#endif
