#include "key_conversion.h"

#include "owned_value.h"
#include "utf16_bytes.h"
#include "value_conversion.h"

namespace mirolta {

namespace {

HRESULT KeyFromUnits(BSTR text, ByteString* key) {
  const UINT length = SysStringLen(text);
  // Cannot overflow: a BSTR stores its byte length in 32 bits.
  if (!key->Allocate(length * 2)) return E_OUTOFMEMORY;
  WriteUnits(text, length, UnitOrder::kLowFirst, key->Data());
  return S_OK;
}

// Converted with its terminator, to distinguish an empty text from one that cannot be converted.
HRESULT KeyFromCharacterSet(const OLECHAR* text, UINT character_set, ByteString* key) {
  const INT size = WideCharToMultiByte(character_set, 0, text, -1, nullptr, 0, nullptr, nullptr);
  if (size <= 0) return DISP_E_TYPEMISMATCH;
  if (!key->Allocate(static_cast<uint32_t>(size))) return E_OUTOFMEMORY;
  const INT written = WideCharToMultiByte(
      character_set, 0, text, -1, reinterpret_cast<LPSTR>(key->Data()), size, nullptr, nullptr);
  if (written <= 0) {
    key->Clear();
    return DISP_E_TYPEMISMATCH;
  }
  key->Shorten(static_cast<uint32_t>(written - 1));
  return S_OK;
}

}  // namespace

HRESULT KeyFromVariant(const VARIANT& value, LONG code_page, ByteString* key,
                       KeyArrays arrays) noexcept {
  if (key == nullptr) return E_POINTER;
  key->Clear();
  OwnedVariant copy;
  HRESULT status = CopyReferent(value, copy.Get());
  if (FAILED(status)) return status;
  if (copy.Type() == kByteArrayType) {
    SAFEARRAY* const array = V_ARRAY(copy.Get());
    const bool one_dimension = array == nullptr || SafeArrayGetDim(array) == 1;
    if (arrays == KeyArrays::kOneDimension && !one_dimension) return DISP_E_TYPEMISMATCH;
    return SafeArrayToBytes(array, key);
  }
  status = CoerceToText(copy.Get());
  if (FAILED(status)) return status;
  const BSTR text = V_BSTR(copy.Get());
  if (code_page < 0) return KeyFromUnits(text, key);
  // A null BSTR is an empty text.
  return KeyFromCharacterSet(text != nullptr ? text : OLESTR(""), static_cast<UINT>(code_page),
                             key);
}

void PlainKey::Read(const VARIANT& value) noexcept {
  read_ = CopyReferent(value, value_.Get());
  const bool is_object = value_.Type() == VT_DISPATCH || value_.Type() == VT_UNKNOWN;
  if (SUCCEEDED(read_) && is_object) read_ = CoerceToText(value_.Get());
}

}  // namespace mirolta
