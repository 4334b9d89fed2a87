// SPDX-License-Identifier: MIT
// 16-byte identifiers.
#pragma once

#include "mirolta/base_types.h"

typedef struct GUID {
  DWORD Data1;
  WORD Data2;
  WORD Data3;
  BYTE Data4[8];
} GUID;
typedef GUID IID;
typedef GUID CLSID;

#ifdef __cplusplus
typedef const GUID& REFGUID;
typedef const IID& REFIID;
typedef const CLSID& REFCLSID;

constexpr bool IsEqualGUID(REFGUID a, REFGUID b) {
  if (a.Data1 != b.Data1 || a.Data2 != b.Data2 || a.Data3 != b.Data3) return false;
  for (int i = 0; i < 8; ++i) {
    if (a.Data4[i] != b.Data4[i]) return false;
  }
  return true;
}
constexpr bool operator==(REFGUID a, REFGUID b) {
  return IsEqualGUID(a, b);
}
constexpr bool operator!=(REFGUID a, REFGUID b) {
  return !IsEqualGUID(a, b);
}
#else
typedef const GUID* REFGUID;
typedef const IID* REFIID;
typedef const CLSID* REFCLSID;

static inline INT IsEqualGUID(REFGUID a, REFGUID b) {
  if (a->Data1 != b->Data1 || a->Data2 != b->Data2 || a->Data3 != b->Data3) return 0;
  for (int i = 0; i < 8; ++i) {
    if (a->Data4[i] != b->Data4[i]) return 0;
  }
  return 1;
}
#endif
#define IsEqualIID(a, b) IsEqualGUID(a, b)
#define IsEqualCLSID(a, b) IsEqualGUID(a, b)

MIROLTA_IDENTIFIER GUID GUID_NULL = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};
#define IID_NULL GUID_NULL
#define CLSID_NULL GUID_NULL

// The identifiers of the platform's own interfaces that share one tail.
#define MIROLTA_OLE_IID(first)     \
  {                                \
    first, 0, 0, {                 \
      0xC0, 0, 0, 0, 0, 0, 0, 0x46 \
    }                              \
  }
