// The generator that draws on the system's entropy.
#pragma once

#include "seam/random.h"

namespace mirolta {

extern const RandomSource kSystemSource;

}  // namespace mirolta
