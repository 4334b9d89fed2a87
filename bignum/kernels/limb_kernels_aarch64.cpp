#include "limb_kernel_tables.h"
#include "operand_scanning.h"

#if MIROLTA_KERNELS_FOR(AARCH64)

  #include "umulh_rows.h"

namespace mirolta {

namespace {

// clang-format off
// A sum or difference: four limbs at a time, then up to three more. Loads, stores and the loop's
// counting keep the carry flag, which a comparison of `carry` with a constant sets first.
  #define MIROLTA_SUM(least, instruction, end)       \
    "cmp %[carry], #" least "\n"                     \
    "cbz %[n], 2f\n"                                 \
    "1:\n"                                           \
    "ldp x9, x10, [%[x]], #16\n"                     \
    "ldp x11, x12, [%[x]], #16\n"                    \
    "ldp x13, x14, [%[y]], #16\n"                    \
    "ldp x15, x16, [%[y]], #16\n"                    \
    instruction " x9, x9, x13\n"                     \
    instruction " x10, x10, x14\n"                   \
    instruction " x11, x11, x15\n"                   \
    instruction " x12, x12, x16\n"                   \
    "stp x9, x10, [%[z]], #16\n"                     \
    "stp x11, x12, [%[z]], #16\n"                    \
    "sub %[n], %[n], #1\n"                           \
    "cbnz %[n], 1b\n"                                \
    "2:\n"                                           \
    "cbz %[tail], 4f\n"                              \
    "3:\n"                                           \
    "ldr x9, [%[x]], #8\n"                           \
    "ldr x13, [%[y]], #8\n"                          \
    instruction " x9, x9, x13\n"                     \
    "str x9, [%[z]], #8\n"                           \
    "sub %[tail], %[tail], #1\n"                     \
    "cbnz %[tail], 3b\n"                             \
    "4:\n"                                           \
    "cset %[carry], " end "\n"

// The products of four limbs of x by y, in x9 to x12, with the limb carried in; the limb above
// becomes the next one carried.
  #define MIROLTA_FOUR_PRODUCTS   \
    "ldp x9, x10, [%[x]], #16\n"  \
    "ldp x11, x12, [%[x]], #16\n" \
    "umulh x13, x9, %[y]\n"       \
    "mul x9, x9, %[y]\n"          \
    "umulh x14, x10, %[y]\n"      \
    "mul x10, x10, %[y]\n"        \
    "umulh x15, x11, %[y]\n"      \
    "mul x11, x11, %[y]\n"        \
    "umulh x16, x12, %[y]\n"      \
    "mul x12, x12, %[y]\n"        \
    "adds x9, x9, %[carry]\n"     \
    "adcs x10, x10, x13\n"        \
    "adcs x11, x11, x14\n"        \
    "adcs x12, x12, x15\n"        \
    "cinc %[carry], x16, cs\n"
  #define MIROLTA_ONE_PRODUCT \
    "ldr x9, [%[x]], #8\n"    \
    "umulh x13, x9, %[y]\n"   \
    "mul x9, x9, %[y]\n"      \
    "adds x9, x9, %[carry]\n" \
    "cinc %[carry], x13, cs\n"

// Adds the products to z, or subtracts them. The limb above the sum of a product and a carry is
// below B - 1, or the sum's low limb is zero and adds no carry.
  #define MIROLTA_COMBINE_FOUR(first, next, carries) \
    "ldp x13, x14, [%[z]]\n"                         \
    "ldp x15, x16, [%[z], #16]\n"                    \
    first " x9, x13, x9\n"                           \
    next " x10, x14, x10\n"                          \
    next " x11, x15, x11\n"                          \
    next " x12, x16, x12\n"                          \
    "cinc %[carry], %[carry], " carries "\n"
  #define MIROLTA_COMBINE_ONE(first, carries)        \
    "ldr x13, [%[z]]\n"                              \
    first " x9, x13, x9\n"                           \
    "cinc %[carry], %[carry], " carries "\n"

  #define MIROLTA_PRODUCT_ROW(four, one)             \
    "cbz %[n], 2f\n"                                 \
    "1:\n"                                           \
    MIROLTA_FOUR_PRODUCTS                            \
    four                                             \
    "stp x9, x10, [%[z]], #16\n"                     \
    "stp x11, x12, [%[z]], #16\n"                    \
    "sub %[n], %[n], #1\n"                           \
    "cbnz %[n], 1b\n"                                \
    "2:\n"                                           \
    "cbz %[tail], 4f\n"                              \
    "3:\n"                                           \
    MIROLTA_ONE_PRODUCT                              \
    one                                              \
    "str x9, [%[z]], #8\n"                           \
    "sub %[tail], %[tail], #1\n"                     \
    "cbnz %[tail], 3b\n"                             \
    "4:\n"
// clang-format on

