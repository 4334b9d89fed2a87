// The form in which keys of a dictionary are compared.
#pragma once

#include "platform.h"
#include "values/text_encoding.h"

namespace mirolta::host {

// ComparisonForm returns a text that is equal for equal keys only. Keys of different kinds differ;
// numbers are equal across types, dates by value, objects by identity.
// Shapes: `key` is no reference to a value.
// Errors: throws kInvalidCall for an array and for NaN, DISP_E_BADVARTYPE for other types that are
//         no keys; std::bad_alloc.
Units ComparisonForm(const VARIANT& key, bool ignores_case);

}  // namespace mirolta::host
