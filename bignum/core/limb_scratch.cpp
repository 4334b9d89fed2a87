#include "limb_scratch.h"

namespace mirolta {

// The content is written before it is read, so the limbs inside stay unset here.
LimbScratch::LimbScratch(CheckedSize count) noexcept : limbs_(inside_), count_(count.value()) {
  if (count_ > kInside) limbs_ = NewArray<Limb>(count);
}

}  // namespace mirolta
