// VariantChangeType: which conversions exist, and those to and from text and objects.
#include "mirolta/dispatch.h"
#include "seam/wiped_work.h"
#include "texts/wide_text.h"
#include "values/variant_byte_array.h"
#include "values/variant_date.h"
#include "values/variant_number_text.h"
#include "values/variant_numbers.h"
#include "values/variant_rules.h"

namespace mirolta::runtime {
namespace {

constexpr VARTYPE kByteArray = VT_ARRAY | VT_UI1;
constexpr USHORT kBooleanWords = VARIANT_ALPHABOOL | VARIANT_LOCALBOOL;

HRESULT MakeText(BSTR text, VARIANT* made) {
  if (text == nullptr) return E_OUTOFMEMORY;
  made->vt = VT_BSTR;
  made->bstrVal = text;
  return S_OK;
}

// Conversions to text.

HRESULT TextOfNumber(const VARIANT& from, USHORT flags, VARIANT* made) {
  switch (from.vt) {
    case VT_R4:
      return MakeText(TextOfReal(double{from.fltVal}, kSingleDigits), made);
    case VT_R8:
      return MakeText(TextOfReal(from.dblVal, kDoubleDigits), made);
    case VT_DATE: {
      BSTR text = nullptr;
      const HRESULT status = TextOfDate(from.date, &text);
      return FAILED(status) ? status : MakeText(text, made);
    }
    case VT_BOOL:
      if ((flags & kBooleanWords) != 0) {
        return MakeText(SysAllocString(from.boolVal != 0 ? OLESTR("True") : OLESTR("False")), made);
      }
      [[fallthrough]];
    default:
      return MakeText(TextOfDigits(ReadNumber(from, VT_BSTR).digits), made);
  }
}

// Conversions from text.

HRESULT BooleanOfText(BSTR text, VARIANT* made) {
  made->vt = VT_BOOL;
  const WideView word(text, SysStringLen(text));
  if (EqualsIgnoringAsciiCase(word, OLESTR("true")) || word == OLESTR("#TRUE#")) {
    made->boolVal = VARIANT_TRUE;
    return S_OK;
  }
  if (EqualsIgnoringAsciiCase(word, OLESTR("false")) || word == OLESTR("#FALSE#")) {
    made->boolVal = VARIANT_FALSE;
    return S_OK;
  }
  return DISP_E_TYPEMISMATCH;
}

// A bit pattern fits a type that has at least its bits; reals read it as a 32-bit number.
HRESULT StoreBits(ULONGLONG bits, VARTYPE type, VARIANT* made) {
  Number number;
  if (type == VT_CY) return DISP_E_OVERFLOW;
  if (type == VT_R4 || type == VT_R8 || type == VT_BOOL) {
    if (bits > 0xFFFFFFFFu) return DISP_E_OVERFLOW;
    const LONGLONG value = static_cast<LONG>(static_cast<ULONG>(bits));
    number.digits = DigitsOfInteger(value < 0, static_cast<ULONGLONG>(value < 0 ? -value : value));
  } else if (type == VT_DECIMAL) {
    number.digits = DigitsOfInteger(false, bits);
  } else {
    const ULONG size = ElementSize(type);
    if (size < sizeof bits && (bits >> (8 * size)) != 0) return DISP_E_OVERFLOW;
    number.kind = Number::Kind::kBits;
    number.bits = bits;
  }
  return StoreNumber(number, type, made);
}

HRESULT NumberOfText(BSTR text, VARTYPE type, VARIANT* made) {
  if (text == nullptr) return DISP_E_TYPEMISMATCH;
  if (type == VT_BOOL && SUCCEEDED(BooleanOfText(text, made))) return S_OK;
  if (type == VT_DATE) {
    made->vt = VT_DATE;
    return ParseDateText(text, SysStringLen(text), &made->date);
  }
  NumberText number;
  const HRESULT status = ParseNumberText(text, SysStringLen(text), &number);
  if (FAILED(status)) return status;
  if (number.is_bits) return StoreBits(number.bits, type, made);
  Number exact;
  exact.digits = number.digits;
  if (type == VT_BOOL) {
    // Converted by way of a real: a number too large for one overflows.
    exact.kind = Number::Kind::kReal;
    if (!DigitsToReal(number.digits, &exact.real)) return DISP_E_OVERFLOW;
  }
  return StoreNumber(exact, type, made);
}

// Objects.

HRESULT QueryObject(IUnknown* from, VARTYPE type, VARIANT* made) {
  made->vt = type;
  if (from == nullptr) return S_OK;
  void* found = nullptr;
  const HRESULT status =
      from->QueryInterface(type == VT_DISPATCH ? IID_IDispatch : IID_IUnknown, &found);
  if (FAILED(status)) return status;
  if (type == VT_DISPATCH) {
    made->pdispVal = static_cast<IDispatch*>(found);
  } else {
    made->punkVal = static_cast<IUnknown*>(found);
  }
  return S_OK;
}

// DefaultValue follows default values that are objects themselves.
HRESULT DefaultValue(IDispatch* object, LCID locale, VARIANT* value) {
  constexpr int kMaxDepth = 32;  // an object may be its own default value
  VARIANT current;
  VariantInit(&current);
  for (int depth = 0; depth < kMaxDepth; ++depth) {
    if (object == nullptr) return DISP_E_BADVARTYPE;
    DISPPARAMS none = {nullptr, nullptr, 0, 0};
    VARIANT next;
    VariantInit(&next);
    const HRESULT status = object->Invoke(DISPID_VALUE, IID_NULL, locale, DISPATCH_PROPERTYGET,
                                          &none, &next, nullptr, nullptr);
    VariantClear(&current);
    current = next;
    if (FAILED(status)) break;
    if (current.vt != VT_DISPATCH) {
      *value = current;
      return S_OK;
    }
    object = current.pdispVal;
  }
  VariantClear(&current);
  return DISP_E_TYPEMISMATCH;
}

HRESULT ChangeDefaultValue(IDispatch* object, LCID locale, USHORT flags, VARTYPE type,
                           VARIANT* made) {
  VARIANT value;
  VariantInit(&value);
  HRESULT status = DefaultValue(object, locale, &value);
  if (FAILED(status)) return status;
  if (value.vt == type && (type != VT_BSTR || value.bstrVal != nullptr)) {
    // Moved, not copied: the value may be a secret.
    *made = value;
    return S_OK;
  }
  status = VariantChangeTypeEx(&value, &value, locale, flags, type);
  if (SUCCEEDED(status)) {
    *made = value;
  } else {
    VariantClear(&value);
  }
  return status;
}

HRESULT ChangeEmpty(VARTYPE type, VARIANT* made) {
  if (type == VT_BSTR) return MakeText(SysAllocString(OLESTR("")), made);
  if (type == VT_NULL) {
    made->vt = VT_NULL;
    return S_OK;
  }
  if (!IsNumeric(type)) return DISP_E_TYPEMISMATCH;
  made->vt = type;
  return S_OK;
}

bool IsCheckedDate(VARTYPE from) {
  // The platform does not check the range of dates made from these.
  return from != VT_CY && from != VT_DECIMAL && from != VT_R4;
}

// Change converts *from, which is no reference and stays owned by the caller. *made is VT_EMPTY
// before; after a failure it owns nothing.
HRESULT Change(const VARIANT& from, LCID locale, USHORT flags, VARTYPE type, VARIANT* made) {
  if (from.vt == kByteArray && type == VT_BSTR) {
    made->vt = VT_BSTR;
    return TextOfByteArray(from.parray, &made->bstrVal);
  }
  if (from.vt == VT_BSTR && type == kByteArray) {
    made->vt = kByteArray;
    return ByteArrayOfText(from.bstrVal, &made->parray);
  }
  if (((from.vt | type) & (VT_ARRAY | VT_BYREF)) != 0) return DISP_E_TYPEMISMATCH;
  switch (from.vt) {
    case VT_EMPTY:
      return ChangeEmpty(type, made);
    case VT_NULL:
    case VT_ERROR:
      return DISP_E_TYPEMISMATCH;
    case VT_UNKNOWN:
    case VT_DISPATCH: {
      IUnknown* object = from.vt == VT_UNKNOWN ? from.punkVal : from.pdispVal;
      if (type == VT_UNKNOWN || type == VT_DISPATCH) return QueryObject(object, type, made);
      const bool has_no_value = (flags & VARIANT_NOVALUEPROP) != 0;
      if (from.vt == VT_DISPATCH && has_no_value) return DISP_E_TYPEMISMATCH;
      break;
    }
    default:
      break;
  }
  if (type == VT_EMPTY || type == VT_NULL) {
    made->vt = type;
    return S_OK;
  }
  const bool to_value = type == VT_BSTR || IsNumeric(type);
  if (!to_value) return DISP_E_TYPEMISMATCH;
  if (from.vt == VT_DISPATCH) return ChangeDefaultValue(from.pdispVal, locale, flags, type, made);
  if (from.vt == VT_BSTR) return NumberOfText(from.bstrVal, type, made);
  if (!IsNumeric(from.vt)) return DISP_E_TYPEMISMATCH;
  if (from.vt == VT_DECIMAL && from.decVal.scale > kMaxDecimalScale) return E_INVALIDARG;
  if (type == VT_BSTR) return TextOfNumber(from, flags, made);
  if (from.vt == VT_CY && type == VT_DECIMAL) {
    made->decVal = DecimalOfCurrency(from.cyVal);
    made->vt = VT_DECIMAL;
    return S_OK;
  }
  const HRESULT status = StoreNumber(ReadNumber(from, type), type, made);
  if (FAILED(status)) return status;
  if (type == VT_DATE && IsCheckedDate(from.vt) && !IsDateInRange(made->date)) {
    return DISP_E_OVERFLOW;
  }
  return S_OK;
}

HRESULT ChangeInto(VARIANT* to, const VARIANT* from, LCID locale, USHORT flags, VARTYPE type) {
  HRESULT status = CheckType(from->vt);
  if (SUCCEEDED(status)) status = CheckType(type);
  if (FAILED(status)) return status;
  VARIANT view = *from;
  if ((from->vt & VT_BYREF) != 0) {
    status = ViewReference(from, &view);
    if (SUCCEEDED(status)) status = CheckType(view.vt);
    if (FAILED(status)) return status;
  }
  VARIANT made;
  VariantInit(&made);
  if (view.vt == type) {
    status = VariantCopy(&made, &view);
  } else {
    status = Change(view, locale, flags, type, &made);
  }
  return FAILED(status) ? status : ReplaceValue(to, &made);
}

}  // namespace
}  // namespace mirolta::runtime

using namespace mirolta;
using namespace mirolta::runtime;

extern "C" {

// Every locale has the conventions of English (United States), so that results do not depend on
// where a program runs. Numbers and texts may be secrets, which are converted by way of digits on
// the stack; callers other than the module's members do not wipe it.
HRESULT VariantChangeTypeEx(VARIANT* to, const VARIANT* from, LCID locale, USHORT flags,
                            VARTYPE type) {
  if (to == nullptr || from == nullptr) return E_INVALIDARG;
  auto change = [&] { return ChangeInto(to, from, locale, flags, type); };
  return RunWiped(change, StackUse::kMedium);
}

HRESULT VariantChangeType(VARIANT* to, const VARIANT* from, USHORT flags, VARTYPE type) {
  return VariantChangeTypeEx(to, from, LOCALE_USER_DEFAULT, flags, type);
}
}
