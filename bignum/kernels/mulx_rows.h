// Rows of a product whose sum stays in registers, for processors with mulx, adcx and adox. The
// macros use the variables t0, t1, ... of the sum and two spare ones, low and high.
#pragma once

// Low halves are added through the carry flag, high halves through the overflow flag.
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

// t += y * factor for 6 limbs of y, the sum in 8 registers.
#define MIROLTA_ROW_OF_6(row, factor)                                                           \
  __asm__("xorl %k[low], %k[low]\n" MIROLTA_TERM("0", "t0", "t1") MIROLTA_TERM("8", "t1", "t2") \
              MIROLTA_TERM("16", "t2", "t3") MIROLTA_TERM("24", "t3", "t4")                     \
                  MIROLTA_TERM("32", "t4", "t5") MIROLTA_TERM("40", "t5", "t6")                 \
                      MIROLTA_TERM_END("t6", "t7")                                              \
          : [t0] "+r"(t0), [t1] "+r"(t1), [t2] "+r"(t2), [t3] "+r"(t3), [t4] "+r"(t4),          \
            [t5] "+r"(t5), [t6] "+r"(t6), [t7] "+r"(t7), [low] "=&r"(low), [high] "=&r"(high)   \
          : "d"(factor), [y] "r"(row)                                                           \
          : "cc", "memory")

// t += y * factor for 8 limbs of y, the sum in 10 registers.
#define MIROLTA_ROW_OF_8(row, factor)                                                             \
  __asm__("xorl %k[low], %k[low]\n" MIROLTA_TERM("0", "t0", "t1") MIROLTA_TERM("8", "t1", "t2")   \
              MIROLTA_TERM("16", "t2", "t3") MIROLTA_TERM("24", "t3", "t4") MIROLTA_TERM(         \
                  "32", "t4", "t5") MIROLTA_TERM("40", "t5", "t6") MIROLTA_TERM("48", "t6", "t7") \
                  MIROLTA_TERM("56", "t7", "t8") MIROLTA_TERM_END("t8", "t9")                     \
          : [t0] "+r"(t0), [t1] "+r"(t1), [t2] "+r"(t2), [t3] "+r"(t3), [t4] "+r"(t4),            \
            [t5] "+r"(t5), [t6] "+r"(t6), [t7] "+r"(t7), [t8] "+r"(t8), [t9] "+r"(t9),            \
            [low] "=&r"(low), [high] "=&r"(high)                                                  \
          : "d"(factor), [y] "r"(row)                                                             \
          : "cc", "memory")

// t /= B: drops the lowest limb of a sum of 4, 6 or 8 limbs and the two above.
#define MIROLTA_DROP_LIMB_OF_4 (t0 = t1, t1 = t2, t2 = t3, t3 = t4, t4 = t5, t5 = 0)
#define MIROLTA_DROP_LIMB_OF_6 \
  (t0 = t1, t1 = t2, t2 = t3, t3 = t4, t4 = t5, t5 = t6, t6 = t7, t7 = 0)
#define MIROLTA_DROP_LIMB_OF_8 \
  (t0 = t1, t1 = t2, t2 = t3, t3 = t4, t4 = t5, t5 = t6, t6 = t7, t7 = t8, t8 = t9, t9 = 0)