  #define MIROLTA_TEMPORARIES "x9", "x10", "x11", "x12", "x13", "x14", "x15", "x16", "cc", "memory"

struct UmulhRows {
  static Limb Add(Limb* z, const Limb* x, const Limb* y, size_t n) {
    return AddWithCarry(z, x, y, n, 0);
  }

  // z := x + y + carry, returns the carry.
  // Shapes: x[n], y[n], z[n], carry <= 1.
  static Limb AddWithCarry(Limb* z, const Limb* x, const Limb* y, size_t n, Limb carry) {
    size_t count = n / 4;
    size_t tail = n % 4;
    __asm__ volatile(MIROLTA_SUM("1", "adcs", "cs")
                     : [z] "+r"(z), [x] "+r"(x), [y] "+r"(y), [n] "+r"(count), [tail] "+r"(tail),
                       [carry] "+r"(carry)
                     :
                     : MIROLTA_TEMPORARIES);
    return carry;
  }

  static Limb Subtract(Limb* z, const Limb* x, const Limb* y, size_t n) {
    size_t count = n / 4;
    size_t tail = n % 4;
    Limb borrow = 0;
    __asm__ volatile(MIROLTA_SUM("0", "sbcs", "cc")
                     : [z] "+r"(z), [x] "+r"(x), [y] "+r"(y), [n] "+r"(count), [tail] "+r"(tail),
                       [carry] "+r"(borrow)
                     :
                     : MIROLTA_TEMPORARIES);
    return borrow;
  }

  static Limb Mul1(Limb* z, const Limb* x, size_t n, Limb y) {
    size_t count = n / 4;
    size_t tail = n % 4;
    Limb carry = 0;
    __asm__ volatile(
        MIROLTA_PRODUCT_ROW("", "")
        : [z] "+r"(z), [x] "+r"(x), [n] "+r"(count), [tail] "+r"(tail), [carry] "+&r"(carry)
        : [y] "r"(y)
        : MIROLTA_TEMPORARIES);
    return carry;
  }

  static Limb MulAdd1(Limb* z, const Limb* x, size_t n, Limb y) {
    size_t count = n / 4;
    size_t tail = n % 4;
    Limb carry = 0;
    __asm__ volatile(
        MIROLTA_PRODUCT_ROW(MIROLTA_COMBINE_FOUR("adds", "adcs", "cs"),
                            MIROLTA_COMBINE_ONE("adds", "cs"))
        : [z] "+r"(z), [x] "+r"(x), [n] "+r"(count), [tail] "+r"(tail), [carry] "+&r"(carry)
        : [y] "r"(y)
        : MIROLTA_TEMPORARIES);
    return carry;
  }

  static Limb MulSub1(Limb* z, const Limb* x, size_t n, Limb y) {
    size_t count = n / 4;
    size_t tail = n % 4;
    Limb carry = 0;
    __asm__ volatile(
        MIROLTA_PRODUCT_ROW(MIROLTA_COMBINE_FOUR("subs", "sbcs", "cc"),
                            MIROLTA_COMBINE_ONE("subs", "cc"))
        : [z] "+r"(z), [x] "+r"(x), [n] "+r"(count), [tail] "+r"(tail), [carry] "+&r"(carry)
        : [y] "r"(y)
        : MIROLTA_TEMPORARIES);
    return carry;
  }

  static LimbPair Square(Limb x) { return WideProducts::MulAdd(x, x, 0, 0); }
};

// AddBlock: z[m + k] := t + x[m] * y[k], plus z[m] if kAdds, for the k limbs of y and t.
template <bool kAdds>
inline __attribute__((always_inline)) void AddBlock(Limb* z, FourLimbs t, const Limb* x, size_t m,
                                                    const FourLimbs& y) {
  for (; m != 0; --m, ++x, ++z) *z = AddRow(t, y, *x, kAdds ? *z : 0);
  StoreFour(z, t);
}
template <bool kAdds>
inline __attribute__((always_inline)) void AddBlock(Limb* z, FourLimbs t, FourLimbs u,
                                                    const Limb* x, size_t m, const FourLimbs& y,
                                                    const FourLimbs& v) {
  for (; m != 0; --m, ++x, ++z) *z = AddRow(t, u, y, v, *x, kAdds ? *z : 0);
  StoreFour(z, t);
  StoreFour(z + 4, u);
}

struct UmulhBlocks : OperandScanningLoops<UmulhRows> {
  static void Multiply(Limb* z, const Limb* x, size_t m, const Limb* y, size_t n) {
    size_t i = 0;
    if (n >= 8) {
      AddBlock<false>(z, {}, {}, x, m, LoadFour(y), LoadFour(y + 4));
      for (i = 8; i + 8 <= n; i += 8) {
        AddBlock<true>(z + i, {}, {}, x, m, LoadFour(y + i), LoadFour(y + i + 4));
      }
    } else if (n >= 4) {
      AddBlock<false>(z, {}, x, m, LoadFour(y));
      i = 4;
    } else {
      z[m] = UmulhRows::Mul1(z, x, m, y[0]);
      i = 1;
    }
    if (i + 4 <= n) {
      AddBlock<true>(z + i, {}, x, m, LoadFour(y + i));
      i += 4;
    }
    for (; i < n; ++i) z[m + i] = UmulhRows::MulAdd1(z + i, x, m, y[i]);
  }

