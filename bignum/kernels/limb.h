// Limbs: the units of the inner loops. Numbers are stored as 32-bit words; a limb is one word, or
// two words where the processor has 64 x 64-bit products. B = 2^kLimbBits is the base.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform.h"

namespace mirolta {

#if defined(MIROLTA_BYTE_LIMBS)
// So few values that tests/prove tries all of them.
using Limb = uint8_t;
using DoubleLimb = uint16_t;
#elif !defined(MIROLTA_PORTABLE_ONLY) && defined(__SIZEOF_INT128__)
using Limb = uint64_t;
__extension__ typedef unsigned __int128 DoubleLimb;
#else
using Limb = uint32_t;
using DoubleLimb = uint64_t;
#endif

inline constexpr uint32_t kLimbBits = static_cast<uint32_t>(sizeof(Limb)) * 8;
inline constexpr uint32_t kLimbWords = (kLimbBits + 31) / 32;
inline constexpr Limb kLimbMax = static_cast<Limb>(~Limb{0});

// LimbPair: high * B + low.
struct LimbPair {
  Limb low;
  Limb high;
};

// WideProducts computes products in a double limb, by one instruction where the processor has it.
struct WideProducts {
  // a * b + c + d <= (B - 1)^2 + 2 (B - 1) = B^2 - 1, which fits.
  static LimbPair MulAdd(Limb a, Limb b, Limb c, Limb d) {
    const DoubleLimb t = static_cast<DoubleLimb>(a) * b + c + d;
    return {static_cast<Limb>(t), static_cast<Limb>(t >> kLimbBits)};
  }
};

// HalfProducts computes products from half limbs, for processors whose multiplication yields the
// low word only.
struct HalfProducts {
  static LimbPair MulAdd(Limb a, Limb b, Limb c, Limb d) {
    constexpr uint32_t kHalf = kLimbBits / 2;
    constexpr Limb kMask = kLimbMax >> kHalf;
    const Limb a0 = a & kMask, a1 = a >> kHalf;
    const Limb b0 = b & kMask, b1 = b >> kHalf;
    // With H^2 = B, each sum is at most (H - 1)^2 + 2 (H - 1) = B - 1: no carry is lost.
    const Limb low = a0 * b0 + (c & kMask) + (d & kMask);
    const Limb mid = a1 * b0 + (low >> kHalf) + (c >> kHalf);
    const Limb mid2 = a0 * b1 + (mid & kMask) + (d >> kHalf);
    const Limb high = a1 * b1 + (mid >> kHalf) + (mid2 >> kHalf);
    return {static_cast<Limb>(mid2 << kHalf | (low & kMask)), high};
  }
};

// Products: those of code outside the kernels. MIROLTA_HALF_PRODUCTS selects the half products.
#if defined(MIROLTA_HALF_PRODUCTS)
using Products = HalfProducts;
#else
using Products = WideProducts;
#endif

// Product returns a * b.
inline LimbPair Product(Limb a, Limb b) {
  return Products::MulAdd(a, b, 0, 0);
}

// kDividesWide: the processor divides a double limb itself.
inline constexpr bool kDividesWide =
    MIROLTA_KERNELS_FOR(X86) || sizeof(DoubleLimb) <= sizeof(size_t);

// DivideWide returns (high * B + low) / d, high < d. C++ has no 2-by-1 division, the processor
// does.
inline Limb DivideWide(Limb high, Limb low, Limb d) {
#if MIROLTA_KERNELS_FOR(X86)
  // Registers tell its width.
  __asm__("div %[d]" : "+a"(low), "+d"(high) : [d] "r"(d) : "cc");
  return low;
#else
  return static_cast<Limb>((static_cast<DoubleLimb>(high) << kLimbBits | low) / d);
#endif
}

// AddPair returns x + y, SubtractPair x - y, both modulo B^2. Assembly, since compilers usually
// spill limb pairs; registers tell its width.
inline LimbPair AddPair(LimbPair x, LimbPair y) {
#if MIROLTA_KERNELS_FOR(X86)
  __asm__(
      "add %[low], %[to]\n"
      "adc %[high], %[above]\n"
      : [to] "+&r"(x.low), [above] "+r"(x.high)
      : [low] "rm"(y.low), [high] "rm"(y.high)
      : "cc");
  return x;
#else
  const Limb low = static_cast<Limb>(x.low + y.low);
  return {low, static_cast<Limb>(x.high + y.high + (low < y.low))};
#endif
}
inline LimbPair SubtractPair(LimbPair x, LimbPair y) {
#if MIROLTA_KERNELS_FOR(X86)
  __asm__(
      "sub %[low], %[from]\n"
      "sbb %[high], %[above]\n"
      : [from] "+&r"(x.low), [above] "+r"(x.high)
      : [low] "rm"(y.low), [high] "rm"(y.high)
      : "cc");
  return x;
#else
  return {static_cast<Limb>(x.low - y.low), static_cast<Limb>(x.high - y.high - (x.low < y.low))};
#endif
}

// LeadingZeros returns the number of zero bits above the highest one bit of x, x != 0.
inline uint32_t LeadingZeros(Limb x) {
  if constexpr (kLimbBits == 64) {
    return static_cast<uint32_t>(__builtin_clzll(x));
  } else {
    return static_cast<uint32_t>(__builtin_clz(static_cast<uint32_t>(x))) - (32 - kLimbBits);
  }
}

// TrailingZeros returns the number of zero bits below the lowest one bit of x, x != 0.
inline uint32_t TrailingZeros(Limb x) {
  return static_cast<uint32_t>(__builtin_ctzll(x));
}

}  // namespace mirolta
