// Which bytes are secret, as memcheck sees it: undefined. Without memcheck these do nothing.
#pragma once

#include <valgrind/memcheck.h>

#include "big_int.h"

namespace mirolta::constant_time {

inline void Hide(void* bytes, size_t size) {
  VALGRIND_MAKE_MEM_UNDEFINED(bytes, size);
}
inline void Reveal(const void* bytes, size_t size) {
  VALGRIND_MAKE_MEM_DEFINED(bytes, size);
}

// Hides limbs, but the top one, which has the bit length, and the lowest bit.
inline void HideLimbs(Limb* limbs, size_t n) {
  const Limb hidden = static_cast<Limb>(~Limb{1});
  if (n < 2) return;
  Hide(limbs + 1, (n - 2) * sizeof(Limb));
  (void)VALGRIND_SET_VBITS(limbs, &hidden, sizeof hidden);
}

// The same for the words of a number, which may share them with copies.
inline void HideNumber(const BigInt& number) {
  const uint32_t hidden = ~uint32_t{1};
  const uint32_t words = number.Used();
  if (words <= 2 * kLimbWords) return;
  uint32_t* const lowest = const_cast<BigMagnitude&>(number.Magnitude()).Words();
  Hide(lowest + 1, (words - 1 - kLimbWords) * sizeof(uint32_t));
  (void)VALGRIND_SET_VBITS(lowest, &hidden, sizeof hidden);
}

}  // namespace mirolta::constant_time
