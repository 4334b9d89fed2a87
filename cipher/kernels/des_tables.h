// The constants of DES in the forms that the key schedule and the portable transforms read.
#pragma once

#include "platform.h"

namespace mirolta {

struct DesTables {
  // substitution[i][v] is what S-box i + 1 makes of the six bits v, carried through the permutation
  // P and rotated left by one bit like the halves it is added to.
  uint32_t substitution[8][64];
  // 63 in every byte. The transforms clear the upper bits of four indexes at once with it and then
  // take bytes; a mask in the code itself would let the compiler mask each index again instead.
  uint32_t index_mask;
  // Permuted choice 1 turns the key by a quarter: bit j of all its bytes becomes one byte.
  // key_high[n] has the four bits of n, the first in the top byte, each as the lowest bit of a
  // byte. key_low[n] has the third, the second and the first bit of n and then 0: the other half
  // takes the columns in falling order, and the fourth bit is the parity, which nothing reads.
  uint32_t key_high[16];
  uint32_t key_low[16];
  // Permuted choice 2 by nibbles: the round key bits that nibble n, counted from the top, of a
  // 28-bit half (0 is C, 1 is D) gives when its value is v. The upper 16 bits go to the odd word of
  // a round key, the lower ones to the even word; C fills the upper half of those words, D the
  // lower half.
  uint32_t key_choice[2][7][16];
};

extern const DesTables kDesTables;

#if MIROLTA_KERNELS_FOR(X86_64)
// substitution[i][v] is the word of DesTables with the half expanded: the inputs of the S-boxes 1,
// 3, 5, 7, 2, 4, 6, 8, highest byte first, each in the lower six bits of its byte.
struct DesWideTables {
  uint64_t substitution[8][64];
};

extern const DesWideTables kDesWideTables;
#endif

}  // namespace mirolta
