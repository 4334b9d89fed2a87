// Arguments that scripts pass to native functions.
#pragma once

#include <string_view>

#include "engine/engine_api.h"

namespace mirolta::host {

// NumberWithin converts the argument at `index` to a number in least..most.
// Errors: throws `status` for other numbers and for NaN.
double NumberWithin(duk_context* engine, duk_idx_t index, double least, double most,
                    HRESULT status);

// TextArgument converts the argument at `index` to a string, in place.
// Shapes: the engine's form of text, zero-terminated; valid while the argument is on the stack.
// Errors: the engine's, for a value without a string.
std::string_view TextArgument(duk_context* engine, duk_idx_t index);

}  // namespace mirolta::host
