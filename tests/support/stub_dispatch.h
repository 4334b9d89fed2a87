// The members of automation objects that a test does not use.
#pragma once

#include "platform.h"

namespace mirolta::test {

// StubDispatch is an object without members that belongs to its test: it counts references and is
// not deleted.
template <typename Interface = IDispatch>
class StubDispatch : public Interface {
 public:
  StubDispatch() = default;
  StubDispatch(const StubDispatch&) = delete;
  StubDispatch& operator=(const StubDispatch&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    if (iid != IID_IUnknown && (iid != IID_IDispatch || !has_dispatch)) return E_NOINTERFACE;
    *out = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return DISP_E_UNKNOWNNAME;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                   UINT*) override {
    return DISP_E_MEMBERNOTFOUND;
  }

  bool has_dispatch = true;
  ULONG references = 1;

 protected:
  ~StubDispatch() = default;
};

}  // namespace mirolta::test
