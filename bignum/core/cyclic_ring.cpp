#include "cyclic_ring.h"

#include "limb_basics.h"

namespace mirolta {

namespace {

// z := z + x modulo B^n; returns the carry, or the borrow as -1.
int64_t AddSigned(Limb* z, size_t n, int64_t x) {
  if (x < 0) return -static_cast<int64_t>(SubtractLimb(z, n, static_cast<Limb>(-x)));
  return static_cast<int64_t>(AddLimb(z, n, static_cast<Limb>(x)));
}

}  // namespace

void CyclicRing::Settle(Limb* z, int64_t top) const noexcept {
  while (top != 0) {
    // Modulo B^n + 1, B^n itself stays.
    if (plus && top == 1 && SignificantLimbs(z, n) == 0) break;
    top = AddSigned(z, n, plus ? -top : top);
  }
  z[n] = static_cast<Limb>(top);
}

void CyclicRing::Reduce(Limb* z, const Limb* a, size_t m) const noexcept {
  const LimbKernels& k = CurrentLimbKernels();
  const size_t first = m < n ? m : n;
  CopyLimbs(z, a, first);
  ZeroLimbs(z + first, n - first);
  int64_t top = 0;
  for (size_t done = first; done < m;) {
    const size_t count = m - done < n ? m - done : n;
    if (plus && done / n % 2 != 0) {
      top -= static_cast<int64_t>(
          SubtractLimb(z + count, n - count, k.subtract(z, z, a + done, count)));
    } else {
      top += static_cast<int64_t>(AddLimb(z + count, n - count, k.add(z, z, a + done, count)));
    }
    done += count;
  }
  Settle(z, top);
}

void CyclicRing::Subtract(Limb* z, const Limb* x) const noexcept {
  const int64_t top = static_cast<int64_t>(z[n]) - static_cast<int64_t>(x[n]);
  const int64_t borrow = static_cast<int64_t>(CurrentLimbKernels().subtract(z, z, x, n));
  Settle(z, top - borrow);
}

void CyclicRing::Halve(Limb* z) const noexcept {
  const Limb odd = z[0] & 1;
  ShiftRightLimbs(z, z, n + 1, 1);
  // An odd z + B^n +- 1 is even. Its half is that of z, rounded up or down, and of B^n.
  if (odd == 0) return;
  int64_t top = static_cast<int64_t>(z[n]);
  if (plus) top += static_cast<int64_t>(AddLimb(z, n, 1));
  top += static_cast<int64_t>(AddLimb(z + n - 1, 1, static_cast<Limb>(Limb{1} << (kLimbBits - 1))));
  z[n] = static_cast<Limb>(top);
}

}  // namespace mirolta
