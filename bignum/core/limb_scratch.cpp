#include "limb_scratch.h"

namespace mirolta {

// The limbs inside stay uninitialised: they are written before they are read.
LimbScratch::LimbScratch(CheckedSize count) noexcept : limbs_(inside_), count_(count.Value()) {
  if (count_ > kInside) limbs_ = NewArray<Limb>(count);
}

}  // namespace mirolta
