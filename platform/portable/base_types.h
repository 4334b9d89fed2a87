// Scalar types of the platform, with its widths.
#pragma once

#include <cstddef>
#include <cstdint>

// Exports a function from the runtime's shared library.
#define MIROLTA_RUNTIME __attribute__((visibility("default")))

#define STDMETHODCALLTYPE
#define WINAPI
#define STDAPICALLTYPE
// An entry point of a module. On Windows the definition file names them instead.
#define MIROLTA_ENTRY extern "C" __attribute__((visibility("default")))

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
typedef int64_t LONG64;
typedef uint64_t ULONG64;
typedef int32_t BOOL;
typedef float FLOAT;
typedef double DOUBLE;
typedef uintptr_t ULONG_PTR;
typedef size_t SIZE_T;
typedef void* PVOID;
typedef void* LPVOID;
typedef const void* LPCVOID;

#define TRUE 1
#define FALSE 0

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

#define VARIANT_TRUE (static_cast<VARIANT_BOOL>(-1))
#define VARIANT_FALSE (static_cast<VARIANT_BOOL>(0))

constexpr LCID LOCALE_SYSTEM_DEFAULT = 0x0800;
constexpr LCID LOCALE_USER_DEFAULT = 0x0400;

typedef struct HINSTANCE__* HINSTANCE;
typedef HINSTANCE HMODULE;

union LARGE_INTEGER {
  __extension__ struct {
    DWORD LowPart;
    LONG HighPart;
  };
  LONGLONG QuadPart;
};

union ULARGE_INTEGER {
  __extension__ struct {
    DWORD LowPart;
    DWORD HighPart;
  };
  ULONGLONG QuadPart;
};

struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

// Currency: ten-thousandths.
union CY {
  __extension__ struct {
    ULONG Lo;
    LONG Hi;
  };
  LONGLONG int64;
};
