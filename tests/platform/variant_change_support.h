// What the tests of conversions share: values in one line, rows that are named by what they
// convert, and the conversion over a sentinel.
#pragma once

#include <gtest/gtest.h>

#include "fake_object.h"
#include "text.h"

namespace mirolta {

using test::FakeObject;
using test::NumberValue;
using test::TestValue;
using test::Text;
using test::TextOf;
using test::TextValue;

inline VARIANT Of(VARTYPE type) {
  VARIANT value;
  VariantInit(&value);
  value.vt = type;
  return value;
}
// NAME(content) is a value of the type.
#define MIROLTA_VALUE_MAKER(Name, Content, type, member) \
  inline VARIANT Name(Content content) {                 \
    VARIANT value = Of(type);                            \
    value.member = content;                              \
    return value;                                        \
  }
MIROLTA_VALUE_MAKER(I2, SHORT, VT_I2, iVal)
MIROLTA_VALUE_MAKER(I4, LONG, VT_I4, lVal)
MIROLTA_VALUE_MAKER(Ui4, ULONG, VT_UI4, ulVal)
MIROLTA_VALUE_MAKER(I8, LONGLONG, VT_I8, llVal)
MIROLTA_VALUE_MAKER(Ui8, ULONGLONG, VT_UI8, ullVal)
MIROLTA_VALUE_MAKER(R4, FLOAT, VT_R4, fltVal)
MIROLTA_VALUE_MAKER(R8, double, VT_R8, dblVal)
MIROLTA_VALUE_MAKER(Date, double, VT_DATE, date)
MIROLTA_VALUE_MAKER(Bool, VARIANT_BOOL, VT_BOOL, boolVal)
MIROLTA_VALUE_MAKER(Cy, LONGLONG, VT_CY, cyVal.int64)  // in ten-thousandths
#undef MIROLTA_VALUE_MAKER
inline VARIANT I1(int number) {
  VARIANT value = Of(VT_I1);
  value.cVal = static_cast<CHAR>(number);
  return value;
}
inline VARIANT Dec(bool negative, ULONG high, ULONGLONG low, BYTE scale) {
  VARIANT value = Of(VT_EMPTY);
  value.decVal.scale = scale;
  value.decVal.sign = negative ? DECIMAL_NEG : BYTE{0};
  value.decVal.Hi32 = high;
  value.decVal.Lo64 = low;
  value.vt = VT_DECIMAL;
  return value;
}

// The integer of any integer type, for comparing.
inline LONGLONG IntegerOf(VARIANT* value) {
  switch (value->vt) {
    case VT_I1:
      return static_cast<signed char>(value->cVal);
    case VT_UI1:
      return value->bVal;
    case VT_I2:
    case VT_BOOL:
      return value->iVal;
    case VT_UI2:
      return value->uiVal;
    case VT_I4:
    case VT_INT:
      return value->lVal;
    case VT_UI4:
    case VT_UINT:
      return value->ulVal;
    case VT_CY:
      return value->cyVal.int64;
    default:
      return value->llVal;
  }
}

constexpr LONG kSentinel = 4711;
constexpr LCID kEnglish = 0x0409;

// Converts to a target that holds a sentinel, which a failure must leave there.
inline HRESULT Change(VARIANT from, VARTYPE type, VARIANT* to, USHORT flags = 0) {
  VariantClear(to);
  *to = I4(kSentinel);
  const HRESULT status = VariantChangeTypeEx(to, &from, kEnglish, flags, type);
  if (FAILED(status)) {
    EXPECT_EQ(to->vt, VT_I4);
    EXPECT_EQ(to->lVal, kSentinel);
  } else {
    EXPECT_EQ(to->vt, type);
  }
  return status;
}

inline HRESULT ChangeText(const Text& text, VARTYPE type, VARIANT* to) {
  return Change(TextValue(text), type, to);
}

// A row of a table, named by what it converts.
#define ROW(from, ...) \
  { #from, from, __VA_ARGS__ }
#define TEXT_ROW(text, ...) \
  { text, OLESTR(text), __VA_ARGS__ }

constexpr HRESULT kOverflow = DISP_E_OVERFLOW;
constexpr HRESULT kMismatch = DISP_E_TYPEMISMATCH;

}  // namespace mirolta
