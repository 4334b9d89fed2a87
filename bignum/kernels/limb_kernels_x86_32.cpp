// Loops over limbs for 32-bit x86 in general registers, by eight and four limbs: compilers keep neither a carry
// in its flag nor the halves of a product in their registers. Seven registers are free, six in code that is not
// optimised, so that counts are kept outside.
#include "limb_kernel_tables.h"
#include "operand_scanning.h"
#include "radix28.h"

#if MIROLTA_KERNELS_FOR(X86_32)

namespace mirolta {

namespace {

static_assert(kLimbBits == 32);

  #define MIROLTA_FOUR(STEP) STEP("0") STEP("4") STEP("8") STEP("12")
  #define MIROLTA_EIGHT(STEP) MIROLTA_FOUR(STEP) STEP("16") STEP("20") STEP("24") STEP("28")

  #define MIROLTA_ADD_LIMB(offset) \
    "movl " offset                 \
    "(%[x]), %[t]\n"               \
    "adcl " offset                 \
    "(%[y]), %[t]\n"               \
    "movl %[t], " offset "(%[z])\n"
  #define MIROLTA_SUBTRACT_LIMB(offset) \
    "movl " offset                      \
    "(%[x]), %[t]\n"                    \
    "sbbl " offset                      \
    "(%[y]), %[t]\n"                    \
    "movl %[t], " offset "(%[z])\n"

// The carry, 0 or 1, is in its flag meanwhile.
  #define MIROLTA_SUM(LIMBS, STEP) \
    __asm__ volatile("addl $-1, %[carry]\n" LIMBS(STEP) "movl $0, %[carry]\n" \
            "adcl $0, %[carry]\n"                                    \
            : [carry] "+r"(carry), [t] "=&r"(t)                      \
            : [z] "r"(z), [x] "r"(x), [y] "r"(y)                     \
            : "cc", "memory")

struct FlagSums {
  static Limb Add(Limb* z, const Limb* x, const Limb* y, size_t n) {
    Limb carry = 0, t;
    for (; n >= 8; n -= 8, z += 8, x += 8, y += 8) MIROLTA_SUM(MIROLTA_EIGHT, MIROLTA_ADD_LIMB);
    for (; n != 0; --n) {
      const DoubleLimb sum = static_cast<DoubleLimb>(*x++) + *y++ + carry;
      *z++ = static_cast<Limb>(sum);
      carry = static_cast<Limb>(sum >> kLimbBits);
    }
    return carry;
  }

  static Limb Subtract(Limb* z, const Limb* x, const Limb* y, size_t n) {
    Limb carry = 0, t;
    for (; n >= 8; n -= 8, z += 8, x += 8, y += 8)
      MIROLTA_SUM(MIROLTA_EIGHT, MIROLTA_SUBTRACT_LIMB);
    for (; n != 0; --n) {
      const DoubleLimb difference = static_cast<DoubleLimb>(*x++) - *y++ - carry;
      *z++ = static_cast<Limb>(difference);
      carry = static_cast<Limb>(difference >> (2 * kLimbBits - 1));
    }
    return carry;
  }
};

// One limb of a row by mull. 'at' is what the last limb receives: its low half, the high half before it and their
// carry. It is added or subtracted between this limb's product and the sum of its halves, which takes the carry.
  #define MIROLTA_MUL_LIMB(offset, last, instruction, sum)        \
    "movl " offset                                                \
    "(%[x]), %%eax\n"                                             \
    "mull %[factor]\n" instruction " %[at], " last "(%[z])\n" sum \
    " %[high], %%eax\n"                                           \
    "adcl $0, %%edx\n"                                            \
    "movl %%eax, %[at]\n"                                         \
    "movl %%edx, %[high]\n"
// The first limb adds the carry of the limbs before, the last its own.
  #define MIROLTA_MUL_BEGIN \
    "movl (%[x]), %%eax\n"  \
    "mull %[factor]\n"      \
    "addl %[high], %%eax\n" \
    "adcl $0, %%edx\n"      \
    "movl %%eax, %[at]\n"   \
    "movl %%edx, %[high]\n"
  #define MIROLTA_MUL_END(last, instruction) \
    instruction " %[at], " last              \
                "(%[z])\n"                   \
                "adcl $0, %[high]\n"
  #define MIROLTA_MUL_STORE(last, instruction) instruction " %[at], " last "(%[z])\n"
  #define MIROLTA_MUL_2(instruction, sum) \
    MIROLTA_MUL_BEGIN MIROLTA_MUL_LIMB("4", "0", instruction, sum)
  #define MIROLTA_MUL_4(instruction, sum)                          \
    MIROLTA_MUL_BEGIN MIROLTA_MUL_LIMB("4", "0", instruction, sum) \
        MIROLTA_MUL_LIMB("8", "4", instruction, sum) MIROLTA_MUL_LIMB("12", "8", instruction, sum)
  #define MIROLTA_MUL_8(instruction, sum)          \
    MIROLTA_MUL_4(instruction, sum)                \
    MIROLTA_MUL_LIMB("16", "12", instruction, sum) \
    MIROLTA_MUL_LIMB("20", "16", instruction, sum) \
    MIROLTA_MUL_LIMB("24", "20", instruction, sum) MIROLTA_MUL_LIMB("28", "24", instruction, sum)
  #define MIROLTA_MUL(code)                                    \
    __asm__ volatile(code                                      \
                     : [high] "+r"(carry), [at] "=&r"(at)      \
                     : [z] "r"(z), [x] "r"(x), [factor] "m"(y) \
                     : "eax", "edx", "cc", "memory")

// Limbs of a row by blocks of 8, 4, 2 and 1, with the code that each has.
  #define MIROLTA_ROW(BLOCK_OF_8, BLOCK_OF_4, BLOCK_OF_2, BLOCK_OF_1) \
    for (; n >= 8; n -= 8, z += 8, x += 8) BLOCK_OF_8;                \
    if ((n & 4) != 0) {                                               \
      BLOCK_OF_4;                                                     \
      z += 4, x += 4;                                                 \
    }                                                                 \
    if ((n & 2) != 0) {                                               \
      BLOCK_OF_2;                                                     \
      z += 2, x += 2;                                                 \
    }                                                                 \
    if ((n & 1) != 0) BLOCK_OF_1

// Rows are not inlined: each would be there three times.
  #define MIROLTA_ROW_FUNCTION static __attribute__((noinline)) Limb

