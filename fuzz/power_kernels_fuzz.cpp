// Powers modulo odd numbers by every kernel that the processor has, those for secrets and in radix 2^52 among
// them, against the peer's.
#include <algorithm>

#include "big_numbers.h"
#include "power_kernels.h"
#include "radix52_power.h"
#include "secret_power.h"

using namespace mirolta;
using namespace mirolta::fuzz;

namespace {

using Limbs = std::vector<Limb>;

Limbs LimbsOf(mpz_srcptr x, size_t n) {
  Limbs limbs(std::max<size_t>(n, 1));
  mpz_export(limbs.data(), nullptr, -1, sizeof(Limb), 0, 0, x);
  return limbs;
}

size_t Count(mpz_srcptr x) {
  return (mpz_sizeinbase(x, 2) + kLimbBits - 1) / kLimbBits;
}

bool Runs(uint32_t needs) {
  return (needs & ~ProcessorFeatures()) == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  const uint8_t kind = in.Byte();
  const uint32_t most = kind % 16 == 0 ? 140 : kind % 2 == 0 ? 70 : 24;
  const PeerNumber base(NextNumber(in, most)), modulus(NextNumber(in, most));
  const PeerNumber exponent(NextNumber(in, kind % 16 == 1 ? 40 : 3));
  PeerNumber m, x, e, power;
  mpz_abs(m.get(), modulus.get());
  mpz_abs(e.get(), exponent.get());
  mpz_setbit(m.get(), 0);
  if (mpz_cmp_ui(m.get(), 1) == 0) return 0;
  if (mpz_sgn(e.get()) == 0) mpz_set_ui(e.get(), 1);
  mpz_mod(x.get(), base.get(), m.get());
  mpz_powm(power.get(), x.get(), e.get(), m.get());
  const size_t n = Count(m.get()), en = Count(e.get());
  const size_t bits = mpz_sizeinbase(m.get(), 2);
  const Limbs ms = LimbsOf(m.get(), n), xs = LimbsOf(x.get(), n), es = LimbsOf(e.get(), en);
  const Limbs expected = LimbsOf(power.get(), n);
  for (const auto& row : kPowerKernels) {
    if (!Runs(row.needs) || bits < row.function->least_bits || bits > row.function->most_bits) {
      continue;
    }
    Limbs z(n, 7);
    FUZZ_CHECK(row.function->function(z.data(), xs.data(), es.data(), en, ms.data(), n));
    FUZZ_CHECK(z == expected);
  }
#if MIROLTA_KERNELS_FOR(X86)
  // Below the length from which it is chosen too.
  if (Runs(kRadix52Features) && bits >= 51 && bits <= kRadix52PowerMostBits) {
    Limbs z(n, 7);
    FUZZ_CHECK(Radix52Power(z.data(), xs.data(), es.data(), en, ms.data(), n));
    FUZZ_CHECK(z == expected);
  }
#endif
  const Limb factor = static_cast<Limb>(in.Huge()) | Limb{1} << (kLimbBits - 1);
  Limbs z(2 * n, 7);
  // The second is told less: neither the exponent's exact length nor the square of the radix.
  PeerNumber square;
  mpz_setbit(square.get(), 2 * n * kLimbBits);
  mpz_mod(square.get(), square.get(), m.get());
  const Limbs squares = LimbsOf(square.get(), n);
  const SecretPower powers[2] = {{z.data(), xs.data(), n, es.data(), en, mpz_sizeinbase(e.get(), 2),
                                  ms.data(), n, squares.data(), factor},
                                 {z.data() + n, xs.data(), n, es.data(), en, en * kLimbBits,
                                  ms.data(), n, nullptr, static_cast<Limb>(factor ^ 1)}};
  for (const auto& row : kSecretPowerKernels) {
    const SecretPowerMethod& method = *row.function;
    if (!Runs(row.needs) || bits < method.least_bits || bits > method.most_bits) continue;
    std::fill(z.begin(), z.end(), Limb{7});
    FUZZ_CHECK(method.raise(powers));
    for (size_t i = 0; i < method.powers; ++i) {
      const auto at = z.begin() + static_cast<std::ptrdiff_t>(i * n);
      FUZZ_CHECK(std::equal(expected.begin(), expected.end(), at));
    }
  }
  return 0;
}
