// The base of the automation classes: a dual interface implemented by the module's type
// information, error information, and IStream for some classes.
#pragma once

#include <new>

#include "object_core.h"

namespace mirolta {

// DispatchObject<kClass, Dual> is a class with the dispatch interface Dual; DispatchObject<kClass,
// Dual, IStream> is also a stream. kClass is its ClassDescription. QueryInterface supports IStream
// and ISequentialStream (streams only), Dual and IDispatch (the same pointer), and
// ISupportErrorInfo; IUnknown is the first of them.
template <const ClassDescription& kClass, typename Dual, typename... Stream>
class DispatchObject : public ObjectCore, public Stream..., public Dual, public ISupportErrorInfo {
  static_assert(sizeof...(Stream) <= 1);

 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    return Query(iid, out);
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return Reference(); }
  ULONG STDMETHODCALLTYPE Release() override { return Unreference(); }

  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    if (count == nullptr) return E_POINTER;
    *count = 1;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID locale, ITypeInfo** out) override {
    return out == nullptr ? E_POINTER : kClass.type_info->Get(locale, out);
  }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID locale,
                                          DISPID* ids) override {
    return kClass.type_info->GetIDsOfNames(names, count, locale, ids);
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID locale, WORD flags, DISPPARAMS* params,
                                   VARIANT* result, EXCEPINFO* exception,
                                   UINT* bad_argument) override {
    return kClass.type_info->Invoke(static_cast<Dual*>(this), id, locale, flags, params, result,
                                    exception, bad_argument);
  }

  HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) override {
    return iid == kClass.type_info->InterfaceId() ? S_OK : S_FALSE;
  }

 protected:
  explicit DispatchObject(IUnknown* outer) : ObjectCore(outer) {}

  static HRESULT Raise(UINT message_id) { return ObjectCore::Raise(kClass, message_id); }

  IUnknown* FirstInterface() override {
    if constexpr (sizeof...(Stream) > 0) {
      return (static_cast<Stream*>(this), ...);
    } else {
      return static_cast<Dual*>(this);
    }
  }

  IUnknown* FindInterface(REFIID iid) override {
    if constexpr (sizeof...(Stream) > 0) {
      if (iid == IID_IStream || iid == IID_ISequentialStream) return FirstInterface();
    }
    if (iid == kClass.type_info->InterfaceId() || iid == IID_IDispatch)
      return static_cast<Dual*>(this);
    if (iid == IID_ISupportErrorInfo) return static_cast<ISupportErrorInfo*>(this);
    return nullptr;
  }
};

// CreateObject is the instance creator of every class. outer is the object that aggregates the new
// one, or null.
// Errors: E_OUTOFMEMORY, and those of FinishObject; nothing remains allocated.
template <typename Class>
HRESULT CreateObject(IUnknown* outer, REFIID iid, void** out) {
  Class* const object = new (std::nothrow) Class(outer);
  if (object == nullptr) return E_OUTOFMEMORY;
  return FinishObject(object, iid, out);
}

}  // namespace mirolta