  #define MIROLTA_MUL_ROW(instruction, sum, END)                                     \
    Limb carry = 0, at;                                                              \
    MIROLTA_ROW(MIROLTA_MUL(MIROLTA_MUL_8(instruction, sum) END("28", instruction)), \
                MIROLTA_MUL(MIROLTA_MUL_4(instruction, sum) END("12", instruction)), \
                MIROLTA_MUL(MIROLTA_MUL_2(instruction, sum) END("4", instruction)),  \
                MIROLTA_MUL(MIROLTA_MUL_BEGIN END("0", instruction)));               \
    return carry

struct MulRows : FlagSums {
  // A product alone has nothing to add to, and no carry from there.
  MIROLTA_ROW_FUNCTION Mul1(Limb* z, const Limb* x, size_t n, Limb y) {
    MIROLTA_MUL_ROW("movl", "addl", MIROLTA_MUL_STORE);
  }
  MIROLTA_ROW_FUNCTION MulAdd1(Limb* z, const Limb* x, size_t n, Limb y) {
    MIROLTA_MUL_ROW("addl", "adcl", MIROLTA_MUL_END);
  }
  MIROLTA_ROW_FUNCTION MulSub1(Limb* z, const Limb* x, size_t n, Limb y) {
    MIROLTA_MUL_ROW("subl", "adcl", MIROLTA_MUL_END);
  }
};

// One limb of a row by mulx: the low half of the product, plus the high half of the one before (carry flag), plus
// the limb of z (overflow flag). 'in' holds that high half, 'out' receives the new one.
  #define MIROLTA_MULX(offset, out) "mulx " offset "(%[x]), %[low], %[" out "]\n"
  #define MIROLTA_MULX_SET(offset, in, out) \
    MIROLTA_MULX(offset, out)               \
    "adcx %[" in                            \
    "], %[low]\n"                           \
    "movl %[low], " offset "(%[z])\n"
  #define MIROLTA_MULX_ADD(offset, in, out) \
    MIROLTA_MULX(offset, out)               \
    "adcx %[" in                            \
    "], %[low]\n"                           \
    "adox " offset                          \
    "(%[z]), %[low]\n"                      \
    "movl %[low], " offset "(%[z])\n"
// The same for z - p, which is ~(~z + p); notl changes no flag.
  #define MIROLTA_MULX_SUBTRACT(offset, in, out) \
    MIROLTA_MULX(offset, out)                    \
    "adcx %[" in                                 \
    "], %[low]\n"                                \
    "movl " offset "(%[z]), %[" in               \
    "]\n"                                        \
    "notl %[" in                                 \
    "]\n"                                        \
    "adox %[" in                                 \
    "], %[low]\n"                                \
    "notl %[low]\n"                              \
    "movl %[low], " offset "(%[z])\n"
  #define MIROLTA_MULX_1(STEP) STEP("0", "carry", "other") "movl %[other], %[carry]\n"
  #define MIROLTA_MULX_2(STEP) STEP("0", "carry", "other") STEP("4", "other", "carry")
  #define MIROLTA_MULX_4(STEP)  \
    STEP("0", "carry", "other") \
    STEP("4", "other", "carry") STEP("8", "carry", "other") STEP("12", "other", "carry")
  #define MIROLTA_MULX_8(STEP)   \
    MIROLTA_MULX_4(STEP)         \
    STEP("16", "carry", "other") \
    STEP("20", "other", "carry") STEP("24", "carry", "other") STEP("28", "other", "carry")
// xorl clears both flags, and both are added at the end.
  #define MIROLTA_MULX_LIMBS(LIMBS, STEP) \
    __asm__ volatile("xorl %[low], %[low]\n" LIMBS(STEP) "movl $0, %[low]\n"                            \
            "adcx %[low], %[carry]\n"                                                          \
            "adox %[low], %[carry]\n"                                                          \
            : [carry] "+r"(carry), [low] "=&r"(low), [other] "=&r"(other)                      \
            : [z] "r"(z), [x] "r"(x), "d"(y)                                                   \
            : "cc", "memory")

