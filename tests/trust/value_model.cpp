#include "value_model.h"

#include <cmath>
#include <cstdio>
#include <cstring>

#include "mirolta.h"

namespace mirolta::test {

namespace {

VARTYPE BaseOf(VARTYPE type) {
  return static_cast<VARTYPE>(type & ~(VT_ARRAY | VT_BYREF));
}

size_t SizeOf(VARTYPE type) {
  if ((type & VT_ARRAY) != 0) return sizeof(SAFEARRAY*);
  switch (type) {
    case VT_I1:
    case VT_UI1:
      return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
      return 2;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
      return 8;
    case VT_BSTR:
    case VT_DISPATCH:
    case VT_UNKNOWN:
      return sizeof(void*);
    default:
      return 4;
  }
}

Result<VARIANT> FollowedOnce(const VARIANT& value, bool is_inner) {
  if ((V_VT(&value) & VT_BYREF) == 0) {
    return {IsType(V_VT(&value)) ? S_OK : DISP_E_BADVARTYPE, value};
  }
  const VARTYPE type = static_cast<VARTYPE>(V_VT(&value) & ~VT_BYREF);
  if (value.byref == nullptr || !IsType(V_VT(&value))) return {E_INVALIDARG};
  if (type == VT_VARIANT) {
    if (is_inner) return {E_INVALIDARG};
    return FollowedOnce(*value.pvarVal, true);
  }
  Result<VARIANT> out = {S_OK};
  VariantInit(&out.value);
  if (type == VT_DECIMAL) {
    std::memcpy(&out.value, value.byref, sizeof(DECIMAL));
  } else {
    std::memcpy(&out.value.byref, value.byref, SizeOf(type));
  }
  V_VT(&out.value) = type;
  return out;
}

// All other objects are this.
const FakeObject* ObjectIn(const VARIANT& value) {
  return static_cast<const FakeObject*>(static_cast<IDispatch*>(value.pdispVal));
}

// What coercion to a number makes of a text: digits alone are one, possibly too large for any.
Result<double> NumberInText(const Text& text) {
  double number = 0;
  for (const OLECHAR c : text) {
    if (c < '0' || c > '9') return {DISP_E_TYPEMISMATCH};
    number = number * 10 + (c - '0');
  }
  if (text.empty()) return {DISP_E_TYPEMISMATCH};
  return {std::isinf(number) ? DISP_E_OVERFLOW : S_OK, number};
}

// The value to be coerced. An object is its default value, but a null one no value at all; objects
// whose value cannot be had, or that say no more of themselves than that they are, do not fit.
Result<VARIANT> ToCoerce(const VARIANT& value) {
  if (!IsType(V_VT(&value))) return {DISP_E_BADVARTYPE};
  const Result<VARIANT> plain = Followed(value);
  if (plain.failed() || V_VT(&plain.value) != VT_DISPATCH) return plain;
  if (plain.value.pdispVal == nullptr) return {DISP_E_BADVARTYPE};
  const Result<VARIANT> content = Resolved(plain.value);
  return content.failed() ? Result<VARIANT>{DISP_E_TYPEMISMATCH} : content;
}

}  // namespace

bool IsObject(const VARIANT& value) {
  return V_VT(&value) == VT_DISPATCH || V_VT(&value) == VT_UNKNOWN;
}

bool IsType(VARTYPE type) {
  const VARTYPE base = BaseOf(type);
  return base < VT_VOID && base != 15 && (base > VT_NULL || base == type);
}

Result<VARIANT> Followed(const VARIANT& value) {
  return FollowedOnce(value, false);
}

Result<VARIANT> Copied(const VARIANT& value) {
  const Result<VARIANT> out = Followed(value);
  if (out.failed() || (V_VT(&out.value) & VT_ARRAY) == 0) return out;
  const SAFEARRAY* const array = out.value.parray;
  if (array == nullptr || array->pvData != nullptr) return out;
  for (USHORT i = 0; i < array->cDims; ++i) {
    if (array->rgsabound[i].cElements == 0) return out;
  }
  return {E_INVALIDARG};
}

bool IsZeroNumber(const VARIANT& value) {
  IUnknown* number = nullptr;
  if (!IsObject(value) || value.punkVal == nullptr ||
      value.punkVal->QueryInterface(IID_IPexBigNumber, reinterpret_cast<void**>(&number)) != S_OK) {
    return false;
  }
  number->Release();
  return true;
}

Result<VARIANT> Resolved(const VARIANT& value) {
  Result<VARIANT> plain = Copied(value);
  if (plain.failed()) return plain;
  if (IsZeroNumber(plain.value)) return {DISP_E_EXCEPTION};
  for (int chain = 0; IsObject(plain.value); ++chain) {
    if (chain == 100) return {DISP_E_TYPEMISMATCH};
    const FakeObject* const object = ObjectIn(plain.value);
    if (object == nullptr || !object->has_dispatch) return {E_FAIL};
    if (FAILED(object->status)) return {object->status};
    plain = Followed(object->value);
    if (plain.failed()) return plain;
  }
  return plain;
}

Result<double> NumberIn(const VARIANT& value) {
  switch (V_VT(&value)) {
    case VT_I1:
      return {S_OK, static_cast<double>(value.cVal)};
    case VT_UI1:
      return {S_OK, static_cast<double>(value.bVal)};
    case VT_I2:
      return {S_OK, static_cast<double>(value.iVal)};
    case VT_UI2:
      return {S_OK, static_cast<double>(value.uiVal)};
    case VT_I4:
    case VT_INT:
      return {S_OK, static_cast<double>(value.lVal)};
    case VT_UI4:
    case VT_UINT:
      return {S_OK, static_cast<double>(value.ulVal)};
    case VT_I8:
      return {S_OK, static_cast<double>(value.llVal)};
    case VT_UI8:
      return {S_OK, static_cast<double>(value.ullVal)};
    case VT_R4:
      return {S_OK, static_cast<double>(value.fltVal)};
    case VT_R8:
    case VT_DATE:
      return {S_OK, value.dblVal};
    case VT_CY:
      return {S_OK, static_cast<double>(value.cyVal.int64) / 10000};
    case VT_DECIMAL:
      return {S_OK, static_cast<double>(value.decVal.Lo64)};
    case VT_BOOL:
      return {S_OK, value.boolVal == VARIANT_FALSE ? 0.0 : -1.0};
    default:
      return {DISP_E_TYPEMISMATCH};
  }
}

Text TextIn(BSTR text) {
  return text == nullptr ? Text() : Text(text, SysStringLen(text));
}

Result<double> CoercedNumber(const VARIANT& value) {
  const Result<VARIANT> plain = ToCoerce(value);
  if (plain.failed()) return {plain.status};
  if (V_VT(&plain.value) == VT_EMPTY) return {S_OK, 0};
  if (V_VT(&plain.value) == VT_BSTR) return NumberInText(TextIn(plain.value.bstrVal));
  return NumberIn(plain.value);
}

Result<LONG> CoercedInteger(const VARIANT& value) {
  const Result<double> number = CoercedNumber(value);
  if (number.failed()) return {number.status};
  // An unsigned number of the same size keeps its bits.
  if (V_VT(&value) == VT_UI4) return {S_OK, value.lVal};
  if (!(number.value >= -2147483648.5 && number.value < 2147483647.5)) return {DISP_E_OVERFLOW};
  return {S_OK, static_cast<LONG>(std::nearbyint(number.value))};
}

size_t CoercedText::ByteCount() const {
  size_t count = 0;
  for (const OLECHAR c : text) {
    if (c == 0) break;
    count += c < 0x80 ? 1u : c < 0x800 ? 2u : 3u;
  }
  return count;
}

Result<CoercedText> TextFrom(const VARIANT& plain) {
  switch (V_VT(&plain)) {
    case VT_EMPTY:
      return {S_OK};
    case VT_BSTR:
      return {S_OK, {TextIn(plain.bstrVal)}};
    case VT_DATE:
      return {S_OK, {OLESTR("1/6/1900")}};  // the seventh day
    case kBytesType: {
      // Its bytes are the text's; no other arrays have one.
      const SAFEARRAY* const array = plain.parray;
      if (array == nullptr || array->cDims != 1) return {E_INVALIDARG};
      if (array->pvData == nullptr) return {S_OK};
      Text text(array->rgsabound[0].cElements / sizeof(OLECHAR), 0);
      if (!text.empty()) std::memcpy(&text[0], array->pvData, text.size() * sizeof(OLECHAR));
      return {S_OK, {text}};
    }
    default: {
      const Result<double> number = NumberIn(plain);
      if (number.failed()) return {number.status};
      char digits[64];
      std::snprintf(digits, sizeof digits, "%.15G", number.value);
      return {S_OK, {WideOf(digits)}};
    }
  }
}

Result<CoercedText> CoercedToText(const VARIANT& value) {
  const Result<VARIANT> plain = ToCoerce(value);
  return plain.failed() ? Result<CoercedText>{plain.status} : TextFrom(plain.value);
}

Result<size_t> ArrayByteCount(const SAFEARRAY* array, HRESULT status_of_null) {
  if (array == nullptr) return {status_of_null};
  size_t all = 1;
  for (USHORT i = 0; i < array->cDims; ++i) all *= array->rgsabound[i].cElements;
  return {S_OK, all == 0 ? 0 : array->rgsabound[array->cDims - 1].cElements};
}

}  // namespace mirolta::test
