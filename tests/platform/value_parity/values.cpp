#include "values.h"

#include <cstring>

#include "printing.h"

namespace mirolta::value_parity {

VARIANT Of(VARTYPE type) {
  VARIANT value;
  VariantInit(&value);
  memset(static_cast<void*>(&value), 0, sizeof value);
  value.vt = type;
  return value;
}
VARIANT Integer(VARTYPE type, LONGLONG number) {
  VARIANT value = Of(type);
  switch (type) {
    case VT_I1:
      value.cVal = static_cast<CHAR>(number);
      break;
    case VT_UI1:
      value.bVal = static_cast<BYTE>(number);
      break;
    case VT_I2:
    case VT_BOOL:
      value.iVal = static_cast<SHORT>(number);
      break;
    case VT_UI2:
      value.uiVal = static_cast<USHORT>(number);
      break;
    case VT_I4:
    case VT_INT:
    case VT_ERROR:
      value.lVal = static_cast<LONG>(number);
      break;
    case VT_UI4:
    case VT_UINT:
      value.ulVal = static_cast<ULONG>(number);
      break;
    case VT_CY:
      value.cyVal.int64 = number;
      break;
    default:
      value.llVal = number;
      break;
  }
  return value;
}
VARIANT Real(VARTYPE type, double number) {
  VARIANT value = Of(type);
  if (type == VT_R4) {
    value.fltVal = static_cast<FLOAT>(number);
  } else {
    value.dblVal = number;
  }
  return value;
}
VARIANT Dec(BYTE scale, bool negative, ULONG high, ULONGLONG low) {
  VARIANT value = Of(VT_EMPTY);
  value.decVal.scale = scale;
  value.decVal.sign = negative ? 0x80 : 0;
  value.decVal.Hi32 = high;
  value.decVal.Lo64 = low;
  value.vt = VT_DECIMAL;
  return value;
}
VARIANT Words(const OLECHAR* text) {
  VARIANT value = Of(VT_BSTR);
  value.bstrVal = SysAllocString(text);
  return value;
}

VARIANT Reference(VARIANT* to) {
  VARIANT value = Of(static_cast<VARTYPE>(to->vt | VT_BYREF));
  value.byref =
      to->vt == VT_DECIMAL ? static_cast<void*>(&to->decVal) : static_cast<void*>(&to->llVal);
  return value;
}
VARIANT ReferenceToVariant(VARIANT* to) {
  VARIANT value = Of(VT_BYREF | VT_VARIANT);
  value.pvarVal = to;
  return value;
}

void Change(VARIANT from, USHORT flags, VARTYPE type) {
  VARIANT to = Sentinel();
  const HRESULT status = VariantChangeTypeEx(&to, &from, kEnglish, flags, type);
  Print(Show(from) + " f" + Decimal(flags) + " -> " + Decimal(type), status, to);
  VariantClear(&to);
}

}  // namespace mirolta::value_parity
