// Prints the constants of the arithmetic, as lines NAME VALUE, for the problems of bounds.py.
#include <cinttypes>
#include <cstdio>

#include "decimal_conversion.cpp"  // Its constants are in no header.
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
#endif
}
