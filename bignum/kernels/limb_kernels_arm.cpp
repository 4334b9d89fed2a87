// Loops over limbs for 32-bit ARM, also in Thumb-2: blocks of four limbs, loaded and stored by one
// instruction each. Products are UMLAL's and, with ARMv6, UMAAL's.
#include "limb_kernel_tables.h"
#include "operand_scanning.h"

#if MIROLTA_KERNELS_FOR(ARM)

namespace mirolta {

namespace {

  // The registers of a block. The compiler cannot choose them, because load multiple takes them in
  // ascending order. The frame pointers of both states, r7 and r11, are not among them.
  #define MIROLTA_CLOBBERED "r4", "r5", "r6", "r8", "r9", "r10", "cc", "memory"

constexpr size_t kBlockLimbs = 4;

// Blocks: the limbs of a row from the first whole block on. Those before it are handled one by one.
// The loops end at x == end, which TEQ compares without a change of the carry flag.
struct Blocks {
  Limb* z;
  const Limb* x;
  const Limb* end;

  Blocks(Limb* to, const Limb* from, size_t n)
      : z(to + n % kBlockLimbs), x(from + n % kBlockLimbs), end(from + n) {}
  bool IsEmpty() const { return x == end; }
};

struct ArmRows : RowLoops<WideProducts> {
  using Single = RowLoops<WideProducts>;

  static Limb Add(Limb* z, const Limb* x, const Limb* y, size_t n) {
    Limb carry = Single::Add(z, x, y, n % kBlockLimbs);
    Blocks blocks(z, x, n);
    if (blocks.IsEmpty()) return carry;
    y += n % kBlockLimbs;
    __asm__ volatile(
        "cmp %[carry], #1\n"
        "1:\n"
        "ldmia %[x]!, {r4, r5}\n"
        "ldmia %[y]!, {r6, r8, r9, r10}\n"
        "adcs r6, r6, r4\n"
        "adcs r8, r8, r5\n"
        "ldmia %[x]!, {r4, r5}\n"
        "adcs r9, r9, r4\n"
        "adcs r10, r10, r5\n"
        "stmia %[z]!, {r6, r8, r9, r10}\n"
        "teq %[x], %[end]\n"
        "bne 1b\n"
        "mov %[carry], #0\n"
        "adc %[carry], %[carry], #0"
        : [carry] "+r"(carry), [x] "+r"(blocks.x), [y] "+r"(y), [z] "+r"(blocks.z)
        : [end] "r"(blocks.end)
        : MIROLTA_CLOBBERED);
    return carry;
  }

  static Limb Subtract(Limb* z, const Limb* x, const Limb* y, size_t n) {
    Limb borrow = Single::Subtract(z, x, y, n % kBlockLimbs);
    Blocks blocks(z, x, n);
    if (blocks.IsEmpty()) return borrow;
    y += n % kBlockLimbs;
    __asm__ volatile(
        "rsbs %[borrow], %[borrow], #0\n"
        "1:\n"
        "ldmia %[x]!, {r4, r5}\n"
        "ldmia %[y]!, {r6, r8, r9, r10}\n"
        "sbcs r6, r4, r6\n"
        "sbcs r8, r5, r8\n"
        "ldmia %[x]!, {r4, r5}\n"
        "sbcs r9, r4, r9\n"
        "sbcs r10, r5, r10\n"
        "stmia %[z]!, {r6, r8, r9, r10}\n"
        "teq %[x], %[end]\n"
        "bne 1b\n"
        "sbc %[borrow], %[borrow], %[borrow]\n"
        "rsb %[borrow], %[borrow], #0"
        : [borrow] "+r"(borrow), [x] "+r"(blocks.x), [y] "+r"(y), [z] "+r"(blocks.z)
        : [end] "r"(blocks.end)
        : MIROLTA_CLOBBERED);
    return borrow;
  }

