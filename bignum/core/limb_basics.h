// Basic operations on arrays of limbs, least significant limb first.
#pragma once

#include <bit>
#include <cstring>

#include "limb_kernels.h"

namespace mirolta {

inline void CopyLimbs(Limb* z, const Limb* x, size_t n) {
  for (size_t i = 0; i < n; ++i) z[i] = x[i];
}

inline void ZeroLimbs(Limb* z, size_t n) {
  for (size_t i = 0; i < n; ++i) z[i] = 0;
}

// CompareLimbs returns -1, 0 or 1 as x <, = or > y.
// Shapes: x[n], y[n].
inline int CompareLimbs(const Limb* x, const Limb* y, size_t n) {
  while (n-- != 0) {
    if (x[n] != y[n]) return x[n] < y[n] ? -1 : 1;
  }
  return 0;
}

// SignificantLimbs returns the length of x[n] without its leading zero limbs.
inline size_t SignificantLimbs(const Limb* x, size_t n) {
  while (n != 0 && x[n - 1] == 0) --n;
  return n;
}

// SelectLimbs: z := x where mask is all ones, y where it is 0.
// Shapes: x[n], y[n], z[n].
// Alias:  z may be x or y.
inline void SelectLimbs(Limb* z, const Limb* x, const Limb* y, Limb mask, size_t n) {
  for (size_t i = 0; i < n; ++i) z[i] = static_cast<Limb>((x[i] & mask) | (y[i] & ~mask));
}

// ComplementLimbs: z := B^n - 1 - x.
// Shapes: z[n], x[n].
// Alias:  z may be x.
inline void ComplementLimbs(Limb* z, const Limb* x, size_t n) {
  for (size_t i = 0; i < n; ++i) z[i] = static_cast<Limb>(~x[i]);
}

// AddLimb: x := x + y; returns the carry.
// Shapes: x[n].
inline Limb AddLimb(Limb* x, size_t n, Limb y) {
  for (size_t i = 0; i < n && y != 0; ++i) {
    x[i] = static_cast<Limb>(x[i] + y);
    y = x[i] < y;
  }
  return y;
}

// SubtractLimb: x := x - y; returns the borrow.
// Shapes: x[n].
inline Limb SubtractLimb(Limb* x, size_t n, Limb y) {
  for (size_t i = 0; i < n && y != 0; ++i) {
    const Limb old = x[i];
    x[i] = static_cast<Limb>(old - y);
    y = old < y;
  }
  return y;
}

// ShiftLeftLimbs: z := x * 2^bits; returns the bits shifted out.
// Shapes: x[n], z[n], bits < kLimbBits.
// Alias:  z may be x or overlap it above.
inline Limb ShiftLeftLimbs(Limb* z, const Limb* x, size_t n, uint32_t bits) {
  if (bits == 0) {
    for (size_t i = n; i-- != 0;) z[i] = x[i];
    return 0;
  }
  if (n == 0) return 0;
  const Limb out = x[n - 1] >> (kLimbBits - bits);
  for (size_t i = n; --i != 0;) {
    z[i] = static_cast<Limb>(x[i] << bits | x[i - 1] >> (kLimbBits - bits));
  }
  z[0] = static_cast<Limb>(x[0] << bits);
  return out;
}

// ShiftRightLimbs: z := x / 2^bits.
// Shapes: x[n], z[n], bits < kLimbBits.
// Alias:  z may be x or overlap it below.
inline void ShiftRightLimbs(Limb* z, const Limb* x, size_t n, uint32_t bits) {
  if (bits == 0) {
    CopyLimbs(z, x, n);
    return;
  }
  for (size_t i = 0; i < n; ++i) {
    const Limb above = i + 1 < n ? static_cast<Limb>(x[i + 1] << (kLimbBits - bits)) : Limb{0};
    z[i] = static_cast<Limb>(x[i] >> bits | above);
  }
}

// LimbBits returns the bit length of x[n], 0 for zero.
inline size_t LimbBits(const Limb* x, size_t n) {
  n = SignificantLimbs(x, n);
  return n == 0 ? 0 : n * kLimbBits - LeadingZeros(x[n - 1]);
}

inline bool TestLimbBit(const Limb* x, size_t bit) {
  return (x[bit / kLimbBits] >> (bit % kLimbBits) & 1) != 0;
}

// LimbsForWords returns the limbs that hold that many 32-bit words.
inline constexpr size_t LimbsForWords(size_t words) {
  return (words + kLimbWords - 1) / kLimbWords;
}

// CopyLimbBytes copies bytes between limbs and words that do not overlap. Constant lengths let
// compilers copy 256-bit and 512-bit numbers without a call.
inline void CopyLimbBytes(void* to, const void* from, size_t bytes) {
  if (bytes == 32) {
    std::memcpy(to, from, 32);
  } else if (bytes == 64) {
    std::memcpy(to, from, 64);
  } else {
    std::memcpy(to, from, bytes);
  }
}

// LimbsFromWords: z := w.
// Shapes: w[words], z[LimbsForWords(words)].
inline void LimbsFromWords(Limb* z, const uint32_t* w, size_t words) {
  if (words == 0) return;
  if constexpr (std::endian::native == std::endian::little) {
    // A limb has the bytes of its words in order.
    z[LimbsForWords(words) - 1] = 0;
    CopyLimbBytes(z, w, words * 4);
  } else {
    for (size_t i = 0; i < LimbsForWords(words); ++i) z[i] = 0;
    for (size_t i = 0; i < words; ++i) {
      z[i / kLimbWords] |= static_cast<Limb>(static_cast<Limb>(w[i]) << (32 * (i % kLimbWords)));
    }
  }
}

// WordsFromLimbs: w := the lowest words of z.
// Shapes: w[words], z[LimbsForWords(words)].
inline void WordsFromLimbs(uint32_t* w, const Limb* z, size_t words) {
  if (words == 0) return;
  if constexpr (std::endian::native == std::endian::little) {
    CopyLimbBytes(w, z, words * 4);
  } else {
    for (size_t i = 0; i < words; ++i) {
      w[i] = static_cast<uint32_t>(z[i / kLimbWords] >> (32 * (i % kLimbWords)));
    }
  }
}

}  // namespace mirolta
