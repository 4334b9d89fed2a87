// The script engine's API, included as a system header because its macros do not meet our warnings.
#pragma once

#include <duktape.h>

#include "platform.h"
