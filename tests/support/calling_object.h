// An object whose default value is read by code of the test, as a script's object is.
#pragma once

#include <functional>
#include <utility>

#include "stub_dispatch.h"

namespace mirolta::test {

// CallingObject lives on the stack. Reading its value runs `call`, then gives its text; without a
// text the value is null.
class CallingObject final : public StubDispatch<> {
 public:
  explicit CallingObject(std::function<void()> call, const OLECHAR* text = OLESTR("abc"))
      : call_(std::move(call)), text_(text) {}
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result,
                                   EXCEPINFO*, UINT*) override {
    if (id != DISPID_VALUE || result == nullptr) return DISP_E_MEMBERNOTFOUND;
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
