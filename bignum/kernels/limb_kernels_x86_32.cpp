// Loops over limbs for 32-bit x86 in general registers, by eight and four limbs: compilers keep neither a carry
// in its flag nor the halves of a product in their registers. Seven registers are free, six in code that is not
// optimised, so that counts are kept outside.
#include "limb_kernel_tables.h"
#include "operand_scanning.h"

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

  static LimbPair Square(Limb x) { return WideProducts::MulAdd(x, x, 0, 0); }

  // The last limbs of rows, after a carry.
  static Limb SetLast(Limb* z, const Limb* x, size_t n, Limb y, Limb carry) {
    for (; n != 0; --n) {
      const LimbPair p = WideProducts::MulAdd(*x++, y, carry, 0);
      *z++ = p.low;
      carry = p.high;
    }
    return carry;
  }
  static Limb AddLast(Limb* z, const Limb* x, size_t n, Limb y, Limb carry) {
    for (; n != 0; --n, ++z) {
      const LimbPair p = WideProducts::MulAdd(*x++, y, carry, *z);
      *z = p.low;
      carry = p.high;
    }
    return carry;
  }
  static Limb SubtractLast(Limb* z, const Limb* x, size_t n, Limb y, Limb carry) {
    for (; n != 0; --n, ++z) {
      const LimbPair p = WideProducts::MulAdd(*x++, y, carry, 0);
      carry = static_cast<Limb>(p.high + (*z < p.low));
      *z -= p.low;
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

struct MulRows : FlagSums {
  // A product alone has nothing to add to, and no carry from there.
  static Limb Mul1(Limb* z, const Limb* x, size_t n, Limb y) {
    Limb carry = 0, at;
    for (; n >= 8; n -= 8, z += 8, x += 8)
      MIROLTA_MUL(MIROLTA_MUL_8("movl", "addl") "movl %[at], 28(%[z])\n");
    for (; n >= 4; n -= 4, z += 4, x += 4)
      MIROLTA_MUL(MIROLTA_MUL_4("movl", "addl") "movl %[at], 12(%[z])\n");
    return SetLast(z, x, n, y, carry);
  }

  static Limb MulAdd1(Limb* z, const Limb* x, size_t n, Limb y) {
    Limb carry = 0, at;
    for (; n >= 8; n -= 8, z += 8, x += 8)
      MIROLTA_MUL(MIROLTA_MUL_8("addl", "adcl") MIROLTA_MUL_END("28", "addl"));
    for (; n >= 4; n -= 4, z += 4, x += 4)
      MIROLTA_MUL(MIROLTA_MUL_4("addl", "adcl") MIROLTA_MUL_END("12", "addl"));
    return AddLast(z, x, n, y, carry);
  }

  static Limb MulSub1(Limb* z, const Limb* x, size_t n, Limb y) {
    Limb carry = 0, at;
    for (; n >= 8; n -= 8, z += 8, x += 8)
      MIROLTA_MUL(MIROLTA_MUL_8("subl", "adcl") MIROLTA_MUL_END("28", "subl"));
    for (; n >= 4; n -= 4, z += 4, x += 4)
      MIROLTA_MUL(MIROLTA_MUL_4("subl", "adcl") MIROLTA_MUL_END("12", "subl"));
    return SubtractLast(z, x, n, y, carry);
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

struct MulxRows : FlagSums {
  static Limb Mul1(Limb* z, const Limb* x, size_t n, Limb y) {
    Limb carry = 0, low, other;
    for (; n >= 8; n -= 8, z += 8, x += 8) MIROLTA_MULX_LIMBS(MIROLTA_MULX_8, MIROLTA_MULX_SET);
    for (; n >= 4; n -= 4, z += 4, x += 4) MIROLTA_MULX_LIMBS(MIROLTA_MULX_4, MIROLTA_MULX_SET);
    return SetLast(z, x, n, y, carry);
  }

  static Limb MulAdd1(Limb* z, const Limb* x, size_t n, Limb y) {
    Limb carry = 0, low, other;
    for (; n >= 8; n -= 8, z += 8, x += 8) MIROLTA_MULX_LIMBS(MIROLTA_MULX_8, MIROLTA_MULX_ADD);
    for (; n >= 4; n -= 4, z += 4, x += 4) MIROLTA_MULX_LIMBS(MIROLTA_MULX_4, MIROLTA_MULX_ADD);
    return AddLast(z, x, n, y, carry);
  }

  static Limb MulSub1(Limb* z, const Limb* x, size_t n, Limb y) {
    Limb carry = 0, low, other;
    for (; n >= 8; n -= 8, z += 8, x += 8)
      MIROLTA_MULX_LIMBS(MIROLTA_MULX_8, MIROLTA_MULX_SUBTRACT);
    for (; n >= 4; n -= 4, z += 4, x += 4)
      MIROLTA_MULX_LIMBS(MIROLTA_MULX_4, MIROLTA_MULX_SUBTRACT);
    return SubtractLast(z, x, n, y, carry);
  }
};

bool NoMontgomeryX86(Limb*, const Limb*, const Limb*, const Limb*, size_t, Limb) {
  return false;
}

template <typename Rows>
constexpr LimbKernels TableOf() {
  using Blocks = OperandScanningLoops<Rows>;
  return {Rows::Add,        Rows::Subtract, Rows::Mul1,     Rows::MulAdd1,  Rows::MulSub1,
          Blocks::Multiply, Blocks::Square, Blocks::Reduce, NoMontgomeryX86};
}

}  // namespace

constexpr LimbKernels kMulKernels = TableOf<MulRows>();
constexpr LimbKernels kMulxKernels = TableOf<MulxRows>();

}  // namespace mirolta

#endif
