#include "printing.h"

#include <cmath>
#include <cstdio>
#include <cstring>

namespace mirolta::value_parity {
namespace {

const char* current_section = "";
int lines = 0;

template <class Number>
std::string Bits(Number number) {
  ULONGLONG bits = 0;
  memcpy(&bits, &number, sizeof number);
  char readable[40];
  snprintf(readable, sizeof readable, "%.9g", static_cast<double>(number));
  // The libraries disagree on the names of these two only.
  if (std::isnan(number)) snprintf(readable, sizeof readable, "nan");
  if (std::isinf(number)) snprintf(readable, sizeof readable, number < 0 ? "-inf" : "inf");
  return "(" + std::string(readable) + ")#" + Hex(bits, static_cast<int>(2 * sizeof number));
}

std::string ShowPlain(const VARIANT& value) {
  switch (value.vt) {
    case VT_EMPTY:
    case VT_NULL:
      return "-";
    case VT_I1:
      return Decimal(static_cast<signed char>(value.cVal));
    case VT_I2:
    case VT_BOOL:
      return Decimal(value.iVal);
    case VT_I4:
    case VT_INT:
      return Decimal(value.lVal);
    case VT_I8:
      return Decimal(value.llVal);
    case VT_UI1:
      return Decimal(value.bVal);
    case VT_UI2:
      return Decimal(value.uiVal);
    case VT_UI4:
    case VT_UINT:
      return Decimal(static_cast<LONGLONG>(value.ulVal));
    case VT_UI8:
      return std::to_string(static_cast<unsigned long long>(value.ullVal));
    case VT_ERROR:
      return Hex(static_cast<ULONG>(value.scode), 8);
    case VT_R4:
      return Bits(value.fltVal);
    case VT_R8:
    case VT_DATE:
      return Bits(value.dblVal);
    case VT_CY:
      return "cy" + Decimal(value.cyVal.int64);
    case VT_DECIMAL:
      return "s" + Decimal(value.decVal.scale) + (value.decVal.sign != 0 ? "-" : "+") +
             Hex(value.decVal.Hi32, 8) + ":" + Hex(value.decVal.Lo64, 16);
    case VT_BSTR:
      return Quoted(value.bstrVal);
    case VT_DISPATCH:
    case VT_UNKNOWN:
      return value.punkVal == nullptr ? "null" : "object";
    default:
      return "?";
  }
}

}  // namespace

std::string Hex(ULONGLONG value, int width) {
  char digits[32];
  snprintf(digits, sizeof digits, "%0*x%08x", width > 8 ? width - 8 : 0,
           static_cast<unsigned>(value >> 32), static_cast<unsigned>(value & 0xFFFFFFFFu));
  std::string text = digits;
  return text.substr(text.size() - static_cast<size_t>(width));
}

std::string Decimal(LONGLONG value) {
  return std::to_string(static_cast<long long>(value));
}

std::string Quoted(const OLECHAR* text, size_t length) {
  std::string out = "\"";
  for (size_t i = 0; i < length; ++i) {
    const unsigned c = static_cast<unsigned>(text[i]) & 0xFFFFu;
    if (c >= 32 && c < 127 && c != '"' && c != '\\') {
      out += static_cast<char>(c);
    } else {
      out += "\\u" + Hex(c, 4);
    }
  }
  return out + "\"";
}

std::string Quoted(BSTR text) {
  if (text == nullptr) return "null";
  std::string out = Quoted(text, SysStringLen(text));
  if (SysStringByteLen(text) % 2 != 0) out += "+odd";
  return out;
}

std::string ShowArray(SAFEARRAY* array) {
  if (array == nullptr) return "null array";
  VARTYPE type = 0;
  const HRESULT known = SafeArrayGetVartype(array, &type);
  std::string out = "array " + Hex(static_cast<ULONG>(known), 8) + " " + Decimal(type) + " f" +
                    Hex(array->fFeatures, 4) + " e" + Decimal(SafeArrayGetElemsize(array)) + " l" +
                    Decimal(array->cLocks);
  for (UINT i = 1; i <= SafeArrayGetDim(array); ++i) {
    LONG lower = 77;
    LONG upper = 77;
    SafeArrayGetLBound(array, i, &lower);
    SafeArrayGetUBound(array, i, &upper);
    out += " [" + Decimal(lower) + "," + Decimal(upper) + "]";
  }
  return out;
}

std::string Show(const VARIANT& value) {
  std::string out = "vt" + Hex(value.vt, 4) + " ";
  if ((value.vt & VT_BYREF) != 0) return out + (value.byref == nullptr ? "null" : "reference");
  if ((value.vt & VT_ARRAY) != 0) return out + ShowArray(value.parray);
  return out + ShowPlain(value);
}

std::string Status(HRESULT status) {
  return Hex(static_cast<ULONG>(status), 8);
}

void Section(const char* name) {
  current_section = name;
  lines = 0;
}

void Print(const std::string& what, const std::string& result) {
  printf("%s %d %s => %s\n", current_section, ++lines, what.c_str(), result.c_str());
}

void Print(const std::string& what, HRESULT status, const VARIANT& value) {
  Print(what, Status(status) + " " + Show(value));
}

}  // namespace mirolta::value_parity
