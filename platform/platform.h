// The one header through which all other code reaches the system, with the few operations that no
// system header has.
#pragma once

#include "seam/byte_array.h"
#include "seam/checked_size.h"
#include "seam/kernel.h"
#include "seam/memory.h"
#include "seam/owned_reference.h"
#include "seam/processor.h"
#include "seam/random.h"
#include "seam/registry_change.h"
#include "seam/wiped_work.h"
#include "seam/word_bytes.h"
#include "system_headers.h"
