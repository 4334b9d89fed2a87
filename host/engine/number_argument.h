// Numbers that scripts pass to native functions.
#pragma once

#include "engine/engine_api.h"

namespace mirolta::host {

// NumberWithin returns the argument at `index` as a number in least..most.
// Errors: throws `status` for other numbers and for NaN.
double NumberWithin(duk_context* engine, duk_idx_t index, double least, double most,
                    HRESULT status);

}  // namespace mirolta::host
