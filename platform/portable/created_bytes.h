// Arrays of bytes that their creator fills, and public ones: operations that the platform does not have.
#pragma once

#include "mirolta/variant.h"

extern "C" {
// MiroltaCreateBytes is SafeArrayCreate for one dimension of count bytes from 0 on, which hold
// anything until their creator has written them all.
MIROLTA_RUNTIME SAFEARRAY* MiroltaCreateBytes(ULONG count);
// MiroltaMarkPublic tells that an array of MiroltaCreateBytes holds no secret: it is not wiped when it is
// destroyed. This ends when the array is copied, as keys are, or an element is put into it.
MIROLTA_RUNTIME void MiroltaMarkPublic(SAFEARRAY* bytes);
}
