#include "montgomery_power.h"

#include "limb_basics.h"
#include "limb_scratch.h"
#include "montgomery.h"
#include "sliding_window.h"

namespace mirolta {

bool MontgomeryPower(Limb* z, const Limb* x, const Limb* e, size_t en, const Limb* m,
                     size_t n) noexcept {
  const MontgomeryModulus modulus = PrepareMontgomery(m, n);
  const uint32_t window = WindowBits(LimbBits(e, en));
  const size_t powers = size_t{1} << (window - 1);
  LimbScratch memory((CheckedSize(powers) + 1) * CheckedSize(n) + MontgomeryScratch(n));
  if (memory.Get() == nullptr) return false;
  Limb* const table = memory.Get();
  Limb* const spare = table + powers * n;
  Limb* const scratch = spare + n;
  if (!ToMontgomery(table, x, n, modulus)) return false;
  SlidingWindow(z, table, spare, e, en, n, window,
                [&modulus, scratch](Limb* r, const Limb* a, const Limb* b) {
                  MontgomeryMultiply(r, a, b, modulus, scratch);
                });
  FromMontgomery(z, z, modulus, scratch);
  return true;
}

}  // namespace mirolta
