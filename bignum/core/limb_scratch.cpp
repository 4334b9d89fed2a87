#include "limb_scratch.h"

#include <new>

namespace mirolta {

// The content is written before it is read, so the limbs inside stay unset here.
LimbScratch::LimbScratch(size_t count) noexcept : limbs_(inside_), count_(count) {
  if (count > kInside) limbs_ = new (std::nothrow) Limb[count];
}

}  // namespace mirolta
