// SPDX-License-Identifier: MIT
// What the system's headers declare on Windows, for the rest: same names, same binary layout, same slot
// orders. OLE characters have 16 bits.
#pragma once

#include "mirolta/base_types.h"
#include "mirolta/dispatch.h"
#include "mirolta/error_info.h"
#include "mirolta/guid.h"
#include "mirolta/module.h"
#include "mirolta/registry.h"
#include "mirolta/status.h"
#include "mirolta/stream.h"
#include "mirolta/system.h"
#include "mirolta/unknown.h"
#include "mirolta/variant.h"

#ifndef __cplusplus
  #include "mirolta/c_runtime.h"
#endif
