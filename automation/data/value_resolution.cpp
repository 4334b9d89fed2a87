#include "value_resolution.h"

#include "array_bytes.h"
#include "owned_value.h"

namespace mirolta {

namespace {

bool IsObject(VARTYPE type) {
  return type == VT_DISPATCH || type == VT_UNKNOWN;
}

bool RefersToNothing(const VARIANT& value) {
  return (V_VT(&value) & VT_BYREF) != 0 && V_BYREF(&value) == nullptr;
}

// The value keeps its object alive during the call; *out is an empty VARIANT.
HRESULT ReadDefaultValue(const VARIANT& value, VARIANT* out) {
  IUnknown* const object = V_UNKNOWN(&value);
  if (object == nullptr) return E_FAIL;
  OwnedReference<IDispatch> dispatch;
  if (FAILED(dispatch.Query(object, IID_IDispatch)) || !dispatch) return E_FAIL;
  DISPPARAMS none = {nullptr, nullptr, 0, 0};
  return dispatch->Invoke(DISPID_VALUE, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                          out, nullptr, nullptr);
}

}  // namespace

HRESULT CopyReferent(const VARIANT& value, VARIANT* out) noexcept {
  const VARIANT& referent = Referent(value);
  const SAFEARRAY* const array = PassingArray(referent);
  if (array != nullptr && LacksData(array)) return E_INVALIDARG;
  return RefersToNothing(referent) ? E_INVALIDARG : VariantCopyInd(out, &value);
}

HRESULT ResolveValue(const VARIANT* input, VARIANT* out, CountsAsEmpty counts_as_empty) noexcept {
  if (out == nullptr) return E_POINTER;
  VariantInit(out);
  if (input == nullptr) return E_POINTER;

  OwnedVariant value;
  HRESULT status = CopyReferent(*input, value.Get());
  if (FAILED(status)) return status;
  for (int followed = 0; IsObject(value.Type()); ++followed) {
    if (followed == kMaximumDefaultValueChain) return DISP_E_TYPEMISMATCH;
    OwnedVariant inner;
    status = ReadDefaultValue(value.Value(), inner.Get());
    if (FAILED(status)) {
      IUnknown* const object = V_UNKNOWN(&value.Value());
      if (counts_as_empty == nullptr || object == nullptr || !counts_as_empty(object)) {
        return status;
      }
      inner.Put();
    }
    // Copied before the object is released: the value may refer to its memory.
    OwnedVariant plain;
    status = CopyReferent(inner.Value(), plain.Get());
    if (FAILED(status)) return status;
    plain.MoveTo(value.Put());
  }
  value.MoveTo(out);
  return S_OK;
}

}  // namespace mirolta
