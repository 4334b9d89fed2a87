// Shared by the tests of limbs: random operands, and their values for GMP.
#pragma once

#include <gtest/gtest.h>

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

// |z| as n limbs.
inline Limbs Export(mpz_srcptr z, size_t n) {
  Limbs limbs(n + 1);
  EXPECT_LE(mpz_sizeinbase(z, 2), n * kLimbBits + 1);  // the peer's zero has one bit
  mpz_export(limbs.data(), nullptr, -1, sizeof(Limb), 0, 0, z);
  limbs.resize(n);
  return limbs;
}

// -1 / m modulo B, of an odd m: by Newton's iteration, which doubles the right bits.
inline Limb NegatedInverse(Limb m) {
  Limb inverse = 1;
  for (uint32_t bits = 1; bits < kLimbBits; bits *= 2) {
    inverse = static_cast<Limb>(inverse * (2 - m * inverse));
  }
  return static_cast<Limb>(0 - inverse);
}

}  // namespace mirolta