  // Products of limbs in different blocks of eight are computed once and doubled, then the squares of
  // the blocks are added.
  static void Square(Limb* z, const Limb* x, size_t n) {
    if (n < 4) return OperandScanningLoops<UmulhRows>::Square(z, x, n);
    if (n <= 8) return Multiply(z, x, n, x, n);
    AddBlock<false>(z + 8, {}, {}, x + 8, n - 8, LoadFour(x), LoadFour(x + 4));
    size_t i = 8;
    for (; i + 8 < n; i += 8) {
      AddBlock<true>(z + 2 * i + 8, {}, {}, x + i + 8, n - i - 8, LoadFour(x + i),
                     LoadFour(x + i + 4));
    }
    // The last block has one to eight limbs. Nothing is above the products of the others.
    const size_t last = n - i;
    for (size_t j = 0; j < 8; ++j) z[j] = 0;
    for (size_t j = 2 * n - last; j < 2 * n; ++j) z[j] = 0;
    UmulhRows::Add(z + 8, z + 8, z + 8, 2 * n - 8);
    Limb square[16];
    Limb carry = 0;
    for (i = 0; i + 8 < n; i += 8) {
      AddBlock<false>(square, {}, {}, x + i, 8, LoadFour(x + i), LoadFour(x + i + 4));
      carry = UmulhRows::AddWithCarry(z + 2 * i, z + 2 * i, square, 16, carry);
    }
    Square(square, x + i, last);
    UmulhRows::AddWithCarry(z + 2 * i, z + 2 * i, square, 2 * last, carry);
  }

  // The multipliers of m that make limbs zero are found in blocks, whose rows then go on over the
  // other limbs of m. What a block carries beyond them is stored in place of its multipliers. One
  // addition at the end adds all carries.
  static void Reduce(Limb* z, Limb* t, const Limb* m, size_t n, Limb inverse) {
    size_t i = 0;
    for (; i + 8 <= n; i += 8) ReduceBlockOf8(t + i, m, n, inverse);
    if (i + 4 <= n) {
      ReduceBlockOf4(t + i, m, n, inverse);
      i += 4;
    }
    for (; i < n; ++i) {
      t[i] = UmulhRows::MulAdd1(t + i, m, n, static_cast<Limb>(t[i] * inverse));
    }
    StoreReduced(z, t, UmulhRows::Add(z, t + n, t, n), m, n);
  }

  static void ReduceBlockOf4(Limb* t, const Limb* m, size_t n, Limb inverse) {
    const FourLimbs y = LoadFour(m);
    FourLimbs sum = LoadFour(t);
    for (size_t i = 0; i < 4; ++i) {
      t[i] = sum.a * inverse;
      CancelRow(sum, y, t[i]);
    }
    const FourLimbs multipliers = LoadFour(t);
    Limb* z = t + 4;
    for (size_t i = 4; i < n; ++i, ++z) *z = AddRow(sum, multipliers, m[i], *z);
    StoreFour(t, sum);
  }

  static void ReduceBlockOf8(Limb* t, const Limb* m, size_t n, Limb inverse) {
    const FourLimbs y = LoadFour(m);
    const FourLimbs v = LoadFour(m + 4);
    FourLimbs sum = LoadFour(t);
    FourLimbs above = LoadFour(t + 4);
    for (size_t i = 0; i < 8; ++i) {
      t[i] = sum.a * inverse;
      CancelRow(sum, above, y, v, t[i]);
    }
    const FourLimbs multipliers = LoadFour(t);
    const FourLimbs others = LoadFour(t + 4);
    Limb* z = t + 8;
    for (size_t i = 8; i < n; ++i, ++z) {
      *z = AddRow(sum, above, multipliers, others, m[i], *z);
    }
    StoreFour(t, sum);
    StoreFour(t + 4, above);
  }

  // For the primes of 512-bit and 1,024-bit moduli.
  static bool Montgomery(Limb* z, const Limb* x, const Limb* y, const Limb* m, size_t n,
                         Limb inverse) {
    if (n != 4 && n != 8) return false;
    Limb t[16];
    Multiply(t, x, n, y, n);
    Reduce(z, t, m, n, inverse);
    return true;
  }
};

}  // namespace

constexpr LimbKernels kUmulhKernels = {
    UmulhRows::Add,      UmulhRows::Subtract, UmulhRows::Mul1,
    UmulhRows::MulAdd1,  UmulhRows::MulSub1,  UmulhBlocks::Multiply,
    UmulhBlocks::Square, UmulhBlocks::Reduce, UmulhBlocks::Montgomery};

}  // namespace mirolta

#endif
