// SPDX-License-Identifier: MIT
// Locks, counters, time, character sets and task memory.
#pragma once

#include <pthread.h>

#include "mirolta/guid.h"
#include "mirolta/status.h"

// A recursive lock.
typedef struct CRITICAL_SECTION {
  pthread_mutex_t mutex;
} CRITICAL_SECTION;

MIROLTA_RUNTIME void InitializeCriticalSection(CRITICAL_SECTION* section);
MIROLTA_RUNTIME void DeleteCriticalSection(CRITICAL_SECTION* section);
MIROLTA_RUNTIME void EnterCriticalSection(CRITICAL_SECTION* section);
MIROLTA_RUNTIME void LeaveCriticalSection(CRITICAL_SECTION* section);
MIROLTA_RUNTIME DWORD GetCurrentThreadId(MIROLTA_NO_PARAMETERS);

// Both return the new value, and are full barriers: the last release of an object sees all its uses.
MIROLTA_INLINE LONG InterlockedIncrement(LONG volatile* count) {
  return __atomic_add_fetch(count, 1, __ATOMIC_SEQ_CST);
}
MIROLTA_INLINE LONG InterlockedDecrement(LONG volatile* count) {
  return __atomic_sub_fetch(count, 1, __ATOMIC_SEQ_CST);
}

typedef struct SYSTEMTIME {
  WORD wYear;
  WORD wMonth;
  WORD wDayOfWeek;
  WORD wDay;
  WORD wHour;
  WORD wMinute;
  WORD wSecond;
  WORD wMilliseconds;
} SYSTEMTIME;

MIROLTA_CONSTANT(UINT, CP_ACP, 0);
MIROLTA_CONSTANT(UINT, CP_UTF8, 65001);
MIROLTA_CONSTANT(DWORD, MB_ERR_INVALID_CHARS, 0x08);
MIROLTA_CONSTANT(DWORD, WC_ERR_INVALID_CHARS, 0x80);  // UTF-8 only

MIROLTA_RUNTIME DWORD GetTickCount(MIROLTA_NO_PARAMETERS);
MIROLTA_RUNTIME void GetLocalTime(SYSTEMTIME* time);

// Conversions between 16-bit text and the character set with number code_page. A length of -1 is
// that of the terminated text with its terminator. With capacity 0 they return the length needed.
// They return 0 if the number is unknown or nothing could be converted.
MIROLTA_RUNTIME INT WideCharToMultiByte(UINT code_page, DWORD flags, LPCWSTR text, INT length,
                                        LPSTR bytes, INT capacity, LPCSTR default_character,
                                        INT* used_default);
MIROLTA_RUNTIME INT MultiByteToWideChar(UINT code_page, DWORD flags, LPCSTR bytes, INT length,
                                        LPWSTR text, INT capacity);

MIROLTA_RUNTIME LPVOID CoTaskMemAlloc(SIZE_T size);
MIROLTA_RUNTIME LPVOID CoTaskMemRealloc(LPVOID memory, SIZE_T size);
MIROLTA_RUNTIME void CoTaskMemFree(LPVOID memory);

// StringFromCLSID returns registry text with its braces, which the caller frees with CoTaskMemFree.
MIROLTA_RUNTIME HRESULT StringFromCLSID(REFCLSID id, LPOLESTR* text);
// Returns the characters written with the terminator, 39, or 0 if capacity is too small.
MIROLTA_RUNTIME INT StringFromGUID2(REFGUID id, LPOLESTR text, INT capacity);
// CLSIDFromString reads registry text.
// Errors: CO_E_CLASSSTRING for any other text.
MIROLTA_RUNTIME HRESULT CLSIDFromString(LPCOLESTR text, CLSID* id);
