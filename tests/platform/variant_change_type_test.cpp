#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <string>

#include "portable/test_hooks.h"
#include "value_support.h"

namespace mirolta {
namespace {

VARIANT Of(VARTYPE type) {
  VARIANT value;
  VariantInit(&value);
  value.vt = type;
  return value;
}
VARIANT I1(int number) {
  VARIANT value = Of(VT_I1);
  value.cVal = static_cast<CHAR>(number);
  return value;
}
VARIANT I2(SHORT number) {
  VARIANT value = Of(VT_I2);
  value.iVal = number;
  return value;
}
VARIANT I4(LONG number) {
  VARIANT value = Of(VT_I4);
  value.lVal = number;
  return value;
}
VARIANT Ui4(ULONG number) {
  VARIANT value = Of(VT_UI4);
  value.ulVal = number;
  return value;
}
VARIANT I8(LONGLONG number) {
  VARIANT value = Of(VT_I8);
  value.llVal = number;
  return value;
}
VARIANT Ui8(ULONGLONG number) {
  VARIANT value = Of(VT_UI8);
  value.ullVal = number;
  return value;
}
VARIANT R4(FLOAT number) {
  VARIANT value = Of(VT_R4);
  value.fltVal = number;
  return value;
}
VARIANT R8(double number) {
  VARIANT value = Of(VT_R8);
  value.dblVal = number;
  return value;
}
VARIANT Date(double number) {
  VARIANT value = Of(VT_DATE);
  value.date = number;
  return value;
}
VARIANT Bool(VARIANT_BOOL truth) {
  VARIANT value = Of(VT_BOOL);
  value.boolVal = truth;
  return value;
}
VARIANT Cy(LONGLONG ten_thousandths) {
  VARIANT value = Of(VT_CY);
  value.cyVal.int64 = ten_thousandths;
  return value;
}
VARIANT Dec(bool negative, ULONG high, ULONGLONG low, BYTE scale) {
  VARIANT value = Of(VT_EMPTY);
  value.decVal.scale = scale;
  value.decVal.sign = negative ? DECIMAL_NEG : BYTE{0};
  value.decVal.Hi32 = high;
  value.decVal.Lo64 = low;
  value.vt = VT_DECIMAL;
  return value;
}

// The integer of any integer type, for comparing.
LONGLONG IntegerOf(VARIANT* value) {
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
HRESULT Change(VARIANT from, VARTYPE type, Value* to, USHORT flags = 0) {
  SetLong(to, kSentinel);
  const HRESULT status = VariantChangeTypeEx(to->get(), &from, kEnglish, flags, type);
  if (FAILED(status)) {
    EXPECT_EQ(to->type(), VT_I4);
    EXPECT_EQ((*to)->lVal, kSentinel);
  } else {
    EXPECT_EQ(to->type(), type);
  }
  return status;
}

HRESULT ChangeText(const Text& text, VARTYPE type, Value* to) {
  Value from;
  SetText(&from, text);
  return Change(*from.get(), type, to);
}

constexpr HRESULT kOverflow = DISP_E_OVERFLOW;
constexpr HRESULT kMismatch = DISP_E_TYPEMISMATCH;

TEST(VariantChangeType, NumbersRoundToIntegersInRange) {
  struct Row {
    VARIANT from;
    VARTYPE type;
    HRESULT status;
    LONGLONG expected;
  };
  const Row rows[] = {
      // Halves go to even.
      {R8(0.5), VT_I4, S_OK, 0},
      {R8(1.5), VT_I4, S_OK, 2},
      {R8(2.5), VT_I4, S_OK, 2},
      {R8(-0.5), VT_I4, S_OK, 0},
      {R8(-1.5), VT_I4, S_OK, -2},
      {R8(-2.5), VT_UI1, kOverflow, 0},
      {R8(-0.5), VT_UI1, S_OK, 0},
      {R4(2.5f), VT_I2, S_OK, 2},
      {Cy(25000), VT_I4, S_OK, 2},
      {Cy(35000), VT_I4, S_OK, 4},
      {Cy(-25000), VT_I4, S_OK, -2},
      {Cy(25001), VT_I4, S_OK, 3},
      {Dec(true, 0, 25, 1), VT_I4, S_OK, -2},
      {Dec(false, 0, 35, 1), VT_I4, S_OK, 4},
      {Date(36526.5), VT_I4, S_OK, 36526},
      // Limits.
      {R8(127.4), VT_I1, S_OK, 127},
      {R8(127.5), VT_I1, kOverflow, 0},
      {R8(-128.5), VT_I1, S_OK, -128},
      {R8(-128.6), VT_I1, kOverflow, 0},
      {R8(255.4), VT_UI1, S_OK, 255},
      {R8(255.5), VT_UI1, kOverflow, 0},
      {R8(32767.5), VT_I2, kOverflow, 0},
      {R8(65535.4), VT_UI2, S_OK, 65535},
      {R8(2147483647.4), VT_I4, S_OK, 2147483647},
      {R8(2147483647.5), VT_I4, kOverflow, 0},
      {R8(-2147483648.5), VT_I4, S_OK, INT_MIN},
      {R8(4294967295.4), VT_UI4, S_OK, 4294967295ll},
      {R8(4294967295.5), VT_UI4, kOverflow, 0},
      {R8(9223372036854775808.0), VT_I8, kOverflow, 0},
      {R8(-9223372036854775808.0), VT_I8, S_OK, LLONG_MIN},
      {R8(18446744073709551616.0), VT_UI8, kOverflow, 0},
      {R8(-1), VT_UI4, kOverflow, 0},
      {R4(-1), VT_UI4, kOverflow, 0},
      {R8(std::numeric_limits<double>::infinity()), VT_I4, kOverflow, 0},
      {R8(std::numeric_limits<double>::quiet_NaN()), VT_I4, kOverflow, 0},
      {I2(-1), VT_UI4, kOverflow, 0},
      {I2(128), VT_I1, kOverflow, 0},
      {I4(256), VT_UI1, kOverflow, 0},
      {I4(-1), VT_UI2, kOverflow, 0},
      {I4(-1), VT_UI8, kOverflow, 0},
      {I8(2147483648ll), VT_I4, kOverflow, 0},
      {I8(-2147483648ll), VT_INT, S_OK, INT_MIN},
      {Ui8(4294967296ull), VT_UINT, kOverflow, 0},
      {Dec(false, 0, 0x8000000000000000ull, 0), VT_I8, kOverflow, 0},
      {Dec(false, 1, 0, 0), VT_UI8, kOverflow, 0},
      // Types of one width keep the bits.
      {I1(-1), VT_UI1, S_OK, 255},
      {I4(-1), VT_UI4, S_OK, 4294967295ll},
      {Ui4(0x80000000u), VT_I4, S_OK, INT_MIN},
      {Ui4(0xFFFFFFFFu), VT_INT, S_OK, -1},
      {Ui8(0xFFFFFFFFFFFFFFFFull), VT_I8, S_OK, -1},
      // True is -1, cut to the width.
      {Bool(VARIANT_TRUE), VT_UI1, S_OK, 255},
      {Bool(VARIANT_TRUE), VT_I4, S_OK, -1},
      {Bool(VARIANT_TRUE), VT_UI4, S_OK, 4294967295ll},
      {Bool(VARIANT_TRUE), VT_CY, S_OK, -10000},
      {Bool(256), VT_UI1, S_OK, 0},
      // Nothing is zero.
      {Of(VT_EMPTY), VT_I4, S_OK, 0},
      {Of(VT_EMPTY), VT_CY, S_OK, 0},
      {Of(VT_NULL), VT_I4, kMismatch, 0},
      {Of(VT_ERROR), VT_I4, kMismatch, 0},
      // Truth.
      {I4(2), VT_BOOL, S_OK, -1},
      {R8(0.0), VT_BOOL, S_OK, 0},
      {R8(0.01), VT_BOOL, S_OK, -1},
      {Cy(1), VT_BOOL, S_OK, -1},
      {Dec(false, 0, 0, 5), VT_BOOL, S_OK, 0},
      // Currency.
      {R8(0.00005), VT_CY, S_OK, 1},
      {R8(0.00015), VT_CY, S_OK, 1},
      {R8(922337203685478.0), VT_CY, kOverflow, 0},
      {I4(-3), VT_CY, S_OK, -30000},
      {I8(922337203685478ll), VT_CY, kOverflow, 0},
  };
  for (const Row& row : rows) {
    Value to;
    EXPECT_EQ(Change(row.from, row.type, &to), row.status) << &row - rows;
    if (SUCCEEDED(row.status)) {
      EXPECT_EQ(IntegerOf(to.get()), row.expected) << &row - rows;
    }
  }
}

TEST(VariantChangeType, NumbersBecomeTheNearestReal) {
  struct Row {
    VARIANT from;
    VARTYPE type;
    HRESULT status;
    double expected;
  };
  const Row rows[] = {
      {I4(-7), VT_R8, S_OK, -7},
      {Bool(VARIANT_TRUE), VT_R8, S_OK, -1},
      {Ui8(0xFFFFFFFFFFFFFFFFull), VT_R8, S_OK, 18446744073709551616.0},
      {Cy(12345), VT_R8, S_OK, 1.2345},
      {Dec(true, 0, 12345678, 4), VT_R8, S_OK, -1234.5678},
      {Dec(true, 0, 0, 4), VT_R8, S_OK, 0},
      {R4(0.5f), VT_R8, S_OK, 0.5},
      {R8(0.1), VT_R4, S_OK, double{0.1f}},
      {R8(3.5e38), VT_R4, kOverflow, 0},
      {R8(-std::numeric_limits<double>::infinity()), VT_R4, kOverflow, 0},
      {I4(36526), VT_DATE, S_OK, 36526},
      {I4(2958466), VT_DATE, kOverflow, 0},
      {R8(-657435), VT_DATE, kOverflow, 0},
      {R8(2958465.5), VT_DATE, S_OK, 2958465.5},
      {Date(36526.75), VT_R8, S_OK, 36526.75},
  };
  for (const Row& row : rows) {
    Value to;
    EXPECT_EQ(Change(row.from, row.type, &to), row.status) << &row - rows;
    if (FAILED(row.status)) continue;
    EXPECT_EQ(row.type == VT_R4 ? double{to->fltVal} : to->dblVal, row.expected) << &row - rows;
  }
}

TEST(VariantChangeType, NumbersBecomeDecimalsOrOverflow) {
  struct Row {
    VARIANT from;
    HRESULT status;
    VARIANT expected;
  };
  const Row rows[] = {
      {I4(-7), S_OK, Dec(true, 0, 7, 0)},
      {Bool(VARIANT_TRUE), S_OK, Dec(false, 0, 1, 0)},
      {Cy(5000), S_OK, Dec(false, 0, 5000, 4)},
      {R8(0.1), S_OK, Dec(false, 0, 1, 1)},
      {R8(-1.5), S_OK, Dec(true, 0, 15, 1)},
      {R8(1e28), S_OK, Dec(false, 0x204FCE5E, 0x3E25026110000000ull, 0)},
      {R8(1e29), kOverflow, Of(VT_EMPTY)},
      {R8(1e-29), S_OK, Dec(false, 0, 0, 0)},
      {R4(0.001f), S_OK, Dec(false, 0, 1, 3)},
      {R8(std::numeric_limits<double>::infinity()), kOverflow, Of(VT_EMPTY)},
      {R8(std::numeric_limits<double>::quiet_NaN()), DISP_E_BADVARTYPE, Of(VT_EMPTY)},
      {Ui8(0xFFFFFFFFFFFFFFFFull), S_OK, Dec(false, 0, 0xFFFFFFFFFFFFFFFFull, 0)},
  };
  for (const Row& row : rows) {
    Value to;
    EXPECT_EQ(Change(row.from, VT_DECIMAL, &to), row.status) << &row - rows;
    if (FAILED(row.status)) continue;
    EXPECT_EQ(to->decVal.scale, row.expected.decVal.scale) << &row - rows;
    EXPECT_EQ(to->decVal.sign, row.expected.decVal.sign) << &row - rows;
    EXPECT_EQ(to->decVal.Hi32, row.expected.decVal.Hi32) << &row - rows;
    EXPECT_EQ(to->decVal.Lo64, row.expected.decVal.Lo64) << &row - rows;
  }
}

TEST(VariantChangeType, ValuesAreWrittenAsText) {
  struct Row {
    VARIANT from;
    USHORT flags;
    HRESULT status;
    const OLECHAR* expected;
  };
  const Row rows[] = {
      {I1(-128), 0, S_OK, OLESTR("-128")},
      {I8(LLONG_MIN), 0, S_OK, OLESTR("-9223372036854775808")},
      {Ui8(0xFFFFFFFFFFFFFFFFull), 0, S_OK, OLESTR("18446744073709551615")},
      {Of(VT_EMPTY), 0, S_OK, OLESTR("")},
      {Of(VT_NULL), 0, kMismatch, nullptr},
      {Of(VT_ERROR), 0, kMismatch, nullptr},
      {Bool(VARIANT_TRUE), 0, S_OK, OLESTR("-1")},
      {Bool(VARIANT_FALSE), 0, S_OK, OLESTR("0")},
      {Bool(VARIANT_TRUE), VARIANT_ALPHABOOL, S_OK, OLESTR("True")},
      {Bool(VARIANT_FALSE), VARIANT_ALPHABOOL, S_OK, OLESTR("False")},
      {Bool(1), VARIANT_LOCALBOOL, S_OK, OLESTR("True")},
      {R4(1.0f / 3), 0, S_OK, OLESTR("0.3333333")},
      {R4(4464502.5f), 0, S_OK, OLESTR("4464503")},
      {R4(-3676326.5f), 0, S_OK, OLESTR("-3676327")},
      {R4(9999999.5f), 0, S_OK, OLESTR("1E+07")},
      {R8(29602117213639.25), 0, S_OK, OLESTR("29602117213639.3")},
      {R4(1e7f), 0, S_OK, OLESTR("1E+07")},
      {R4(1000000.0f), 0, S_OK, OLESTR("1000000")},
      {R8(1.0 / 3), 0, S_OK, OLESTR("0.333333333333333")},
      {R8(0.1 + 0.2), 0, S_OK, OLESTR("0.3")},
      {R8(-0.0), 0, S_OK, OLESTR("0")},
      {R8(100000000000000.0), 0, S_OK, OLESTR("100000000000000")},
      {R8(1e15), 0, S_OK, OLESTR("1E+15")},
      {R8(0.0001), 0, S_OK, OLESTR("0.0001")},
      {R8(1.5e-5), 0, S_OK, OLESTR("1.5E-05")},
      {R8(1.7e308), 0, S_OK, OLESTR("1.7E+308")},
      {R8(5e-324), 0, S_OK, OLESTR("4.94065645841247E-324")},
      {R8(-std::numeric_limits<double>::infinity()), 0, S_OK, OLESTR("-INF")},
      {R8(std::numeric_limits<double>::quiet_NaN()), 0, S_OK, OLESTR("NAN")},
      {Cy(10), 0, S_OK, OLESTR("0.001")},
      {Cy(-12340000), 0, S_OK, OLESTR("-1234")},
      {Cy(LLONG_MIN), 0, S_OK, OLESTR("-922337203685477.5808")},
      {Dec(true, 0, 120, 2), 0, S_OK, OLESTR("-1.2")},
      {Dec(true, 0, 0, 2), 0, S_OK, OLESTR("0")},
      {Dec(false, 0, 1, 28), 0, S_OK, OLESTR("0.0000000000000000000000000001")},
      {Dec(true, 0xFFFFFFFF, 0xFFFFFFFFFFFFFFFFull, 0), 0, S_OK,
       OLESTR("-79228162514264337593543950335")},
      {Date(0), 0, S_OK, OLESTR("12:00:00 AM")},
      {Date(0.5), 0, S_OK, OLESTR("12:00:00 PM")},
      {Date(1), 0, S_OK, OLESTR("12/31/1899")},
      {Date(36526.75), 0, S_OK, OLESTR("1/1/2000 6:00:00 PM")},
      {Date(36585), 0, S_OK, OLESTR("2/29/2000")},
      {Date(-1.25), 0, S_OK, OLESTR("12/29/1899 6:00:00 AM")},
      {Date(-0.5), 0, S_OK, OLESTR("12:00:00 PM")},
      {Date(36525.9999999), 0, S_OK, OLESTR("1/1/2000 12:00:00 AM")},
      {Date(-657434), 0, S_OK, OLESTR("1/1/100")},
      {Date(2958465), 0, S_OK, OLESTR("12/31/9999")},
      {Date(-657435), 0, E_INVALIDARG, nullptr},
      {Date(2958466), 0, E_INVALIDARG, nullptr},
  };
  for (const Row& row : rows) {
    Value to;
    EXPECT_EQ(Change(row.from, VT_BSTR, &to, row.flags), row.status) << &row - rows;
    if (SUCCEEDED(row.status)) {
      EXPECT_EQ(to.text(), row.expected) << &row - rows;
    }
  }
}

TEST(VariantChangeType, NumberTextBecomesTheNearestReal) {
  struct Row {
    const OLECHAR* text;
    HRESULT status;
    double expected;
  };
  const Row rows[] = {
      {OLESTR(""), kMismatch, 0},
      {OLESTR(" "), kMismatch, 0},
      {OLESTR(" 12 "), S_OK, 12},
      {OLESTR("\t12\r\n"), S_OK, 12},
      {OLESTR("1 2"), kMismatch, 0},
      {OLESTR("12abc"), kMismatch, 0},
      {OLESTR("1e3"), S_OK, 1000},
      {OLESTR("1.5E-3"), S_OK, 0.0015},
      {OLESTR("1e"), kMismatch, 0},
      {OLESTR("e3"), kMismatch, 0},
      {OLESTR("1,234.5"), S_OK, 1234.5},
      {OLESTR("1,2,3"), S_OK, 123},
      {OLESTR(",1"), kMismatch, 0},
      {OLESTR("$5"), S_OK, 5},
      {OLESTR("-$ 5"), S_OK, -5},
      {OLESTR("5$-"), S_OK, -5},
      {OLESTR("$$5"), kMismatch, 0},
      {OLESTR("(5)"), S_OK, -5},
      {OLESTR("(-5)"), S_OK, -5},
      {OLESTR("(5"), kMismatch, 0},
      {OLESTR("5)"), kMismatch, 0},
      {OLESTR("5-"), S_OK, -5},
      {OLESTR("-5-"), kMismatch, 0},
      {OLESTR("--5"), kMismatch, 0},
      {OLESTR("+-5"), S_OK, -5},
      {OLESTR(".5"), S_OK, 0.5},
      {OLESTR("5."), S_OK, 5},
      {OLESTR("."), kMismatch, 0},
      {OLESTR("1.2.3"), kMismatch, 0},
      {OLESTR("&HFF"), S_OK, 255},
      {OLESTR("&hfa"), S_OK, 250},
      {OLESTR("&o17"), S_OK, 15},
      {OLESTR("&H"), kMismatch, 0},
      {OLESTR("&H1G"), kMismatch, 0},
      {OLESTR("&H123456789"), kOverflow, 0},
      {OLESTR("0x10"), kMismatch, 0},
      {OLESTR("1e308"), S_OK, 1e308},
      {OLESTR("1e309"), kOverflow, 0},
      {OLESTR("1e-400"), S_OK, 0},
      {OLESTR("0e99999"), S_OK, 0},
      {OLESTR("true"), kMismatch, 0},
      {OLESTR("\u00A01"), S_OK, 1},
      {OLESTR("\uFF11"), kMismatch, 0},
      {OLESTR("3.141592653589793238"), S_OK, 3.141592653589793238},
      {OLESTR("2.50000000000000000000000000000000000000000000000000000000000000000000001"), S_OK,
       2.5},
      {OLESTR("20000000000000000000000000000000000000000000000000000000000000000000001"), S_OK,
       2e70},
  };
  for (const Row& row : rows) {
    Value to;
    EXPECT_EQ(ChangeText(row.text, VT_R8, &to), row.status) << &row - rows;
    if (SUCCEEDED(row.status)) {
      EXPECT_EQ(to->dblVal, row.expected) << &row - rows;
    }
  }
}

TEST(VariantChangeType, TextBecomesIntegersInRange) {
  struct Row {
    const OLECHAR* text;
    VARTYPE type;
    HRESULT status;
    LONGLONG expected;
  };
  const Row rows[] = {
      {OLESTR("2.5"), VT_I4, S_OK, 2},
      {OLESTR("-1.5"), VT_I4, S_OK, -2},
      {OLESTR("2.50000000000000000000000000000000000000000000000000000000000000000000001"), VT_I4,
       S_OK, 3},
      {OLESTR("-0.5"), VT_UI4, S_OK, 0},
      {OLESTR("-1"), VT_UI4, kOverflow, 0},
      {OLESTR("127.5"), VT_I1, kOverflow, 0},
      {OLESTR("254.5"), VT_UI1, S_OK, 254},
      {OLESTR("2147483648"), VT_I4, kOverflow, 0},
      {OLESTR("-2147483648"), VT_I4, S_OK, INT_MIN},
      {OLESTR("9223372036854775807"), VT_I8, S_OK, LLONG_MAX},
      {OLESTR("9223372036854775808"), VT_I8, kOverflow, 0},
      {OLESTR("-9223372036854775808"), VT_I8, S_OK, LLONG_MIN},
      {OLESTR("18446744073709551616"), VT_UI8, kOverflow, 0},
      {OLESTR("1e99999"), VT_I4, kOverflow, 0},
      {OLESTR("&HFFFF"), VT_I2, S_OK, -1},
      {OLESTR("&HFFFF"), VT_I4, S_OK, 65535},
      {OLESTR("&HFFFFFFFF"), VT_I4, S_OK, -1},
      {OLESTR("&HFFFF"), VT_UI1, kOverflow, 0},
      {OLESTR("&HFF"), VT_CY, kOverflow, 0},
      {OLESTR("1.2345"), VT_CY, S_OK, 12345},
      {OLESTR("-922337203685477.5808"), VT_CY, S_OK, LLONG_MIN},
      {OLESTR("922337203685477.5808"), VT_CY, kOverflow, 0},
      {OLESTR("true"), VT_BOOL, S_OK, -1},
      {OLESTR("FALSE"), VT_BOOL, S_OK, 0},
      {OLESTR("#TRUE#"), VT_BOOL, S_OK, -1},
      {OLESTR("#true#"), VT_BOOL, kMismatch, 0},
      {OLESTR(" true"), VT_BOOL, kMismatch, 0},
      {OLESTR("0.0"), VT_BOOL, S_OK, 0},
      {OLESTR("0.5"), VT_BOOL, S_OK, -1},
      {OLESTR("1e309"), VT_BOOL, kOverflow, 0},
      {OLESTR("garbage"), VT_I4, kMismatch, 0},
      {OLESTR("1"), VT_ERROR, kMismatch, 0},
  };
  for (const Row& row : rows) {
    Value to;
    EXPECT_EQ(ChangeText(row.text, row.type, &to), row.status) << &row - rows;
    if (SUCCEEDED(row.status)) {
      EXPECT_EQ(IntegerOf(to.get()), row.expected) << &row - rows;
    }
  }
}

TEST(VariantChangeType, TextBecomesADecimal) {
  struct Row {
    const OLECHAR* text;
    HRESULT status;
    const OLECHAR* expected;
  };
  const Row rows[] = {
      {OLESTR("-00.100"), S_OK, OLESTR("-0.1")},
      {OLESTR("79228162514264337593543950335"), S_OK, OLESTR("79228162514264337593543950335")},
      {OLESTR("79228162514264337593543950336"), kOverflow, nullptr},
      {OLESTR("79228162514264337593543950334.5"), S_OK, OLESTR("79228162514264337593543950334")},
      {OLESTR("1.23456789012345678901234567890123456789"), S_OK,
       OLESTR("1.2345678901234567890123456789")},
      {OLESTR("9.99999999999999999999999999999999"), S_OK, OLESTR("10")},
      {OLESTR("1e-29"), S_OK, OLESTR("0")},
      {OLESTR("6e-29"), S_OK, OLESTR("0.0000000000000000000000000001")},
      {OLESTR("1e28"), S_OK, OLESTR("10000000000000000000000000000")},
      {OLESTR("1e29"), kOverflow, nullptr},
  };
  for (const Row& row : rows) {
    Value decimal;
    EXPECT_EQ(ChangeText(row.text, VT_DECIMAL, &decimal), row.status) << &row - rows;
    if (FAILED(row.status)) continue;
    Value text;
    EXPECT_EQ(VariantChangeType(text.get(), decimal.get(), 0, VT_BSTR), S_OK);
    EXPECT_EQ(text.text(), row.expected) << &row - rows;
  }
}

// A clock that stands at one day, for dates without a year.
void StandingTime(SYSTEMTIME* time) {
  *time = SYSTEMTIME{2026, 3, 0, 4, 5, 6, 7, 8};
}

// White space before a number is Unicode's, the kinds that keep words together included.
TEST(VariantChangeType, SpaceBeforeNumbersIsSkipped) {
  const std::basic_string<OLECHAR> spaces =
      OLESTR(" \u0085\u00A0\u1680\u2028\u2029\u202F\u205F\u3000");
  const std::basic_string<OLECHAR> parts_of_numbers = OLESTR("0123456789+-.$");
  for (unsigned i = 1; i <= 0xFFFF; ++i) {
    const OLECHAR c = static_cast<OLECHAR>(i);
    if (parts_of_numbers.find(c) != parts_of_numbers.npos) continue;
    const bool space = (c >= 0x09 && c <= 0x0D) || (c >= 0x2000 && c <= 0x200A) ||
                       spaces.find(c) != spaces.npos;
    const OLECHAR text[] = {c, u'5', 0};
    Value to;
    ASSERT_EQ(ChangeText(text, VT_I4, &to), space ? S_OK : kMismatch) << i;
  }
}

TEST(VariantChangeType, DateTextGivesItsDayOrNoDate) {
  const MiroltaClock clock = {nullptr, StandingTime};
  MiroltaSetClock(&clock);
  struct Row {
    const OLECHAR* text;
    double expected;  // 0.125 says that there is no date
  };
  constexpr double kNoDate = 0.125;
  const Row rows[] = {
      {OLESTR("1/2/2000"), 36527},
      {OLESTR("2000-01-02"), 36527},
      {OLESTR("1-2-2000"), 36527},
      {OLESTR("1 2 2000"), 36527},
      {OLESTR("13/1/2000"), 36538},
      {OLESTR("2000-13-01"), 36538},
      {OLESTR("13/12/14"), 41622},
      {OLESTR("14/13/12"), 41986},
      {OLESTR("31/31/31"), kNoDate},
      {OLESTR("2/29/2000"), 36585},
      {OLESTR("2/29/1900"), kNoDate},
      {OLESTR("1/2/49"), 54425},
      {OLESTR("1/2/50"), 18265},
      {OLESTR("1/2/10000"), kNoDate},
      {OLESTR("1/1/100"), -657434},
      {OLESTR("1/2"), 46024},
      {OLESTR("13/5"), 46155},
      {OLESTR("2/30"), 47515},
      {OLESTR("99/1"), 36161},
      {OLESTR("13/13"), kNoDate},
      {OLESTR("January 2, 2000"), 36527},
      {OLESTR("2-jan-00"), 36527},
      {OLESTR("2000 2 Jan"), 36527},
      {OLESTR("jan2,2000"), 36527},
      {OLESTR("Jan 5"), 46027},
      {OLESTR("Jan 40"), 51136},
      {OLESTR("Sunday, January 2, 2000"), 36527},
      {OLESTR("Sunday"), kNoDate},
      {OLESTR("2 Jan 2000 3"), kNoDate},
      {OLESTR("2000 2 3 Jan"), kNoDate},
      {OLESTR("Janu 2 2000"), kNoDate},
      {OLESTR("10:30"), 0.4375},
      {OLESTR("10:30 PM"), 0.9375},
      {OLESTR("10pm"), 22.0 / 24},
      {OLESTR("12:00 AM"), 0},
      {OLESTR("12:00 PM"), 0.5},
      {OLESTR("13:00 PM"), 13.0 / 24},
      {OLESTR("10.30"), 0.4375},
      {OLESTR("24:00"), kNoDate},
      {OLESTR("10:60"), kNoDate},
      {OLESTR("PM 10:30"), kNoDate},
      {OLESTR("10:30 11:30"), kNoDate},
      {OLESTR("1:2:3:4"), kNoDate},
      {OLESTR("1/2/2000 10:30"), 36527.4375},
      {OLESTR("10:30 1/2/2000"), 36527.4375},
      {OLESTR("1/2/2000-10:30"), kNoDate},
      {OLESTR("12/29/1899 10:30"), -1.4375},
      {OLESTR("1/2/2000x"), kNoDate},
      {OLESTR("/1/2000"), kNoDate},
      {OLESTR("1/2/"), kNoDate},
      {OLESTR("1/2/3/4"), kNoDate},
      {OLESTR("99999999999/1/1"), kNoDate},
      {OLESTR("32"), kNoDate},
      {OLESTR(""), kNoDate},
  };
  for (const Row& row : rows) {
    Value to;
    const HRESULT status = ChangeText(row.text, VT_DATE, &to);
    EXPECT_EQ(status, row.expected == kNoDate ? kMismatch : S_OK) << &row - rows;
    if (SUCCEEDED(status)) {
      EXPECT_EQ(to->date, row.expected) << &row - rows;
    }
  }
  MiroltaSetClock(nullptr);
}

// Every day of the runtime's calendar goes to text and back.
TEST(VariantChangeType, DatesRoundTrip) {
  for (int day = -657434; day <= 2958465; day += 997) {
    Value text;
    ASSERT_EQ(Change(Date(day), VT_BSTR, &text), S_OK);
    Value date;
    ASSERT_EQ(VariantChangeType(date.get(), text.get(), 0, VT_DATE), S_OK) << day;
    ASSERT_EQ(date->date, day);
  }
}

TEST(VariantChangeType, ChecksTheTags) {
  Value to;
  EXPECT_EQ(Change(I4(1), 15, &to), DISP_E_BADVARTYPE);
  EXPECT_EQ(Change(I4(1), VT_VOID, &to), DISP_E_BADVARTYPE);
  EXPECT_EQ(Change(Of(15), VT_I4, &to), DISP_E_BADVARTYPE);
  EXPECT_EQ(Change(I4(1), VT_I4 | VT_BYREF, &to), kMismatch);
  EXPECT_EQ(Change(I4(1), VT_I4 | VT_ARRAY, &to), kMismatch);
  EXPECT_EQ(Change(I4(1), VT_UNKNOWN, &to), kMismatch);
  EXPECT_EQ(Change(I4(1), VT_VARIANT, &to), kMismatch);
  EXPECT_EQ(Change(I4(1), VT_EMPTY, &to), S_OK);
  EXPECT_EQ(Change(I4(1), VT_NULL, &to), S_OK);
  EXPECT_EQ(Change(Of(VT_NULL), VT_EMPTY, &to), kMismatch);
  EXPECT_EQ(Change(Of(VT_ERROR), VT_NULL, &to), kMismatch);
}

TEST(VariantChangeType, ConvertsInPlace) {
  Value value;
  SetLong(&value, -12);
  EXPECT_EQ(VariantChangeType(value.get(), value.get(), 0, VT_BSTR), S_OK);
  EXPECT_EQ(value.text(), OLESTR("-12"));
  EXPECT_EQ(VariantChangeType(value.get(), value.get(), 0, VT_R8), S_OK);
  EXPECT_EQ(value->dblVal, -12);
  SetText(&value, OLESTR("x"));
  EXPECT_EQ(VariantChangeType(value.get(), value.get(), 0, VT_I4), kMismatch);
  EXPECT_EQ(value.text(), OLESTR("x"));
}

TEST(VariantChangeType, FollowsReferences) {
  LONG number = 77;
  VARIANT reference = Of(VT_I4 | VT_BYREF);
  reference.plVal = &number;
  VARIANT twice = Of(VT_VARIANT | VT_BYREF);
  twice.pvarVal = &reference;
  Value to;
  EXPECT_EQ(Change(reference, VT_BSTR, &to), S_OK);
  EXPECT_EQ(to.text(), OLESTR("77"));
  EXPECT_EQ(Change(twice, VT_I4, &to), S_OK);
  EXPECT_EQ(to->lVal, 77);
  VARIANT thrice = Of(VT_VARIANT | VT_BYREF);
  thrice.pvarVal = &twice;
  EXPECT_EQ(Change(thrice, VT_I4, &to), E_INVALIDARG);
  EXPECT_EQ(Change(Of(VT_I4 | VT_BYREF), VT_I2, &to), E_INVALIDARG);
}

TEST(VariantChangeType, ObjectsGiveTheirDefaultValue) {
  CountedObject object;
  VARIANT from = Of(VT_DISPATCH);
  from.pdispVal = &object;
  SetLong(&object.value, 1234);
  Value to;
  EXPECT_EQ(Change(from, VT_BSTR, &to), S_OK);
  EXPECT_EQ(to.text(), OLESTR("1234"));
  EXPECT_EQ(object.last_id, DISPID_VALUE);
  EXPECT_EQ(object.last_flags, DISPATCH_PROPERTYGET);
  SetText(&object.value, OLESTR("x"));
  EXPECT_EQ(Change(from, VT_I4, &to), kMismatch);
  object.last_id = -9;
  EXPECT_EQ(Change(from, VT_BSTR, &to, VARIANT_NOVALUEPROP), kMismatch);
  EXPECT_EQ(object.last_id, -9);
  object.status = DISP_E_MEMBERNOTFOUND;
  EXPECT_EQ(Change(from, VT_BSTR, &to), kMismatch);
  EXPECT_EQ(Change(Of(VT_DISPATCH), VT_BSTR, &to), DISP_E_BADVARTYPE);
  EXPECT_EQ(Change(Of(VT_UNKNOWN), VT_BSTR, &to), kMismatch);
  EXPECT_EQ(object.references, 1u);
}

TEST(VariantChangeType, DefaultValuesThatAreObjectsAreFollowedToAnEnd) {
  CountedObject inner;
  SetLong(&inner.value, 5);
  CountedObject outer;
  outer.value->vt = VT_DISPATCH;
  outer.value->pdispVal = &inner;
  inner.AddRef();
  VARIANT from = Of(VT_DISPATCH);
  from.pdispVal = &outer;
  Value to;
  EXPECT_EQ(Change(from, VT_BSTR, &to), S_OK);
  EXPECT_EQ(to.text(), OLESTR("5"));
  EXPECT_EQ(inner.references, 2u);

  // One that is its own default value has none.
  outer.value->pdispVal = &outer;
  inner.Release();
  outer.AddRef();
  EXPECT_EQ(Change(from, VT_BSTR, &to), kMismatch);
  EXPECT_EQ(outer.references, 2u);
}

TEST(VariantChangeType, ObjectsAreAskedForTheOtherInterface) {
  CountedObject object;
  VARIANT from = Of(VT_UNKNOWN);
  from.punkVal = &object;
  Value to;
  EXPECT_EQ(Change(from, VT_DISPATCH, &to), S_OK);
  EXPECT_EQ(to->pdispVal, &object);
  EXPECT_EQ(object.references, 2u);
  object.refuses_dispatch = true;
  EXPECT_EQ(Change(from, VT_DISPATCH, &to), E_NOINTERFACE);
  EXPECT_EQ(object.references, 1u);
  EXPECT_EQ(Change(Of(VT_UNKNOWN), VT_DISPATCH, &to), S_OK);
  EXPECT_EQ(to->pdispVal, nullptr);
}

TEST(VariantChangeType, ByteArraysAndTextExchangeBytes) {
  Value bytes(VT_ARRAY | VT_UI1);
  bytes->parray = SafeArrayCreateVector(VT_UI1, -1, 4);
  memcpy(bytes->parray->pvData, "a\0b\0", 4);
  Value text;
  EXPECT_EQ(VariantChangeType(text.get(), bytes.get(), 0, VT_BSTR), S_OK);
  Value back;
  EXPECT_EQ(VariantChangeType(back.get(), text.get(), 0, VT_ARRAY | VT_UI1), S_OK);
  LONG upper = 0;
  EXPECT_EQ(SafeArrayGetUBound(back->parray, 1, &upper), S_OK);
  EXPECT_EQ(upper, 3);
  EXPECT_EQ(memcmp(back->parray->pvData, "a\0b\0", 4), 0);
  EXPECT_EQ(SysStringByteLen(text->bstrVal), 4u);
  Value numbers(VT_ARRAY | VT_I4);
  numbers->parray = SafeArrayCreateVector(VT_I4, 0, 1);
  EXPECT_EQ(VariantChangeType(text.get(), numbers.get(), 0, VT_BSTR), kMismatch);
  EXPECT_EQ(VariantChangeType(text.get(), bytes.get(), 0, VT_ARRAY | VT_I4), kMismatch);
}

TEST(VariantChangeType, ReportsShortMemory) {
  Value to;
  for (const VARIANT& from : {I4(5), R8(0.5), Bool(0), Date(1), Of(VT_EMPTY)}) {
    SetLong(&to, kSentinel);
    MiroltaFailAllocationAfter(0);
    EXPECT_EQ(VariantChangeType(to.get(), &from, 0, VT_BSTR), E_OUTOFMEMORY) << from.vt;
    EXPECT_TRUE(MiroltaAllocationHasFailed());
    EXPECT_EQ(to->lVal, kSentinel);
  }
}

}  // namespace
}  // namespace mirolta
