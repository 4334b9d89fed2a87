// The entry points. The loader and the host find them by name; who is linked with the module's
// parts may call them too.
#pragma once

#include "platform.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved);

MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID clsid, REFIID iid, LPVOID* out);
MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllCanUnloadNow();
MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllRegisterServer();
MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllUnregisterServer();
