// Values for tests of the automation runtime: an owning VARIANT and an object with a default value.
#pragma once

#include <string>

#include "platform.h"

namespace mirolta {

using Text = std::basic_string<OLECHAR>;

// Value owns a VARIANT.
class Value {
 public:
  Value() { VariantInit(&variant_); }
  explicit Value(VARTYPE type) : Value() { variant_.vt = type; }
  ~Value() { VariantClear(&variant_); }
  Value(const Value&) = delete;
  Value& operator=(const Value&) = delete;

  VARIANT* operator->() { return &variant_; }
  VARIANT* get() { return &variant_; }
  VARTYPE type() const { return variant_.vt; }
  Text text() const {
    return variant_.vt == VT_BSTR ? Text(variant_.bstrVal, SysStringLen(variant_.bstrVal))
                                  : Text(OLESTR("no text"));
  }

 private:
  VARIANT variant_;
};

inline void SetText(Value* value, const Text& text) {
  VariantClear(value->get());
  (*value)->bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  (*value)->vt = VT_BSTR;
}
inline void SetLong(Value* value, LONG number) {
  VariantClear(value->get());
  (*value)->lVal = number;
  (*value)->vt = VT_I4;
}

// CountedObject is a dispatch object on the stack whose default value is `value`; its references
// are counted, so that a test can check that each one was released.
class CountedObject final : public IDispatch {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    const bool known =
        IsEqualIID(iid, IID_IUnknown) || (!refuses_dispatch && IsEqualIID(iid, IID_IDispatch));
    if (!known) return E_NOINTERFACE;
    *out = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS*,
                                   VARIANT* result, EXCEPINFO*, UINT*) override {
    last_id = id;
    last_flags = flags;
    return FAILED(status) ? status : VariantCopy(result, value.get());
  }

  Value value;
  HRESULT status = S_OK;
  bool refuses_dispatch = false;
  ULONG references = 1;
  DISPID last_id = -9;
  WORD last_flags = 0;
};

}  // namespace mirolta
