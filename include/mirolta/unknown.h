// SPDX-License-Identifier: MIT
// The root of every interface, and class factories.
#pragma once

#ifdef __cplusplus
  #include <type_traits>
#endif

#include "mirolta/interface_id.h"
#include "mirolta/status.h"

MIROLTA_IDENTIFIER IID IID_IUnknown = MIROLTA_OLE_IID(0x00000000);
MIROLTA_IDENTIFIER IID IID_IClassFactory = MIROLTA_OLE_IID(0x00000001);

typedef struct IUnknown IUnknown;
typedef struct IClassFactory IClassFactory;
typedef IUnknown* LPUNKNOWN;

#ifdef __cplusplus
struct IUnknown {
  virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) = 0;
  virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
  virtual ULONG STDMETHODCALLTYPE Release() = 0;

 protected:
  // Not virtual: a virtual destructor would take slots. Objects end by Release only.
  ~IUnknown() = default;
};

struct IClassFactory : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** out) = 0;
  virtual HRESULT STDMETHODCALLTYPE LockServer(INT lock) = 0;
};

MIROLTA_BIND_IID(IUnknown);
MIROLTA_BIND_IID(IClassFactory);

// IID_PPV_ARGS gives QueryInterface and CoCreateInstance the last two arguments for a pointer to an
// interface.
template <typename Interface>
inline void** IID_PPV_ARGS_Helper(Interface** out) {
  static_assert(sizeof(static_cast<IUnknown*>(*out)) != 0, "out is a pointer to an interface");
  return reinterpret_cast<void**>(out);
}
  #ifndef IID_PPV_ARGS
    #define IID_PPV_ARGS(out) \
      mirolta::IdOf<std::remove_reference_t<decltype(**(out))>>::value, IID_PPV_ARGS_Helper(out)
  #endif
#endif
