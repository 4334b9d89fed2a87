// The entry points, which the loader and hosts look up by name: those of mirolta.h and the loader's.
// Programs that are linked with the module's parts may call them directly.
#pragma once

#include "mirolta.h"
#include "platform.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved);
