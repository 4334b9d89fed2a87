// Shared by the tests of limbs: random operands, and their values for GMP.
#pragma once

#include <vector>

#include "big_testing.h"
#include "limb.h"

namespace mirolta {

using Limbs = std::vector<Limb>;

inline Limbs RandomLimbs(size_t n) {
  const std::vector<uint32_t> words = RandomWords(static_cast<uint32_t>(n * kLimbBits));
  Limbs limbs(n);
  for (size_t i = 0; i < words.size(); ++i) {
    limbs[i / kLimbWords] |= static_cast<Limb>(words[i]) << (32 * (i % kLimbWords));
  }
  return limbs;
}

inline void Import(Mpz& z, const Limbs& x) {
  mpz_import(z, x.size(), -1, sizeof(Limb), 0, 0, x.data());
}

}  // namespace mirolta
