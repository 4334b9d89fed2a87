// SPDX-License-Identifier: MIT
// Scalar types of the platform, with its widths.
//
// The names are the platform's and global, in C and in C++. They live beside X11's, whichever header
// comes first: X11/Xmd.h has a BYTE, which is the same type, and two names that no header here
// declares: BOOL, a byte there (bool.h has the platform's, for programs without X11/Xmd.h; functions
// have INT, the same type), and LONG64, a macro there.
#pragma once

#include <stddef.h>
#include <stdint.h>
#ifndef __cplusplus
  #include <uchar.h>
#endif

#include "mirolta/language.h"

// A function of the runtime's shared library.
#ifdef __cplusplus
  #define MIROLTA_RUNTIME extern "C" __attribute__((visibility("default")))
#else
  #define MIROLTA_RUNTIME extern __attribute__((visibility("default")))
#endif

// The platform's calling conventions are all the compiler's own.
#ifndef STDMETHODCALLTYPE
  #define STDMETHODCALLTYPE
#endif
#ifndef STDAPICALLTYPE
  #define STDAPICALLTYPE
#endif
#ifndef WINAPI
  #define WINAPI
#endif

typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef char CHAR;
typedef int16_t SHORT;
typedef uint16_t USHORT;
typedef int32_t INT;
typedef uint32_t UINT;
typedef int32_t LONG;
typedef uint32_t ULONG;
typedef int64_t LONGLONG;
typedef uint64_t ULONGLONG;
typedef uint64_t ULONG64;
typedef float FLOAT;
typedef double DOUBLE;
typedef uintptr_t ULONG_PTR;
typedef size_t SIZE_T;
typedef void* PVOID;
typedef void* LPVOID;
typedef const void* LPCVOID;

#ifndef TRUE
  #define TRUE 1
#endif
#ifndef FALSE
  #define FALSE 0
#endif

typedef char16_t WCHAR;
typedef char16_t OLECHAR;
typedef WCHAR* LPWSTR;
typedef const WCHAR* LPCWSTR;
typedef const char* LPCSTR;
typedef char* LPSTR;
typedef OLECHAR* LPOLESTR;
typedef const OLECHAR* LPCOLESTR;
typedef OLECHAR* BSTR;  // counted: the four bytes before it hold its length in bytes
#define OLESTR(text) u##text

typedef int32_t HRESULT;
typedef int32_t SCODE;
typedef int16_t VARIANT_BOOL;
typedef uint16_t VARTYPE;
typedef double DATE;
typedef LONG DISPID;
typedef DISPID MEMBERID;
typedef DWORD HREFTYPE;
typedef DWORD LCID;
typedef WORD LANGID;

MIROLTA_CONSTANT(VARIANT_BOOL, VARIANT_TRUE, -1);
MIROLTA_CONSTANT(VARIANT_BOOL, VARIANT_FALSE, 0);

MIROLTA_CONSTANT(LCID, LOCALE_SYSTEM_DEFAULT, 0x0800);
MIROLTA_CONSTANT(LCID, LOCALE_USER_DEFAULT, 0x0400);

typedef struct HINSTANCE__* HINSTANCE;
typedef HINSTANCE HMODULE;

typedef union LARGE_INTEGER {
  __extension__ struct {
    DWORD LowPart;
    LONG HighPart;
  };
  LONGLONG QuadPart;
} LARGE_INTEGER;

typedef union ULARGE_INTEGER {
  __extension__ struct {
    DWORD LowPart;
    DWORD HighPart;
  };
  ULONGLONG QuadPart;
} ULARGE_INTEGER;

typedef struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
} FILETIME;

// Currency: ten-thousandths.
typedef union CY {
  __extension__ struct {
    ULONG Lo;
    LONG Hi;
  };
  LONGLONG int64;
} CY;
