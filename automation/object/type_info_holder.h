// The type information of one dispatch interface, shared by all objects of the class: loaded at the
// first late-bound call, released when the module is unloaded.
#pragma once

#include <atomic>

#include "module_state.h"
#include "platform.h"

namespace mirolta {

class TypeInfoHolder {
 public:
  explicit constexpr TypeInfoHolder(const IID& iid) : iid_(&iid) {}

  // Get returns the type information with a reference added, loading it if needed.
  // Errors: those of loading the type library; *out is then null, and a later call tries again.
  HRESULT Get(LCID locale, ITypeInfo** out);

  // The IDispatch operations of these names, for an object. `instance` is its dual interface.
  HRESULT GetIDsOfNames(LPOLESTR* names, UINT count, LCID locale, DISPID* ids);
  HRESULT Invoke(void* instance, DISPID id, LCID locale, WORD flags, DISPPARAMS* params,
                 VARIANT* result, EXCEPINFO* exception, UINT* bad_argument);

  const IID& InterfaceId() const { return *iid_; }

 private:
  struct CachedName {
    BSTR name;
    UINT length;
    DISPID id;
  };

  HRESULT Ensure(LCID locale);
  HRESULT Load(LCID locale);
  HRESULT BuildNames(ITypeInfo* info);
  const CachedName* FindCached(const OLECHAR* name) const;
  void DropNames();
  static void Release(void* holder);

  const IID* iid_;
  std::atomic<ITypeInfo*> info_{nullptr};
  CachedName* names_ = nullptr;
  UINT name_count_ = 0;
  ModuleCleanup cleanup_{};
};

}  // namespace mirolta
