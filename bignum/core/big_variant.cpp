#include "big_variant.h"

#include "array_bytes.h"
#include "big_bytes.h"
#include "big_text.h"
#include "byte_string.h"
#include "byte_view.h"
#include "mirolta.h"
#include "owned_value.h"
#include "value_resolution.h"

namespace mirolta {

namespace {

HRESULT FromWord(BigInt& n, uint32_t word) {
  const uint8_t bytes[4] = {static_cast<uint8_t>(word >> 24), static_cast<uint8_t>(word >> 16),
                            static_cast<uint8_t>(word >> 8), static_cast<uint8_t>(word)};
  return FromBytes(n, bytes, sizeof(bytes));
}

HRESULT FromInteger(BigInt& n, const VARIANT& value) {
  // The platform rejects negative numbers of every other type, but reinterprets those of VT_I4.
  // The others of that type keep their bits.
  if (V_VT(&value) == VT_I4) {
    return V_I4(&value) < 0 ? DISP_E_OVERFLOW : FromWord(n, static_cast<uint32_t>(V_I4(&value)));
  }
  VARIANT word;
  VariantInit(&word);
  const HRESULT status = VariantChangeType(&word, &value, 0, VT_UI4);
  return FAILED(status) ? status : FromWord(n, V_UI4(&word));
}

HRESULT FromDigits(BigInt& n, BSTR text, NumberBase base) {
  const uint32_t length = SysStringLen(text);
  return base == NumberBase::kHexadecimal ? FromHexText(n, text, length)
                                          : FromDecimalText(n, text, length);
}

HRESULT FromArray(BigInt& n, const VARIANT& value) {
  if (V_ARRAY(&value) == nullptr) return FromWord(n, 0);
  ByteView bytes;
  const HRESULT status = bytes.OpenByteArray(value);
  return FAILED(status) ? status : FromBytes(n, bytes.Data(), bytes.Count());
}

// The status for a value of another type: that of copying it, if that fails.
HRESULT Refuse(const VARIANT& value) {
  OwnedVariant copy;
  const HRESULT status = VariantCopy(copy.Get(), &value);
  return FAILED(status) ? status : DISP_E_TYPEMISMATCH;
}

HRESULT FromPlainValue(BigInt& n, const VARIANT& value, NumberBase base) {
  switch (V_VT(&value)) {
    case VT_EMPTY:
    case VT_NULL:
      return FromWord(n, 0);
    case VT_ERROR:
      return V_ERROR(&value) == DISP_E_PARAMNOTFOUND ? FromWord(n, 0) : DISP_E_TYPEMISMATCH;
    case VT_I1:
    case VT_I2:
    case VT_I4:
    case VT_UI1:
    case VT_UI2:
    case VT_UI4:
    case VT_R4:
    case VT_R8:
      return FromInteger(n, value);
    case VT_BSTR:
      return FromDigits(n, V_BSTR(&value), base);
    case kByteArrayType:
      return FromArray(n, value);
    default:
      return Refuse(value);
  }
}

// Whether an object is an IPexBigNumber that is zero, the only number whose text cannot be read.
// Its byte array is empty, unlike that of a number whose text ran out of memory.
bool HoldsZero(IUnknown* object) noexcept {
  OwnedReference<IPexBigNumber> number;
  if (FAILED(number.Query(object, IID_IPexBigNumber)) || !number) return false;
  OwnedVariant bytes;
  uint32_t count = 0;
  return SUCCEEDED(number->get_Binary(bytes.Put())) && bytes.Type() == kByteArrayType &&
         SUCCEEDED(ArrayByteCount(V_ARRAY(bytes.Get()), &count)) && count == 0;
}

HRESULT ToTextVariant(const BigInt& n, NumberBase base, VARIANT* out) {
  NumberText text;
  const HRESULT status = ToText(text, n, base == NumberBase::kHexadecimal ? 16 : 10);
  if (FAILED(status)) return status;
  if (text.Characters() == nullptr) return E_OUTOFMEMORY;
  BSTR copy = SysAllocStringLen(text.Characters(), text.Length());
  if (copy == nullptr) return E_OUTOFMEMORY;
  V_VT(out) = VT_BSTR;
  V_BSTR(out) = copy;
  return S_OK;
}

HRESULT ToArrayVariant(const BigInt& n, VARIANT* out) {
  ByteString bytes;
  const uint64_t length = ByteLength(n);
  if (length > UINT32_MAX) return E_OUTOFMEMORY;
  if (length > 0) {
    if (!bytes.Allocate(static_cast<uint32_t>(length))) return E_OUTOFMEMORY;
    ToBytes(bytes.Data(), n);
  }
  return BytesToVariant(bytes.Data(), static_cast<uint32_t>(length), out);
}

}  // namespace

HRESULT NumberFromVariant(BigInt& n, const VARIANT& value, NumberBase base) noexcept {
  if (V_VT(&value) != VT_DISPATCH && V_VT(&value) != VT_UNKNOWN) {
    return FromPlainValue(n, value, base);
  }
  OwnedVariant plain;
  const HRESULT status = ResolveValue(&value, plain.Put(), HoldsZero);
  return FAILED(status) ? status : FromPlainValue(n, plain.Value(), base);
}

HRESULT NumberToVariant(const BigInt& n, VARTYPE type, NumberBase base, VARIANT* out) noexcept {
  if (out == nullptr) return E_POINTER;
  VariantInit(out);
  if (type == VT_BSTR) return ToTextVariant(n, base, out);
  return type == kByteArrayType ? ToArrayVariant(n, out) : DISP_E_TYPEMISMATCH;
}

}  // namespace mirolta
