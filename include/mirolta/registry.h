// SPDX-License-Identifier: MIT
// The registry: keys with a default value and named values, in text files, or in memory for
// one process.
#pragma once

#include "mirolta/status.h"

typedef struct HKEY__* HKEY;
typedef DWORD REGSAM;

MIROLTA_INLINE HKEY MiroltaRootKey(uint32_t number) {
#ifdef __cplusplus
  return reinterpret_cast<HKEY>(static_cast<uintptr_t>(number));
#else
  return (HKEY)(uintptr_t)number;
#endif
}
#define HKEY_CLASSES_ROOT MiroltaRootKey(0x80000000u)
#define HKEY_CURRENT_USER MiroltaRootKey(0x80000001u)
#define HKEY_LOCAL_MACHINE MiroltaRootKey(0x80000002u)

MIROLTA_CONSTANT(DWORD, REG_NONE, 0);
MIROLTA_CONSTANT(DWORD, REG_SZ, 1);
MIROLTA_CONSTANT(DWORD, REG_EXPAND_SZ, 2);
MIROLTA_CONSTANT(DWORD, REG_BINARY, 3);
MIROLTA_CONSTANT(DWORD, REG_DWORD, 4);
MIROLTA_CONSTANT(DWORD, REG_MULTI_SZ, 7);
MIROLTA_CONSTANT(DWORD, REG_OPTION_NON_VOLATILE, 0);
MIROLTA_CONSTANT(DWORD, REG_CREATED_NEW_KEY, 1);
MIROLTA_CONSTANT(DWORD, REG_OPENED_EXISTING_KEY, 2);
MIROLTA_CONSTANT(REGSAM, KEY_QUERY_VALUE, 0x01);
MIROLTA_CONSTANT(REGSAM, KEY_SET_VALUE, 0x02);
MIROLTA_CONSTANT(REGSAM, KEY_CREATE_SUB_KEY, 0x04);
MIROLTA_CONSTANT(REGSAM, KEY_ENUMERATE_SUB_KEYS, 0x08);
MIROLTA_CONSTANT(REGSAM, MAXIMUM_ALLOWED, 0x02000000);
MIROLTA_CONSTANT(REGSAM, KEY_READ, 0x00020019);
MIROLTA_CONSTANT(REGSAM, KEY_WRITE, 0x00020006);
MIROLTA_CONSTANT(REGSAM, KEY_ALL_ACCESS, 0x000F003F);

// All return a system error number, 0 for success. Names are case-insensitive; a null or empty
// value name is the key's default value. Sizes of text are in bytes with the terminator.
MIROLTA_RUNTIME LONG RegOpenKeyExW(HKEY key, LPCWSTR path, DWORD options, REGSAM access, HKEY* out);
MIROLTA_RUNTIME LONG RegCreateKeyExW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR key_class,
                                     DWORD options, REGSAM access, void* security, HKEY* out,
                                     DWORD* disposition);
MIROLTA_RUNTIME LONG RegCloseKey(HKEY key);
// Deletes the key if it has no subkeys.
MIROLTA_RUNTIME LONG RegDeleteKeyW(HKEY key, LPCWSTR path);
MIROLTA_RUNTIME LONG RegDeleteValueW(HKEY key, LPCWSTR name);
MIROLTA_RUNTIME LONG RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type,
                                    const BYTE* data, DWORD size);
MIROLTA_RUNTIME LONG RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* reserved, DWORD* type,
                                      BYTE* data, DWORD* size);
// Subkeys and values are numbered from 0; a default value that is set is number 0.
MIROLTA_RUNTIME LONG RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, DWORD* length,
                                   DWORD* reserved, LPWSTR key_class, DWORD* class_length,
                                   FILETIME* written);
MIROLTA_RUNTIME LONG RegEnumValueW(HKEY key, DWORD index, LPWSTR name, DWORD* length,
                                   DWORD* reserved, DWORD* type, BYTE* data, DWORD* size);