  static Limb Mul1(Limb* z, const Limb* x, size_t n, Limb y) {
    Limb carry = Single::Mul1(z, x, n % kBlockLimbs, y);
    Blocks blocks(z, x, n);
    if (blocks.IsEmpty()) return carry;
    __asm__ volatile(
        "1:\n"
        "ldmia %[x]!, {r4, r5}\n"
        "mov r6, %[c]\n"
        "mov r8, #0\n"
        "umlal r6, r8, r4, %[y]\n"
        "mov r9, #0\n"
        "umlal r8, r9, r5, %[y]\n"
        "ldmia %[x]!, {r4, r5}\n"
        "mov r10, #0\n"
        "umlal r9, r10, r4, %[y]\n"
        "mov %[c], #0\n"
        "umlal r10, %[c], r5, %[y]\n"
        "stmia %[z]!, {r6, r8, r9, r10}\n"
        "teq %[x], %[end]\n"
        "bne 1b"
        : [c] "+r"(carry), [x] "+r"(blocks.x), [z] "+r"(blocks.z)
        : [y] "r"(y), [end] "r"(blocks.end)
        : MIROLTA_CLOBBERED);
    return carry;
  }

  #if MIROLTA_HAS_UMAAL
  static Limb MulAdd1(Limb* z, const Limb* x, size_t n, Limb y) {
    Limb carry = Single::MulAdd1(z, x, n % kBlockLimbs, y);
    Blocks blocks(z, x, n);
    if (blocks.IsEmpty()) return carry;
    __asm__ volatile(
        "1:\n"
        "ldmia %[x]!, {r4, r5}\n"
        "ldmia %[z], {r6, r8, r9, r10}\n"
        "umaal r6, %[c], r4, %[y]\n"
        "umaal r8, %[c], r5, %[y]\n"
        "ldmia %[x]!, {r4, r5}\n"
        "umaal r9, %[c], r4, %[y]\n"
        "umaal r10, %[c], r5, %[y]\n"
        "stmia %[z]!, {r6, r8, r9, r10}\n"
        "teq %[x], %[end]\n"
        "bne 1b"
        : [c] "+r"(carry), [x] "+r"(blocks.x), [z] "+r"(blocks.z)
        : [y] "r"(y), [end] "r"(blocks.end)
        : MIROLTA_CLOBBERED);
    return carry;
  }
  #else
  static Limb MulAdd1(Limb* z, const Limb* x, size_t n, Limb y) {
    Limb carry = Single::MulAdd1(z, x, n % kBlockLimbs, y);
    Blocks blocks(z, x, n);
    if (blocks.IsEmpty()) return carry;
    Limb next;
    __asm__ volatile(
        "adds %[c], %[c], #0\n"
        "1:\n"
        "ldmia %[x]!, {r4, r5}\n"
        "ldmia %[z], {r6, r8, r9, r10}\n"
        "mov %[h], #0\n"
        "umlal %[c], %[h], r4, %[y]\n"
        "adcs r6, r6, %[c]\n"
        "mov %[c], #0\n"
        "umlal %[h], %[c], r5, %[y]\n"
        "adcs r8, r8, %[h]\n"
        "ldmia %[x]!, {r4, r5}\n"
        "mov %[h], #0\n"
        "umlal %[c], %[h], r4, %[y]\n"
        "adcs r9, r9, %[c]\n"
        "mov %[c], #0\n"
        "umlal %[h], %[c], r5, %[y]\n"
        "adcs r10, r10, %[h]\n"
        "stmia %[z]!, {r6, r8, r9, r10}\n"
        "teq %[x], %[end]\n"
        "bne 1b\n"
        "adc %[c], %[c], #0"
        : [c] "+r"(carry), [h] "=&r"(next), [x] "+r"(blocks.x), [z] "+r"(blocks.z)
        : [y] "r"(y), [end] "r"(blocks.end)
        : MIROLTA_CLOBBERED);
    return carry;
  }
  #endif

