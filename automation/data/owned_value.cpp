#include "owned_value.h"

#include "array_bytes.h"

namespace mirolta {

namespace {

void WipeByteArray(SAFEARRAY* array) {
  uint32_t count = 0;
  void* data = nullptr;
  if (array == nullptr || FAILED(ArrayByteCount(array, &count)) || count == 0) return;
  if (FAILED(SafeArrayAccessData(array, &data))) return;
  WipeMemory(data, count);
  SafeArrayUnaccessData(array);
}

}  // namespace

void WipeAndClear(VARIANT* value) noexcept {
  if (V_VT(value) == VT_BSTR) {
    WipeAndFreeText(V_BSTR(value));
    VariantInit(value);
    return;
  }
  if (V_VT(value) == kByteArrayType) WipeByteArray(V_ARRAY(value));
  if (FAILED(VariantClear(value))) VariantInit(value);
}

void WipeAndFreeText(BSTR text) noexcept {
  if (text == nullptr) return;
  WipeMemory(text, SysStringByteLen(text));
  SysFreeString(text);
}

}  // namespace mirolta
