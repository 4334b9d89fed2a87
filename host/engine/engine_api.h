// The script engine's header, whose macros are not written for our warnings.
#pragma once

#include <duktape.h>

#include "platform.h"
