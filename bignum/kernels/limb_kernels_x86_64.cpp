#include "limb_kernel_tables.h"
#include "limb_loops.h"

#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)

  #include <immintrin.h>

namespace mirolta {

namespace {

// One limb of a row: product low half plus the high half of the limb before (carry flag's chain)
// plus the old limb (overflow flag's chain). 'in' holds that high half, 'out' receives the new one.
  #define MIROLTA_ROW_STEP(offset, in, out)       \
    "mulx " offset "(%[x]), %[low], %[" out "]\n" \
    "adcx %[" in "], %[low]\n"                    \
    "adox " offset "(%[z]), %[low]\n"             \
    "movq %[low], " offset "(%[z])\n"

// The same for a difference: z - p is the complement of (complement of z) + p, and 'not' leaves
// both flags alone.
  #define MIROLTA_ROW_STEP_SUB(offset, in, out)   \
    "mulx " offset "(%[x]), %[low], %[" out "]\n" \
    "movq " offset "(%[z]), %[old]\n"             \
    "notq %[old]\n"                               \
    "adcx %[" in "], %[low]\n"                    \
    "adox %[old], %[low]\n"                       \
    "notq %[low]\n"                               \
    "movq %[low], " offset "(%[z])\n"

// The same for a product alone.
  #define MIROLTA_ROW_STEP_MUL(offset, in, out)   \
    "mulx " offset "(%[x]), %[low], %[" out "]\n" \
    "adcq %[" in "], %[low]\n"                    \
    "movq %[low], " offset "(%[z])\n"

// Advances by four limbs without touching either flag.
  #define MIROLTA_ROW_LOOP_END      \
    "leaq 32(%[x]), %[x]\n"         \
    "leaq 32(%[z]), %[z]\n"         \
    "leaq -1(%[count]), %[count]\n" \
    "jrcxz 2f\n"                    \
    "jmp 1b\n"                      \
    "2:\n"

struct AdxRows {
  static Limb Add(Limb* z, const Limb* x, const Limb* y, size_t n) {
    unsigned char carry = 0;
    size_t i = 0;
    for (; i + 4 <= n; i += 4) {
      unsigned long long s0, s1, s2, s3;
      carry = _addcarry_u64(carry, x[i], y[i], &s0);
      carry = _addcarry_u64(carry, x[i + 1], y[i + 1], &s1);
      carry = _addcarry_u64(carry, x[i + 2], y[i + 2], &s2);
      carry = _addcarry_u64(carry, x[i + 3], y[i + 3], &s3);
      z[i] = s0;
      z[i + 1] = s1;
      z[i + 2] = s2;
      z[i + 3] = s3;
    }
    for (; i < n; ++i) {
      unsigned long long s;
      carry = _addcarry_u64(carry, x[i], y[i], &s);
      z[i] = s;
    }
    return carry;
  }

  static Limb Subtract(Limb* z, const Limb* x, const Limb* y, size_t n) {
    unsigned char borrow = 0;
    size_t i = 0;
    for (; i + 4 <= n; i += 4) {
      unsigned long long s0, s1, s2, s3;
      borrow = _subborrow_u64(borrow, x[i], y[i], &s0);
      borrow = _subborrow_u64(borrow, x[i + 1], y[i + 1], &s1);
      borrow = _subborrow_u64(borrow, x[i + 2], y[i + 2], &s2);
      borrow = _subborrow_u64(borrow, x[i + 3], y[i + 3], &s3);
      z[i] = s0;
      z[i + 1] = s1;
      z[i + 2] = s2;
      z[i + 3] = s3;
    }
    for (; i < n; ++i) {
      unsigned long long s;
      borrow = _subborrow_u64(borrow, x[i], y[i], &s);
      z[i] = s;
    }
    return borrow;
  }

