// What the handheld's system has under another name than the desktop's, or only there.
#pragma once

#include "windows/windows_headers.h"

extern "C" {
// Unpredictable bytes of the system.
__declspec(dllimport) BOOL WINAPI CeGenRandom(DWORD count, BYTE* bytes);
__declspec(dllimport) FARPROC WINAPI GetProcAddressW(HMODULE module, const WCHAR* name);
}

// Names of functions are wide. Callers pass a literal.
#define GetProcAddress(module, name) GetProcAddressW(module, L"" name)
// A loaded resource is its address.
#define LockResource(resource) (resource)

// The system's lock is not larger than the desktop's, whose declaration objects are laid out by.
inline constexpr size_t kHandheldLockSize = 20;
static_assert(sizeof(CRITICAL_SECTION) >= kHandheldLockSize);
