// Powers with secrets hidden, by every method that this processor runs.
#pragma once

#include <cstdio>
#include <vector>

#include "secret_power.h"
#include "secrets.h"

namespace mirolta::constant_time {

inline std::vector<Limb> SomeLimbs(size_t n, Limb start) {
  std::vector<Limb> limbs(n);
  for (size_t i = 0; i < n; ++i) {
    start = static_cast<Limb>(start * 2862933u + 3037001u);
    limbs[i] = static_cast<Limb>(start | Limb{1} << (kLimbBits - 1)) ^ start >> 7;
  }
  if (n != 0) limbs[0] |= 1;
  return limbs;
}

// One power whose base, exponent, factor and modulus are hidden.
struct HiddenPower {
  std::vector<Limb> x, e, m, z;
  Limb factor = static_cast<Limb>(~Limb{0} / 7 * 5);

  HiddenPower(size_t n, Limb start)
      : x(SomeLimbs(2 * n, start)), e(SomeLimbs(n, start + 1)), m(SomeLimbs(n, start + 2)), z(n) {
    m[n - 1] |= Limb{1} << (kLimbBits - 1);
    Hide(x.data(), x.size() * sizeof(Limb));
    Hide(e.data(), e.size() * sizeof(Limb));
    HideLimbs(m.data(), m.size());
    Hide(&factor, sizeof factor);
  }
  SecretPower Power() {
    return {z.data(), x.data(), x.size(), e.data(), e.size(), e.size() * kLimbBits,
            m.data(), m.size(), nullptr,  factor};
  }
};

inline void CheckPowers(const char* limbs) {
  for (const auto& row : kSecretPowerKernels) {
    if ((row.needs & ~ProcessorFeatures()) != 0) continue;
    // Lengths with kernels of their own, and others.
    for (const size_t bits : {256u, 320u, 512u, 768u, 1024u, 1088u}) {
      const SecretPowerMethod& method = *row.function;
      if (bits < method.least_bits || bits > method.most_bits) continue;
      HiddenPower first(bits / kLimbBits, 5), second(bits / kLimbBits, 50);
      const SecretPower powers[] = {first.Power(), second.Power()};
      (void)method.raise(powers);
    }
    std::printf("checked: secret power, %s, %s\n", row.name, limbs);
  }
}

}  // namespace mirolta::constant_time
