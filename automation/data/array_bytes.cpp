#include "array_bytes.h"

#include <cstring>

namespace mirolta {

namespace {

// True if a dimension has no elements: the array then has no data, whatever the other dimensions.
bool HoldsNothing(const SAFEARRAY* array) {
  for (USHORT i = 0; i < array->cDims; ++i) {
    if (array->rgsabound[i].cElements == 0) return true;
  }
  return false;
}

}  // namespace

const VARIANT& Referent(const VARIANT& value) noexcept {
  const bool refers = V_VT(&value) == (VT_BYREF | VT_VARIANT) && V_VARIANTREF(&value) != nullptr;
  return refers ? *V_VARIANTREF(&value) : value;
}

SAFEARRAY* PassingArray(const VARIANT& value) noexcept {
  const VARTYPE type = V_VT(&value);
  if (!PassesAsByteArray(static_cast<VARTYPE>(type & ~VT_BYREF))) return nullptr;
  if ((type & VT_BYREF) == 0) return V_ARRAY(&value);
  return V_ARRAYREF(&value) != nullptr ? *V_ARRAYREF(&value) : nullptr;
}

bool LacksData(const SAFEARRAY* array) noexcept {
  return array->pvData == nullptr && array->cDims != 0 && !HoldsNothing(array);
}

HRESULT ArrayByteCount(SAFEARRAY* array, uint32_t* count) noexcept {
  if (count == nullptr) return E_POINTER;
  *count = 0;
  if (array == nullptr) return E_POINTER;
  if (LacksData(array)) return E_INVALIDARG;
  LONG lower = 0;
  LONG upper = 0;
  HRESULT status = SafeArrayGetLBound(array, 1, &lower);
  if (FAILED(status)) return status;
  status = SafeArrayGetUBound(array, 1, &upper);
  if (FAILED(status)) return status;
  if (upper < lower || HoldsNothing(array)) return S_OK;
  // Unsigned: the difference of two bounds may pass 2^31.
  *count = static_cast<uint32_t>(upper) - static_cast<uint32_t>(lower) + 1;
  return S_OK;
}

HRESULT SafeArrayToBytes(SAFEARRAY* array, ByteString* out) noexcept {
  if (out == nullptr) return E_POINTER;
  out->Clear();
  uint32_t count = 0;
  HRESULT status = ArrayByteCount(array, &count);
  if (FAILED(status) || count == 0) return status;
  void* data = nullptr;
  status = SafeArrayAccessData(array, &data);
  if (FAILED(status)) return status;
  const bool copied = out->Assign(static_cast<const uint8_t*>(data), count);
  SafeArrayUnaccessData(array);
  return copied ? S_OK : E_OUTOFMEMORY;
}

HRESULT BytesToSafeArray(const uint8_t* bytes, uint32_t count, SAFEARRAY** out) noexcept {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  if (bytes == nullptr && count != 0) return E_POINTER;
  SAFEARRAY* const array = CreateByteArray(count);
  if (array == nullptr) return E_OUTOFMEMORY;
  if (count != 0) {
    void* data = nullptr;
    HRESULT status = SafeArrayAccessData(array, &data);
    if (SUCCEEDED(status)) {
      std::memcpy(data, bytes, count);
      status = SafeArrayUnaccessData(array);
    }
    if (FAILED(status)) {
      SafeArrayDestroy(array);
      return status;
    }
  }
  *out = array;
  return S_OK;
}

HRESULT BytesToVariant(const uint8_t* bytes, uint32_t count, VARIANT* out) noexcept {
  if (out == nullptr) return E_POINTER;
  VariantInit(out);
  SAFEARRAY* array = nullptr;
  const HRESULT status = BytesToSafeArray(bytes, count, &array);
  if (FAILED(status)) return status;
  V_VT(out) = kByteArrayType;
  V_ARRAY(out) = array;
  return S_OK;
}

}  // namespace mirolta
