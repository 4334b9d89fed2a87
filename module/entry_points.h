// The entry points, which the loader and hosts look up by name. Programs that are linked with the
// module's parts may call them directly.
#pragma once

#include "platform.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved);

MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID clsid, REFIID iid, LPVOID* out);
MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllCanUnloadNow();
MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllRegisterServer();
MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllUnregisterServer();