  static Limb MulSub1(Limb* z, const Limb* x, size_t n, Limb y) {
    Limb carry = Single::MulSub1(z, x, n % kBlockLimbs, y);
    Blocks blocks(z, x, n);
    if (blocks.IsEmpty()) return carry;
    Limb next;
    __asm__ volatile(
        "cmp %[c], %[c]\n"
        "1:\n"
        "ldmia %[x]!, {r4, r5}\n"
        "ldmia %[z], {r6, r8, r9, r10}\n"
        "mov %[h], #0\n"
        "umlal %[c], %[h], r4, %[y]\n"
        "sbcs r6, r6, %[c]\n"
        "mov %[c], #0\n"
        "umlal %[h], %[c], r5, %[y]\n"
        "sbcs r8, r8, %[h]\n"
        "ldmia %[x]!, {r4, r5}\n"
        "mov %[h], #0\n"
        "umlal %[c], %[h], r4, %[y]\n"
        "sbcs r9, r9, %[c]\n"
        "mov %[c], #0\n"
        "umlal %[h], %[c], r5, %[y]\n"
        "sbcs r10, r10, %[h]\n"
        "stmia %[z]!, {r6, r8, r9, r10}\n"
        "teq %[x], %[end]\n"
        "bne 1b\n"
        "sbc %[h], %[h], %[h]\n"
        "sub %[c], %[c], %[h]"
        : [c] "+r"(carry), [h] "=&r"(next), [x] "+r"(blocks.x), [z] "+r"(blocks.z)
        : [y] "r"(y), [end] "r"(blocks.end)
        : MIROLTA_CLOBBERED);
    return carry;
  }
};

struct ArmLoops : OperandScanningLoops<ArmRows> {
  // Products of different limbs are computed once and doubled, then the squares are added.
  static void Square(Limb* z, const Limb* x, size_t n) {
    z[0] = 0;
    z[2 * n - 1] = 0;
    if (n > 1) {
      z[n] = ArmRows::Mul1(z + 1, x + 1, n - 1, x[0]);
      for (size_t i = 1; i + 1 < n; ++i) {
        z[n + i] = ArmRows::MulAdd1(z + 2 * i + 1, x + i + 1, n - 1 - i, x[i]);
      }
    }
    (void)ArmRows::Add(z, z, z, 2 * n);
    AddSquares(z, x, n);
  }

 private:
  // z := z + the squares of x[0], x[1], ..., each two limbs above the one before.
  // Shapes: x[n], z[2n].
  static void AddSquares(Limb* z, const Limb* x, size_t n) {
    Limb carry = 0;
    if (n % 2 != 0) {
      const LimbPair square = WideProducts::MulAdd(x[0], x[0], z[0], 0);
      const DoubleLimb high = static_cast<DoubleLimb>(z[1]) + square.high;
      z[0] = square.low;
      z[1] = static_cast<Limb>(high);
      carry = static_cast<Limb>(high >> kLimbBits);
      z += 2;
      ++x;
    }
    const Limb* const end = x + n / 2 * 2;
    if (x == end) return;
    Limb low, high;
    __asm__ volatile(
        "cmp %[carry], #1\n"
        "1:\n"
        "ldmia %[x]!, {r4, r5}\n"
        "ldmia %[z], {r6, r8, r9, r10}\n"
        "umull %[low], %[high], r4, r4\n"
        "adcs r6, r6, %[low]\n"
        "adcs r8, r8, %[high]\n"
        "umull %[low], %[high], r5, r5\n"
        "adcs r9, r9, %[low]\n"
        "adcs r10, r10, %[high]\n"
        "stmia %[z]!, {r6, r8, r9, r10}\n"
        "teq %[x], %[end]\n"
        "bne 1b"
        : [x] "+r"(x), [z] "+r"(z), [low] "=&r"(low), [high] "=&r"(high)
        : [end] "r"(end), [carry] "r"(carry)
        : MIROLTA_CLOBBERED);
  }
};

bool NoMontgomery(Limb*, const Limb*, const Limb*, const Limb*, size_t, Limb) {
  return false;
}

}  // namespace

constexpr LimbKernels kArmKernels = {ArmRows::Add,     ArmRows::Subtract, ArmRows::Mul1,
                                     ArmRows::MulAdd1, ArmRows::MulSub1,  ArmLoops::Multiply,
                                     ArmLoops::Square, ArmLoops::Reduce,  NoMontgomery};

}  // namespace mirolta

#endif
