// SPDX-License-Identifier: MIT
// The platform's BOOL, which the other headers do not declare (base_types.h). X11/Xmd.h has another:
// a source file includes one of the two.
#pragma once

#include "mirolta/base_types.h"

typedef int32_t BOOL;