  #define MIROLTA_MULX_ROW(STEP)                                                             \
    Limb carry = 0, low, other;                                                              \
    MIROLTA_ROW(                                                                             \
        MIROLTA_MULX_LIMBS(MIROLTA_MULX_8, STEP), MIROLTA_MULX_LIMBS(MIROLTA_MULX_4, STEP),  \
        MIROLTA_MULX_LIMBS(MIROLTA_MULX_2, STEP), MIROLTA_MULX_LIMBS(MIROLTA_MULX_1, STEP)); \
    return carry

struct MulxRows : FlagSums {
  MIROLTA_ROW_FUNCTION Mul1(Limb* z, const Limb* x, size_t n, Limb y) {
    MIROLTA_MULX_ROW(MIROLTA_MULX_SET);
  }
  MIROLTA_ROW_FUNCTION MulAdd1(Limb* z, const Limb* x, size_t n, Limb y) {
    MIROLTA_MULX_ROW(MIROLTA_MULX_ADD);
  }
  MIROLTA_ROW_FUNCTION MulSub1(Limb* z, const Limb* x, size_t n, Limb y) {
    MIROLTA_MULX_ROW(MIROLTA_MULX_SUBTRACT);
  }
};

bool NoMontgomeryX86(Limb*, const Limb*, const Limb*, const Limb*, size_t, Limb) {
  return false;
}

template <typename Rows>
struct X86Blocks : OperandScanningLoops<Rows> {
  static void Square(Limb* z, const Limb* x, size_t n) {
    z[0] = 0;
    z[2 * n - 1] = 0;
    if (n > 1) {
      z[n] = Rows::Mul1(z + 1, x + 1, n - 1, x[0]);
      for (size_t i = 1; i + 1 < n; ++i) {
        z[n + i] = Rows::MulAdd1(z + 2 * i + 1, x + i + 1, n - 1 - i, x[i]);
      }
    }
    Rows::Add(z, z, z, 2 * n);
    // The squares: mull changes the carry flag, so that it is kept as 0 or -1 meanwhile.
    Limb carry = 0;
    for (; n != 0; --n, ++x, z += 2) {
      __asm__ volatile(
          "movl (%[x]), %%eax\n"
          "mull %%eax\n"
          "addl %[carry], %[carry]\n"
          "adcl %%eax, (%[z])\n"
          "adcl %%edx, 4(%[z])\n"
          "sbbl %[carry], %[carry]\n"
          : [carry] "+r"(carry)
          : [z] "r"(z), [x] "r"(x)
          : "eax", "edx", "cc", "memory");
    }
  }
};

// A product of eight by eight limbs, column by column, without a loop: rows of eight limbs cost more than the
// processor's multiplier does.
struct Columns8 {
  static constexpr size_t kLimbs = 8;

  // The sum of a column.
  struct Sum {
    Limb low, middle, high;

    // Six registers, as many as code has that is not optimised: one is for y's address.
    inline __attribute__((always_inline)) void AddProduct(Limb x, const Limb& y) {
      __asm__(
          "mull %[y]\n"
          "addl %%eax, %[low]\n"
          "adcl %%edx, %[middle]\n"
          "adcl $0, %[high]\n"
          : "+a"(x), [low] "+r"(low), [middle] "+r"(middle), [high] "+r"(high)
          : [y] "m"(y)
          : "edx", "cc");
    }
  };

