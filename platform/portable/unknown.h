// The root of every interface, and class factories.
#pragma once

#include "portable/guid.h"
#include "portable/status.h"

inline constexpr IID IID_IUnknown = MIROLTA_OLE_IID(0x00000000);
inline constexpr IID IID_IClassFactory = MIROLTA_OLE_IID(0x00000001);

struct IUnknown {
  virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) = 0;
  virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
  virtual ULONG STDMETHODCALLTYPE Release() = 0;

 protected:
  // Not virtual: a virtual destructor would take slots. Objects end by Release only.
  ~IUnknown() = default;
};
typedef IUnknown* LPUNKNOWN;

struct IClassFactory : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** out) = 0;
  virtual HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) = 0;
};
