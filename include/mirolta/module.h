// SPDX-License-Identifier: MIT
// Modules: their resources, their class objects, and how they are found and loaded.
#pragma once

#include "mirolta/dispatch.h"

MIROLTA_CONSTANT(DWORD, CLSCTX_INPROC_SERVER, 1);
MIROLTA_CONSTANT(DWORD, DLL_PROCESS_DETACH, 0);
MIROLTA_CONSTANT(DWORD, DLL_PROCESS_ATTACH, 1);
MIROLTA_CONSTANT(DWORD, COINIT_MULTITHREADED, 0);
MIROLTA_CONSTANT(DWORD, COINIT_APARTMENTTHREADED, 2);
MIROLTA_CONSTANT(INT, MAX_PATH, 260);
#define INFINITE 0xFFFFFFFFu  // no constant of int in C

typedef void* HRSRC;
typedef LONG(WINAPI* FARPROC)(MIROLTA_NO_PARAMETERS);
#ifdef __cplusplus
  #define MAKEINTRESOURCEW(id) \
    (reinterpret_cast<LPWSTR>(static_cast<ULONG_PTR>(static_cast<WORD>(id))))
#else
  #define MAKEINTRESOURCEW(id) ((LPWSTR)(ULONG_PTR)(WORD)(id))
#endif

// Resources and the file of a module, which it attaches to the runtime when it is loaded.
MIROLTA_RUNTIME INT LoadStringW(HINSTANCE module, UINT id, LPWSTR text, INT capacity);
MIROLTA_RUNTIME HRSRC FindResourceW(HMODULE module, LPCWSTR name, LPCWSTR type);
MIROLTA_RUNTIME void* LoadResource(HMODULE module, HRSRC resource);
MIROLTA_RUNTIME void* LockResource(void* loaded);
MIROLTA_RUNTIME DWORD SizeofResource(HMODULE module, HRSRC resource);
MIROLTA_RUNTIME DWORD GetModuleFileNameW(HMODULE module, LPWSTR file, DWORD capacity);
MIROLTA_RUNTIME INT DisableThreadLibraryCalls(HMODULE module);
MIROLTA_RUNTIME HMODULE LoadLibraryW(LPCWSTR file);
MIROLTA_RUNTIME FARPROC GetProcAddress(HMODULE module, LPCSTR name);
MIROLTA_RUNTIME INT FreeLibrary(HMODULE module);

// Class objects. A class is found through the registry's InprocServer32 entry. Its module stays
// loaded while the runtime calls it and until a clean-up finds that its DllCanUnloadNow agrees.
MIROLTA_RUNTIME HRESULT CoInitializeEx(LPVOID reserved, DWORD model);
// The last call unloads idle modules; those that only initialized threads have used, at once.
MIROLTA_RUNTIME void CoUninitialize(MIROLTA_NO_PARAMETERS);
MIROLTA_RUNTIME HRESULT CoGetClassObject(REFCLSID id, DWORD context, LPVOID reserved, REFIID iid,
                                         LPVOID* out);
MIROLTA_RUNTIME HRESULT CoCreateInstance(REFCLSID id, IUnknown* outer, DWORD context, REFIID iid,
                                         LPVOID* out);
MIROLTA_RUNTIME HRESULT CLSIDFromProgID(LPCOLESTR prog_id, CLSID* id);
MIROLTA_RUNTIME HRESULT ProgIDFromCLSID(REFCLSID id, LPOLESTR* prog_id);
// Unloads modules that have been idle for `delay` milliseconds since the first clean-up that found
// them so; any use restarts the delay. A thread may still be at the end of its last Release when a
// module first looks idle: 0 is for callers who know that none is. INFINITE is the default delay,
// ten minutes. While one thread cleans up, calls by others do nothing.
MIROLTA_RUNTIME void CoFreeUnusedLibrariesEx(DWORD delay, DWORD reserved);
MIROLTA_RUNTIME void CoFreeUnusedLibraries(MIROLTA_NO_PARAMETERS);  // the default delay
