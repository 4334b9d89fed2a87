#include "byte_view.h"

#include "owned_value.h"
#include "value_conversion.h"

namespace mirolta {

namespace {

// An array that can be borrowed; null for anything that the copying path may refuse, so that it
// returns the status.
SAFEARRAY* StandingArray(const VARIANT& value) {
  SAFEARRAY* const array = PassingArray(value);
  return array != nullptr && SafeArrayGetDim(array) > 0 ? array : nullptr;
}

bool IsByteArray(const VARIANT& value) {
  return (V_VT(&value) & ~VT_BYREF) == kByteArrayType;
}

}  // namespace

void ByteView::Close() noexcept {
  if (locked_ != nullptr) SafeArrayUnaccessData(locked_);
  locked_ = nullptr;
  owned_.Clear();
  data_ = nullptr;
  count_ = 0;
  from_array_ = false;
}

HRESULT ByteView::Borrow(SAFEARRAY* array) noexcept {
  uint32_t count = 0;
  HRESULT status = ArrayByteCount(array, &count);
  if (FAILED(status)) return status;
  from_array_ = true;
  if (count == 0) return S_OK;
  void* data = nullptr;
  status = SafeArrayAccessData(array, &data);
  if (FAILED(status)) return status;
  locked_ = array;
  data_ = static_cast<const uint8_t*>(data);
  count_ = count;
  return S_OK;
}

HRESULT ByteView::OwnArray(SAFEARRAY* array) noexcept {
  const HRESULT status = SafeArrayToBytes(array, &owned_);
  if (FAILED(status)) return status;
  from_array_ = true;
  data_ = owned_.Data();
  count_ = owned_.Count();
  return S_OK;
}

HRESULT ByteView::OwnText(const OLECHAR* text, LONG code_page) noexcept {
  const HRESULT status = WideToBytes(text, code_page, &owned_);
  data_ = owned_.Data();
  count_ = owned_.Count();
  return status;
}

// Opens a private copy that is not an object, or one to be coerced.
HRESULT ByteView::OwnCopy(VARIANT* copy, LONG code_page) noexcept {
  if (V_VT(copy) == kByteArrayType) return OwnArray(V_ARRAY(copy));
  const HRESULT status = CoerceToText(copy);
  return FAILED(status) ? status : OwnText(V_BSTR(copy), code_page);
}

// Byte arrays and texts need no copy of the value; false for anything else.
bool ByteView::OpenInPlace(const VARIANT& value, LONG code_page, HRESULT* status) noexcept {
  const VARIANT& standing = Referent(value);
  SAFEARRAY* const array = IsByteArray(standing) ? StandingArray(standing) : nullptr;
  if (array != nullptr) {
    *status = Borrow(array);
    return true;
  }
  if (V_VT(&standing) == VT_BSTR) {
    *status = OwnText(V_BSTR(&standing), code_page);
    return true;
  }
  if (V_VT(&standing) == (VT_BYREF | VT_BSTR) && V_BSTRREF(&standing) != nullptr) {
    *status = OwnText(*V_BSTRREF(&standing), code_page);
    return true;
  }
  return false;
}

HRESULT ByteView::Open(const VARIANT& value, LONG code_page) noexcept {
  Close();
  HRESULT status = S_OK;
  if (OpenInPlace(value, code_page, &status)) return status;
  OwnedVariant copy;
  status = ResolveValue(&value, copy.Put());
  return FAILED(status) ? status : OwnCopy(copy.Get(), code_page);
}

HRESULT ByteView::OpenUnresolved(const VARIANT& value, LONG code_page) noexcept {
  Close();
  HRESULT status = S_OK;
  if (OpenInPlace(value, code_page, &status)) return status;
  OwnedVariant copy;
  status = ResolveValue(&value, copy.Put());
  if (FAILED(status)) return status;
  if (copy.Type() != kByteArrayType) return OwnCopy(copy.Get(), code_page);
  // The bytes are read from the value as given, so it must be the array itself.
  status = VariantToByteArrayBytes(value, &owned_);
  from_array_ = SUCCEEDED(status);
  data_ = owned_.Data();
  count_ = owned_.Count();
  return status;
}

HRESULT ByteView::OpenByteArray(const VARIANT& value) noexcept {
  Close();
  SAFEARRAY* const array = StandingArray(Referent(value));
  if (array != nullptr) return Borrow(array);
  const HRESULT status = VariantToByteArrayBytes(value, &owned_);
  data_ = owned_.Data();
  count_ = owned_.Count();
  return status;
}

}  // namespace mirolta
