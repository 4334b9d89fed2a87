// The portable automation runtime: what the system's headers declare on Windows, for the rest.
// Same names, same binary layout, same slot orders; OLE characters are 16 bits.
#pragma once

#include "portable/base_types.h"
#include "portable/dispatch.h"
#include "portable/error_info.h"
#include "portable/guid.h"
#include "portable/module.h"
#include "portable/registry.h"
#include "portable/status.h"
#include "portable/stream.h"
#include "portable/system.h"
#include "portable/unknown.h"
#include "portable/variant.h"