  static inline __attribute__((always_inline)) Limb Mul1(Limb* z, const Limb* x, size_t n, Limb y) {
    Limb carry = 0;
    for (; n % 4 != 0; --n) {
      const LimbPair p = WideProducts::MulAdd(*x++, y, carry, 0);
      *z++ = p.low;
      carry = p.high;
    }
    size_t count = n / 4;
    if (count == 0) return carry;
    Limb low, other;
    __asm__ volatile(
        "testq %[low], %[low]\n"  // clears the carry flag
        "1:\n"                                             //
        MIROLTA_ROW_STEP_MUL("0", "carry", "other")        //
        MIROLTA_ROW_STEP_MUL("8", "other", "carry")        //
        MIROLTA_ROW_STEP_MUL("16", "carry", "other")       //
        MIROLTA_ROW_STEP_MUL("24", "other", "carry")       //
        MIROLTA_ROW_LOOP_END "adcq $0, %[carry]\n"
        : [z] "+r"(z), [x] "+r"(x), [count] "+c"(count), [carry] "+r"(carry), [low] "=&r"(low),
          [other] "=&r"(other)
        : "d"(y)
        : "cc", "memory");
    return carry;
  }

  static inline __attribute__((always_inline)) Limb MulAdd1(Limb* z, const Limb* x, size_t n,
                                                            Limb y) {
    Limb carry = 0;
    for (; n % 4 != 0; --n) {
      const LimbPair p = WideProducts::MulAdd(*x++, y, carry, *z);
      *z++ = p.low;
      carry = p.high;
    }
    size_t count = n / 4;
    if (count == 0) return carry;
    Limb low, other;
    __asm__ volatile(
        "xorl %k[low], %k[low]\n"  // clears both flags
        "1:\n"                                         //
        MIROLTA_ROW_STEP("0", "carry", "other")        //
        MIROLTA_ROW_STEP("8", "other", "carry")        //
        MIROLTA_ROW_STEP("16", "carry", "other")       //
        MIROLTA_ROW_STEP("24", "other", "carry")       //
        MIROLTA_ROW_LOOP_END
        "movl $0, %k[low]\n"
        "adcx %[low], %[carry]\n"
        "adox %[low], %[carry]\n"
        : [z] "+r"(z), [x] "+r"(x), [count] "+c"(count), [carry] "+r"(carry), [low] "=&r"(low),
          [other] "=&r"(other)
        : "d"(y)
        : "cc", "memory");
    return carry;
  }

  static inline __attribute__((always_inline)) Limb MulSub1(Limb* z, const Limb* x, size_t n,
                                                            Limb y) {
    Limb carry = 0;
    for (; n % 4 != 0; --n) {
      const LimbPair p = WideProducts::MulAdd(*x++, y, carry, 0);
      carry = p.high + (*z < p.low);
      *z++ -= p.low;
    }
    size_t count = n / 4;
    if (count == 0) return carry;
    Limb low, other, old;
    __asm__ volatile(
        "xorl %k[low], %k[low]\n"
        "1:\n"                                             //
        MIROLTA_ROW_STEP_SUB("0", "carry", "other")        //
        MIROLTA_ROW_STEP_SUB("8", "other", "carry")        //
        MIROLTA_ROW_STEP_SUB("16", "carry", "other")       //
        MIROLTA_ROW_STEP_SUB("24", "other", "carry")       //
        MIROLTA_ROW_LOOP_END
        "movl $0, %k[low]\n"
        "adcx %[low], %[carry]\n"
        "adox %[low], %[carry]\n"
        : [z] "+r"(z), [x] "+r"(x), [count] "+c"(count), [carry] "+r"(carry), [low] "=&r"(low),
          [other] "=&r"(other), [old] "=&r"(old)
        : "d"(y)
        : "cc", "memory");
    return carry;
  }

  static LimbPair Square(Limb x) { return WideProducts::MulAdd(x, x, 0, 0); }
};

using AdxBlocks = BlockLoops<AdxRows>;

}  // namespace

constexpr LimbKernels kMulxAdxKernels = {
    AdxRows::Add,     AdxRows::Subtract,   AdxRows::Mul1,     AdxRows::MulAdd1,
    AdxRows::MulSub1, AdxBlocks::Multiply, AdxBlocks::Square, AdxBlocks::Reduce};

}  // namespace mirolta

#endif
