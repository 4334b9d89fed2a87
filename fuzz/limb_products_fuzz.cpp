// Products and squares of limbs by every method, the transforms of each kernel among them, against the peer's.
#include <algorithm>

#include "big_numbers.h"
#include "multiply.h"
#include "transform_product.h"

using namespace mirolta;
using namespace mirolta::fuzz;

namespace {

using Limbs = std::vector<Limb>;
constexpr Limb kGuard = static_cast<Limb>(0xABCDEF0123456789u);

// Runs of zeros and ones, and short patterns, fill what the input leaves.
Limbs NextLimbs(FuzzInput& in, size_t count) {
  Limbs limbs(count);
  const uint8_t kind = in.Byte();
  for (size_t i = 0; i < count; ++i) {
    if (i < 8 && !in.IsEmpty()) {
      limbs[i] = static_cast<Limb>(in.Huge());
    } else {
      const Limb before = i == 0 ? 1 : limbs[i - 1];
      limbs[i] = kind % 4 == 0 ? 0 : kind % 4 == 1 ? ~Limb{0} : before * 5 + kind;
    }
  }
  return limbs;
}

Limbs PeerProduct(const Limbs& x, const Limbs& y) {
  PeerNumber a, b;
  mpz_import(a.get(), x.size(), -1, sizeof(Limb), 0, 0, x.data());
  mpz_import(b.get(), y.size(), -1, sizeof(Limb), 0, 0, y.data());
  mpz_mul(a.get(), a.get(), b.get());
  Limbs product(x.size() + y.size());
  mpz_export(product.data(), nullptr, -1, sizeof(Limb), 0, 0, a.get());
  return product;
}

void Check(const Limbs& x, const Limbs& y) {
  const size_t m = x.size(), n = y.size();
  const Limbs expected = PeerProduct(x, y);
  Limbs z(m + n, kGuard), scratch(MultiplyScratch(m, n).Value() + 1, kGuard);
  MultiplyLimbs(z.data(), x.data(), m, y.data(), n, scratch.data());
  FUZZ_CHECK(z == expected && scratch.back() == kGuard);
  if (!kHasTransforms || !FitsTransforms(m, n)) return;
  for (const auto& kernel : kTransformKernels) {
    if ((kernel.needs & ~ProcessorFeatures()) != 0) continue;
    std::fill(z.begin(), z.end(), kGuard);
    scratch.assign(TransformScratch(m, n).Value() + 1, kGuard);
    TransformProduct(*kernel.function, z.data(), x.data(), m, y.data(), n, scratch.data());
    FUZZ_CHECK(z == expected && scratch.back() == kGuard);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  const uint32_t most = in.Byte() % 32 == 0 ? 400 : in.Byte() % 4 == 0 ? 160 : 24;
  const size_t m = 1 + in.Below(most);
  const size_t n = 1 + in.Below(most);
  const Limbs x = NextLimbs(in, m);
  Check(x, NextLimbs(in, n));
  Check(x, x);
  return 0;
}
