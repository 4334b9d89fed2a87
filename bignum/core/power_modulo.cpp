#include "power_modulo.h"

#include "divide.h"
#include "limb_basics.h"
#include "limb_scratch.h"
#include "multiply.h"
#include "power_kernels.h"
#include "power_of_two_modulus.h"

namespace mirolta {

namespace {

// z[n] := x[xn] mod d[n].
bool Residue(Limb* z, const Limb* x, size_t xn, const Limb* d, size_t n) {
  xn = SignificantLimbs(x, xn);
  if (xn < n) {
    CopyLimbs(z, x, xn);
    ZeroLimbs(z + xn, n - xn);
    return true;
  }
  return DivideLimbs(nullptr, z, x, xn, d, n);
}

bool PowerModuloOdd(Limb* z, const Limb* x, size_t xn, const Limb* e, size_t en, const Limb* m,
                    size_t n) {
  LimbScratch reduced{CheckedSize(n)};
  if (reduced.Get() == nullptr) return false;
  if (!Residue(reduced.Get(), x, xn, m, n)) return false;
  return ChoosePower(LimbBits(m, n), ProcessorFeatures()).function(z, reduced.Get(), e, en, m, n);
}

}  // namespace

bool PowerModulo(Limb* z, const Limb* x, size_t xn, const Limb* e, size_t en, const Limb* m,
                 size_t n) noexcept {
  if ((m[0] & 1) != 0) return PowerModuloOdd(z, x, xn, e, en, m, n);

  // m = 2^bits * d, d odd: compute both residues and join them.
  size_t zeros = 0;
  while (m[zeros] == 0) ++zeros;
  const uint32_t shift = TrailingZeros(m[zeros]);
  const size_t bits = zeros * kLimbBits + shift;
  const size_t k = (bits + kLimbBits - 1) / kLimbBits;
  LimbScratch memory(4 * CheckedSize(n) + 5 * CheckedSize(k) + PowerOfTwoModulus::ScratchLimbs(k) +
                     MultiplyScratch(n, k));
  if (memory.Get() == nullptr) return false;
  Limb* const d = memory.Get();
  Limb* const odd_part = d + n;
  Limb* const d_low = odd_part + n;
  Limb* const two_part = d_low + k;
  Limb* const inverse = two_part + k;
  Limb* const low_x = inverse + k;
  Limb* const product = low_x + n + k;
  Limb* const scratch = product + n + k;
  const PowerOfTwoModulus power_of_two = {bits, k, scratch};

  ShiftRightLimbs(d, m + zeros, n - zeros, shift);
  const size_t dn = SignificantLimbs(d, n - zeros);
  const size_t copied = xn < k ? xn : k;
  CopyLimbs(low_x, x, copied);
  ZeroLimbs(low_x + copied, k - copied);
  power_of_two.Truncate(low_x);
  if (!power_of_two.Power(two_part, low_x, e, en)) return false;
  if (dn == 1 && d[0] == 1) {
    CopyLimbs(z, two_part, k);
    ZeroLimbs(z + k, n - k);
    return true;
  }
  if (!PowerModuloOdd(odd_part, x, xn, e, en, d, dn)) return false;

  // z = odd_part + d * ((two_part - odd_part) / d mod 2^bits), which is below m.
  for (size_t i = 0; i < k; ++i) d_low[i] = i < dn ? d[i] : 0;
  power_of_two.Invert(inverse, d_low, low_x);
  for (size_t i = 0; i < k; ++i) d_low[i] = i < dn ? odd_part[i] : 0;
  CurrentLimbKernels().subtract(two_part, two_part, d_low, k);
  power_of_two.MultiplyLow(two_part, two_part, inverse, k);
  power_of_two.Truncate(two_part);
  MultiplyLimbs(product, d, dn, two_part, k, scratch);
  const Limb carry = CurrentLimbKernels().add(product, product, odd_part, dn);
  AddLimb(product + dn, k, carry);
  for (size_t i = 0; i < n; ++i) z[i] = i < dn + k ? product[i] : 0;
  return true;
}

}  // namespace mirolta
