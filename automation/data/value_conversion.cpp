#include "value_conversion.h"

#include "owned_value.h"

namespace mirolta {

HRESULT VariantToBytes(const VARIANT& input, LONG code_page, ByteString* out) noexcept {
  if (out == nullptr) return E_POINTER;
  out->Clear();
  OwnedVariant value;
  HRESULT status = ResolveValue(&input, value.Put());
  if (FAILED(status)) return status;
  if (value.Type() == kByteArrayType) return SafeArrayToBytes(V_ARRAY(value.Get()), out);
  status = CoerceToText(value.Get());
  if (FAILED(status)) return status;
  return WideToBytes(V_BSTR(value.Get()), code_page, out);
}

HRESULT VariantToByteArrayBytes(const VARIANT& input, ByteString* out) noexcept {
  if (out == nullptr) return E_POINTER;
  out->Clear();
  OwnedVariant value;
  const HRESULT status = CopyReferent(input, value.Get());
  if (FAILED(status)) return status;
  if (value.Type() == VT_EMPTY) return S_OK;
  if (!PassesAsByteArray(value.Type())) return DISP_E_TYPEMISMATCH;
  SAFEARRAY* const array = V_ARRAY(value.Get());
  return array != nullptr ? SafeArrayToBytes(array, out) : DISP_E_TYPEMISMATCH;
}

HRESULT CoerceToText(VARIANT* value) noexcept {
  return V_VT(value) == VT_BSTR ? S_OK : VariantChangeType(value, value, 0, VT_BSTR);
}

}  // namespace mirolta
