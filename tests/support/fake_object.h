// Objects with a default value, for tests.
#pragma once

#include <utility>

#include "stub_dispatch.h"
#include "test_values.h"

namespace mirolta::test {

// FakeObject lives on the stack and counts its references; its default value is `value`, or the
// status of reading it is `status`.
class FakeObject final : public StubDispatch<> {
 public:
  FakeObject() = default;
  explicit FakeObject(TestValue default_value) : value(std::move(default_value)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    if (!gives_null) return StubDispatch::QueryInterface(iid, out);
    *out = nullptr;
    return S_OK;
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

  TestValue value;
  HRESULT status = S_OK;
  bool gives_null = false;  // QueryInterface succeeds without an interface
  int reads = 0;
  WORD last_flags = 0;  // of the last call
};

}  // namespace mirolta::test
