#include "limb_kernel_tables.h"
#include "operand_scanning.h"

#if MIROLTA_KERNELS_FOR(X86_64)

namespace mirolta {

namespace {

// One limb of a row: the low half of the product, plus the high half of the one before (carry
// flag), plus the limb of z (overflow flag). 'in' holds that high half, 'out' receives the new one.
  #define MIROLTA_ROW_ADD(offset, in, out)  \
    "mulx " offset "(%[x]), %[low], %[" out \
    "]\n"                                   \
    "adcx %[" in                            \
    "], %[low]\n"                           \
    "adox " offset                          \
    "(%[z]), %[low]\n"                      \
    "movq %[low], " offset "(%[z])\n"

// The same for z - p, which is ~(~z + p). 'not' changes no flag.
  #define MIROLTA_ROW_SUBTRACT(offset, in, out) \
    "mulx " offset "(%[x]), %[low], %[" out     \
    "]\n"                                       \
    "movq " offset                              \
    "(%[z]), %[old]\n"                          \
    "notq %[old]\n"                             \
    "adcx %[" in                                \
    "], %[low]\n"                               \
    "adox %[old], %[low]\n"                     \
    "notq %[low]\n"                             \
    "movq %[low], " offset "(%[z])\n"

// The same for the product alone.
  #define MIROLTA_ROW_SET(offset, in, out)  \
    "mulx " offset "(%[x]), %[low], %[" out \
    "]\n"                                   \
    "adcx %[" in                            \
    "], %[low]\n"                           \
    "movq %[low], " offset "(%[z])\n"

// A row: four limbs at a time, then up to three more. testq clears both flags, and no instruction
// between the limbs changes them.
  #define MIROLTA_ROW(STEP) \
    "testq %%rcx, %%rcx\n"         \
    "jz 2f\n"                      \
    "1:\n"                            \
    STEP("0", "carry", "other")       \
    STEP("8", "other", "carry")       \
    STEP("16", "carry", "other")      \
    STEP("24", "other", "carry")      \
    "leaq 32(%[x]), %[x]\n"           \
    "leaq 32(%[z]), %[z]\n"           \
    "leaq -1(%%rcx), %%rcx\n"         \
    "jrcxz 2f\n"                      \
    "jmp 1b\n"                        \
    "2:\n"                            \
    "movq %[tail], %%rcx\n"           \
    "jrcxz 4f\n"                      \
    STEP("0", "carry", "other")       \
    "movq %[other], %[carry]\n"       \
    "leaq -1(%%rcx), %%rcx\n"         \
    "jrcxz 4f\n"                      \
    STEP("8", "carry", "other")       \
    "movq %[other], %[carry]\n"       \
    "leaq -1(%%rcx), %%rcx\n"         \
    "jrcxz 4f\n"                      \
    STEP("16", "carry", "other")      \
    "movq %[other], %[carry]\n"       \
    "4:\n"                            \
    "movl $0, %k[low]\n"              \
    "adcx %[low], %[carry]\n"         \
    "adox %[low], %[carry]\n"

// One limb of a sum or difference, by adcq or sbbq.
  #define MIROLTA_SUM_LIMB(instruction, offset)        \
    "movq " offset "(%[x],%[i],8), %[t]\n"             \
    instruction " " offset "(%[y],%[i],8), %[t]\n"     \
    "movq %[t], " offset "(%[z],%[i],8)\n"

// A sum or difference: four limbs at a time, then up to three more. leaq and decq keep the carry
// flag.
  #define MIROLTA_SUM(instruction)                                                  \
    "xorl %k[i], %k[i]\n"                                                           \
    "jrcxz 2f\n"                                                                    \
    "1:\n"                                                                          \
    MIROLTA_SUM_LIMB(instruction, "0") MIROLTA_SUM_LIMB(instruction, "8")           \
    MIROLTA_SUM_LIMB(instruction, "16") MIROLTA_SUM_LIMB(instruction, "24")         \
    "leaq 4(%[i]), %[i]\n"                                                          \
    "decq %%rcx\n"                                                                  \
    "jnz 1b\n"                                                                      \
    "2:\n"                                                                          \
    "movq %[tail], %%rcx\n"                                                         \
    "jrcxz 4f\n"                                                                    \
    "3:\n"                                                                          \
    MIROLTA_SUM_LIMB(instruction, "0")                                              \
    "leaq 1(%[i]), %[i]\n"                                                          \
    "decq %%rcx\n"                                                                  \
    "jnz 3b\n"                                                                      \
    "4:\n"                                                                          \
    "movl $0, %k[t]\n"                                                              \
    "adcq %[t], %[t]\n"

struct AdxRows {
  static Limb Add(Limb* z, const Limb* x, const Limb* y, size_t n) {
    size_t count = n / 4;
    Limb i, t;
    __asm__ volatile(MIROLTA_SUM("adcq")
                     : "+c"(count), [i] "=&r"(i), [t] "=&r"(t)
                     : [z] "r"(z), [x] "r"(x), [y] "r"(y), [tail] "r"(n % 4)
                     : "cc", "memory");
    return t;
  }

