// Objects and values for the programs that measure the module.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "entry_points.h"
#include "mirolta.h"

namespace mirolta::test {

// Require ends the program if a call that must succeed fails: a failure would measure too little.
inline void Require(HRESULT status, const char* what) {
  if (SUCCEEDED(status)) return;
  std::fprintf(stderr, "%s: status %08lX\n", what, static_cast<unsigned long>(status));
  std::exit(2);
}

template <typename Interface>
Interface* Created(const CLSID& id, const IID& iid) {
  void* factory = nullptr;
  Require(DllGetClassObject(id, IID_IClassFactory, &factory), "DllGetClassObject");
  void* object = nullptr;
  Require(static_cast<IClassFactory*>(factory)->CreateInstance(nullptr, iid, &object),
          "CreateInstance");
  static_cast<IClassFactory*>(factory)->Release();
  return static_cast<Interface*>(object);
}

// ByteValue is a byte array of `count` bytes that differ. The caller clears it.
inline VARIANT ByteValue(ULONG count) {
  SAFEARRAYBOUND bound = {count, 0};
  VARIANT value;
  VariantInit(&value);
  V_VT(&value) = VT_ARRAY | VT_UI1;
  V_ARRAY(&value) = SafeArrayCreate(VT_UI1, 1, &bound);
  void* bytes = nullptr;
  Require(SafeArrayAccessData(V_ARRAY(&value), &bytes), "SafeArrayAccessData");
  for (ULONG i = 0; i < count; ++i)
    static_cast<BYTE*>(bytes)[i] = static_cast<BYTE>(i * 73 + i / 7 + 0x91);
  SafeArrayUnaccessData(V_ARRAY(&value));
  return value;
}

// TextValue is a text of `count` digits below `base`.
inline VARIANT TextValue(ULONG count, ULONG base) {
  VARIANT value;
  VariantInit(&value);
  V_VT(&value) = VT_BSTR;
  V_BSTR(&value) = SysAllocStringLen(nullptr, count);
  for (ULONG i = 0; i < count; ++i) {
    V_BSTR(&value)[i] = static_cast<OLECHAR>("123456789abcdef"[(i * 7 + i / 13 + 3) % (base - 1)]);
  }
  return value;
}

inline VARIANT NameValue(const OLECHAR* name) {
  VARIANT value;
  VariantInit(&value);
  V_VT(&value) = VT_BSTR;
  V_BSTR(&value) = SysAllocString(name);
  return value;
}

}  // namespace mirolta::test
