// Arrays of bytes that their creator fills: an operation that the platform does not have.
#pragma once

#include "mirolta/variant.h"

extern "C" {
// MiroltaCreateBytes is SafeArrayCreate for one dimension of count bytes from 0 on, which hold
// anything until their creator has written them all.
MIROLTA_RUNTIME SAFEARRAY* MiroltaCreateBytes(ULONG count);
}
