// The digit of the inner loops. Numbers are stored as 32-bit words; a limb is one word where that
// is all the processor multiplies, and two words where it has 64-bit products.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform.h"

namespace mirolta {

#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__SIZEOF_INT128__)
using Limb = uint64_t;
__extension__ typedef unsigned __int128 DoubleLimb;
#else
using Limb = uint32_t;
using DoubleLimb = uint64_t;
#endif

inline constexpr uint32_t kLimbBits = static_cast<uint32_t>(sizeof(Limb)) * 8;
inline constexpr uint32_t kLimbWords = kLimbBits / 32;
inline constexpr Limb kLimbMax = static_cast<Limb>(~Limb{0});

// LimbPair: a two-limb value.
struct LimbPair {
  Limb low;
  Limb high;
};

// WideProducts forms products in the double limb: one instruction where the processor has it.
struct WideProducts {
  // a * b + c + d, at most (B-1)^2 + 2(B-1) = B^2 - 1, so it always fits.
  static LimbPair MulAdd(Limb a, Limb b, Limb c, Limb d) {
    const DoubleLimb t = static_cast<DoubleLimb>(a) * b + c + d;
    return {static_cast<Limb>(t), static_cast<Limb>(t >> kLimbBits)};
  }
};

// HalfProducts forms products from half limbs, for processors whose multiplication keeps only the
// low word of its result.
struct HalfProducts {
  static LimbPair MulAdd(Limb a, Limb b, Limb c, Limb d) {
    constexpr uint32_t kHalf = kLimbBits / 2;
    constexpr Limb kMask = kLimbMax >> kHalf;
    const Limb a0 = a & kMask, a1 = a >> kHalf;
    const Limb b0 = b & kMask, b1 = b >> kHalf;
    // Each sum is at most (H-1)^2 + 2(H-1) = H^2 - 1 with H the half base: no carry is lost.
    const Limb low = a0 * b0 + (c & kMask) + (d & kMask);
    const Limb mid = a1 * b0 + (low >> kHalf) + (c >> kHalf);
    const Limb mid2 = a0 * b1 + (mid & kMask) + (d >> kHalf);
    const Limb high = a1 * b1 + (mid >> kHalf) + (mid2 >> kHalf);
    return {static_cast<Limb>(mid2 << kHalf | (low & kMask)), high};
  }
};

// The products of code outside the kernels. MIROLTA_HALF_PRODUCTS is for the small processors.
#if defined(MIROLTA_HALF_PRODUCTS)
using Products = HalfProducts;
#else
using Products = WideProducts;
#endif

inline LimbPair Product(Limb a, Limb b) {
  return Products::MulAdd(a, b, 0, 0);
}

// DivideWide returns high * B + low over d, high below d. The processor's division by a limb is
// that of two limbs, which the language has none of.
inline Limb DivideWide(Limb high, Limb low, Limb d) {
#if MIROLTA_KERNELS_FOR(X86_64)
  __asm__("divq %[d]" : "+a"(low), "+d"(high) : [d] "r"(d) : "cc");
  return low;
#else
  return static_cast<Limb>((static_cast<DoubleLimb>(high) << kLimbBits | low) / d);
#endif
}

// AddPair and SubtractPair compute x + y and x - y modulo B^2. The compiler keeps two limbs that it
// has to treat as one value in memory more often than not.
inline LimbPair AddPair(LimbPair x, LimbPair y) {
#if MIROLTA_KERNELS_FOR(X86_64)
  __asm__(
      "addq %[low], %[to]\n"
      "adcq %[high], %[above]\n"
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
#if MIROLTA_KERNELS_FOR(X86_64)
  __asm__(
      "subq %[low], %[from]\n"
      "sbbq %[high], %[above]\n"
      : [from] "+&r"(x.low), [above] "+r"(x.high)
      : [low] "rm"(y.low), [high] "rm"(y.high)
      : "cc");
  return x;
#else
  return {static_cast<Limb>(x.low - y.low), static_cast<Limb>(x.high - y.high - (x.low < y.low))};
#endif
}

// LeadingZeros counts the zero bits above the top one bit of x, x != 0.
inline uint32_t LeadingZeros(Limb x) {
  if constexpr (kLimbBits == 64) {
    return static_cast<uint32_t>(__builtin_clzll(x));
  } else {
    return static_cast<uint32_t>(__builtin_clz(static_cast<uint32_t>(x)));
  }
}

// TrailingZeros counts the zero bits below the lowest one bit of x, x != 0.
inline uint32_t TrailingZeros(Limb x) {
  return static_cast<uint32_t>(__builtin_ctzll(x));
}

}  // namespace mirolta
