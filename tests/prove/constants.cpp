// Prints the constants of the arithmetic, as lines NAME VALUE, for the problems of bounds.py.
#include <cinttypes>
#include <cstdio>

#include "decimal_conversion.cpp"  // Its constants are in no header.
#include "four_limbs_x86_64.h"
#include "radix27.h"
#include "radix52_ifma.h"

int main() {
  using namespace mirolta;
  const auto print = [](const char* name, uint64_t value) {
    std::printf("%s %" PRIu64 "\n", name, value);
  };
  print("limb_bits", kLimbBits);
  print("decimal_digits", kDecimalDigits);
  print("decimal_power", kDecimalPower);
  print("chunks_out", kChunksOut);
  for (size_t n = 0; n <= 256; ++n) print("chunks_room", ChunksRoom(n).Value());
#if MIROLTA_KERNELS_FOR(X86_64)
  print("radix52_bits", kRadix52Bits);
  print("radix52_mask", kRadix52Mask);
  print("radix52_per_vector", kRadix52PerVector);
  print("radix52_most_vectors", kRadix52MostVectors);
  print("radix52_spare", kRadix52Spare);
  print("radix27_bits", kRadix27Bits);
  print("radix27_mask", kRadix27Mask);
  print("radix27_more", kRadix27More);
  print("radix27_block_bits", kRadix27BlockBits);
  print("radix27_spare", kRadix27Spare);
  print("radix27_most_digits", kRadix27MostDigits);
  print("four_limbs_most_top", kFourLimbsMostTop);
#endif
}