  template <size_t kColumn, size_t... kOffset>
  static inline __attribute__((always_inline)) void Column(Limb* z, Sum& sum, const Limb* x,
                                                           const Limb (&y)[kLimbs],
                                                           std::index_sequence<kOffset...>) {
    constexpr size_t kFirst = kColumn < kLimbs ? 0 : kColumn - kLimbs + 1;
    (sum.AddProduct(x[kFirst + kOffset], y[kColumn - kFirst - kOffset]), ...);
    z[kColumn] = sum.low;
    sum = {sum.middle, sum.high, 0};
  }

  template <size_t... kColumn>
  static inline __attribute__((always_inline)) void All(Limb* z, const Limb* x,
                                                        const Limb (&y)[kLimbs],
                                                        std::index_sequence<kColumn...>) {
    Sum sum = {};
    (Column<kColumn>(
         z, sum, x, y,
         std::make_index_sequence<(kColumn < kLimbs ? kColumn + 1 : 2 * kLimbs - 1 - kColumn)>()),
     ...);
    z[2 * kLimbs - 1] = sum.low;
  }

  static void Multiply(Limb* z, const Limb* x, const Limb* y) {
    Limb own_y[kLimbs];
    for (size_t i = 0; i < kLimbs; ++i) own_y[i] = y[i];
    All(z, x, own_y, std::make_index_sequence<2 * kLimbs - 1>());
  }
};

struct MulBlocks : X86Blocks<MulRows> {
  static void Multiply(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n) {
    if (m == Columns8::kLimbs && n == Columns8::kLimbs) {
      Columns8::Multiply(z, x, y);
    } else {
      X86Blocks<MulRows>::Multiply(z, x, m, y, n);
    }
  }
};

// Products from kLeast limbs on by vectors; squares from kLeastSquare, since rows compute half of their products.
template <typename Rows, typename Blocks, auto kProduct, size_t kLeast, size_t kLeastSquare>
struct VectorBlocks : Blocks {
  static void Multiply(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n) {
    if (n < kLeast || n > kRadix28MostLimbs) {
      Blocks::Multiply(z, x, m, y, n);
    } else if (m <= kRadix28MostLimbs) {
      kProduct(z, x, m, y, n);
    } else {
      MultiplyParts(z, x, m, y, n);
    }
  }

  // Even parts of a long x. Not inlined, since a part takes stack.
  static __attribute__((noinline)) void MultiplyParts(Limb* z, const Limb* x, size_t m,
                                                      const Limb* y, size_t n) {
    size_t parts = (m + kRadix28MostLimbs - 1) / kRadix28MostLimbs;
    size_t count = m / parts;
    kProduct(z, x, count, y, n);
    Limb part[2 * kRadix28MostLimbs];
    while (--parts != 0) {
      x += count;
      z += count;
      m -= count;
      count = m / parts;
      kProduct(part, x, count, y, n);
      Limb carry = Rows::Add(z, z, part, n);
      for (size_t i = n; i < n + count; ++i) {
        z[i] = part[i] + carry;
        carry = z[i] < carry;
      }
    }
  }

  static void Square(Limb* z, const Limb* x, size_t n) {
    if (n < kLeastSquare || n > kRadix28MostLimbs) {
      Blocks::Square(z, x, n);
    } else {
      kProduct(z, x, n, x, n);
    }
  }
};

template <typename Rows, typename Blocks>
constexpr LimbKernels TableOf() {
  return {Rows::Add,        Rows::Subtract, Rows::Mul1,     Rows::MulAdd1,  Rows::MulSub1,
          Blocks::Multiply, Blocks::Square, Blocks::Reduce, NoMontgomeryX86};
}

}  // namespace

constexpr LimbKernels kMulKernels = TableOf<MulRows, MulBlocks>();
constexpr LimbKernels kMulSse2Kernels =
    TableOf<MulRows, VectorBlocks<MulRows, MulBlocks, MultiplyRadix28Sse2, 10, 20>>();
constexpr LimbKernels kMulxKernels = TableOf<MulxRows, X86Blocks<MulxRows>>();
constexpr LimbKernels kMulxAvx2Kernels =
    TableOf<MulxRows, VectorBlocks<MulxRows, X86Blocks<MulxRows>, MultiplyRadix28Avx2, 10, 16>>();

}  // namespace mirolta

#endif
