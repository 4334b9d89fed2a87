#pragma once

#include <string>

#include "printing.h"

namespace mirolta::value_parity {

// An object whose default value is a VARIANT; it lives as long as the test.
class Object : public IDispatch {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    if (!IsEqualIID(iid, IID_IUnknown) && (!IsEqualIID(iid, IID_IDispatch) || refuses_dispatch)) {
      return E_NOINTERFACE;
    }
    *out = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references); }
  ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--references); }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return DISP_E_UNKNOWNNAME;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params,
                                   VARIANT* result, EXCEPINFO*, UINT*) override {
    last_call = Decimal(id) + "/" + Decimal(flags) + "/" + Decimal(params->cArgs);
    if (FAILED(status)) return status;
    return VariantCopy(result, &value);
  }

  VARIANT value;
  HRESULT status = S_OK;
  bool refuses_dispatch = false;
  int references = 1;
  std::string last_call;
};

}  // namespace mirolta::value_parity
