#pragma once

#include <string>

#include "printing.h"
#include "stub_dispatch.h"

namespace mirolta::value_parity {

// An object whose default value is a VARIANT; it lives as long as the test.
class Object final : public test::StubDispatch<> {
 public:
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params,
                                   VARIANT* result, EXCEPINFO*, UINT*) override {
    last_call = Decimal(id) + "/" + Decimal(flags) + "/" + Decimal(params->cArgs);
    return FAILED(status) ? status : VariantCopy(result, &value);
  }

  VARIANT value;
  HRESULT status = S_OK;
  std::string last_call;
};

}  // namespace mirolta::value_parity
