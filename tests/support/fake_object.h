// Objects with a default value, for tests.
#pragma once

#include <utility>

#include "test_values.h"

namespace mirolta::test {

// FakeObject lives on the stack and counts its references; its default value is `value`, or the
// status of reading it is `status`.
class FakeObject final : public IDispatch {
 public:
  FakeObject() = default;
  explicit FakeObject(TestValue default_value) : value(std::move(default_value)) {}

  TestValue value;
  HRESULT status = S_OK;
  bool has_dispatch = true;
  bool gives_null = false;  // QueryInterface succeeds without an interface
  int reads = 0;
  WORD last_flags = 0;  // of the last call
  ULONG references = 1;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    if (gives_null) return S_OK;
    if (IsEqualGUID(iid, IID_IUnknown) || (has_dispatch && IsEqualGUID(iid, IID_IDispatch))) {
      *out = static_cast<IDispatch*>(this);
      AddRef();
      return S_OK;
    }
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params,
                                   VARIANT* result, EXCEPINFO*, UINT*) override {
    last_flags = flags;
    if (id != DISPID_VALUE || (flags & DISPATCH_PROPERTYGET) == 0 || params == nullptr ||
        params->cArgs != 0 || result == nullptr) {
      return DISP_E_MEMBERNOTFOUND;
    }
    ++reads;
    return FAILED(status) ? status : VariantCopy(result, &value);
  }
};

}  // namespace mirolta::test