  static Limb Subtract(Limb* z, const Limb* x, const Limb* y, size_t n) {
    size_t count = n / 4;
    Limb i, t;
    __asm__ volatile(MIROLTA_SUM("sbbq")
                     : "+c"(count), [i] "=&r"(i), [t] "=&r"(t)
                     : [z] "r"(z), [x] "r"(x), [y] "r"(y), [tail] "r"(n % 4)
                     : "cc", "memory");
    return t;
  }

  static inline __attribute__((always_inline)) Limb Mul1(Limb* z, const Limb* x, size_t n, Limb y) {
    Limb carry = 0;
    size_t count = n / 4;
    Limb low, other;
    __asm__ volatile(MIROLTA_ROW(MIROLTA_ROW_SET)
                     : [z] "+r"(z), [x] "+r"(x),
                       "+c"(count), [carry] "+r"(carry), [low] "=&r"(low), [other] "=&r"(other)
                     : "d"(y), [tail] "r"(n % 4)
                     : "cc", "memory");
    return carry;
  }

  static inline __attribute__((always_inline)) Limb MulAdd1(Limb* z, const Limb* x, size_t n,
                                                            Limb y) {
    Limb carry = 0;
    size_t count = n / 4;
    Limb low, other;
    __asm__ volatile(MIROLTA_ROW(MIROLTA_ROW_ADD)
                     : [z] "+r"(z), [x] "+r"(x),
                       "+c"(count), [carry] "+r"(carry), [low] "=&r"(low), [other] "=&r"(other)
                     : "d"(y), [tail] "r"(n % 4)
                     : "cc", "memory");
    return carry;
  }

  static inline __attribute__((always_inline)) Limb MulSub1(Limb* z, const Limb* x, size_t n,
                                                            Limb y) {
    Limb carry = 0;
    size_t count = n / 4;
    Limb low, other, old;
    __asm__ volatile(
        MIROLTA_ROW(MIROLTA_ROW_SUBTRACT)
        : [z] "+r"(z), [x] "+r"(x),
          "+c"(count), [carry] "+r"(carry), [low] "=&r"(low), [other] "=&r"(other), [old] "=&r"(old)
        : "d"(y), [tail] "r"(n % 4)
        : "cc", "memory");
    return carry;
  }
};

struct AdxBlocks : OperandScanningLoops<AdxRows> {
  static void Square(Limb* z, const Limb* x, size_t n) {
    z[0] = 0;
    z[2 * n - 1] = 0;
    if (n > 1) {
      z[n] = AdxRows::Mul1(z + 1, x + 1, n - 1, x[0]);
      for (size_t i = 1; i + 1 < n; ++i) {
        z[n + i] = AdxRows::MulAdd1(z + 2 * i + 1, x + i + 1, n - 1 - i, x[i]);
      }
    }
    // Doubles through the overflow flag and adds the squares through the carry flag.
    Limb low, high, t;
    __asm__ volatile(
        "xorl %k[t], %k[t]\n"
        "1:\n"
        "movq (%[x]), %%rdx\n"
        "mulx %%rdx, %[low], %[high]\n"
        "movq (%[z]), %[t]\n"
        "adox %[t], %[t]\n"
        "adcx %[low], %[t]\n"
        "movq %[t], (%[z])\n"
        "movq 8(%[z]), %[t]\n"
        "adox %[t], %[t]\n"
        "adcx %[high], %[t]\n"
        "movq %[t], 8(%[z])\n"
        "leaq 8(%[x]), %[x]\n"
        "leaq 16(%[z]), %[z]\n"
        "leaq -1(%%rcx), %%rcx\n"
        "jrcxz 2f\n"
        "jmp 1b\n"
        "2:\n"
        : [z] "+r"(z), [x] "+r"(x), "+c"(n), [low] "=&r"(low), [high] "=&r"(high), [t] "=&r"(t)
        :
        : "rdx", "cc", "memory");
  }
};

}  // namespace

constexpr LimbKernels kMulxAdxKernels = {AdxRows::Add,      AdxRows::Subtract, AdxRows::Mul1,
                                         AdxRows::MulAdd1,  AdxRows::MulSub1,  MultiplyMulxAdx,
                                         AdxBlocks::Square, AdxBlocks::Reduce, MontgomeryShortAdx};

}  // namespace mirolta

#endif
