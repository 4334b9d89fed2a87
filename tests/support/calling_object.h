// An object whose default value is read by code of the test, as a script's object is.
#pragma once

#include <functional>
#include <utility>

#include "platform.h"

namespace mirolta::test {

// CallingObject lives on the stack. Reading its value runs `call`, then gives its text; without a
// text the value is null.
class CallingObject final : public IDispatch {
 public:
  explicit CallingObject(std::function<void()> call, const OLECHAR* text = OLESTR("abc"))
      : call_(std::move(call)), text_(text) {}
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = iid == IID_IUnknown || iid == IID_IDispatch ? this : nullptr;
    return *out != nullptr ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result,
                                   EXCEPINFO*, UINT*) override {
    call_();
    if (FAILED(status)) return status;
    V_VT(result) = text_ != nullptr ? VT_BSTR : VT_NULL;
    result->bstrVal = SysAllocString(text_);
    return S_OK;
  }

  HRESULT status = S_OK;  // of reading the value

 private:
  std::function<void()> call_;
  const OLECHAR* text_;
};

}  // namespace mirolta::test
