// Prints the results of several thousand automation value operations, one a line, so that the
// output of a build over the portable runtime can be compared with that of a build over the
// platform.
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "platform.h"

namespace {

using Text = std::basic_string<OLECHAR>;

// ---- printing: only what is the same in both builds, floating point numbers by their bits

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

std::string Show(const VARIANT& value);

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

std::string Show(const VARIANT& value) {
  std::string out = "vt" + Hex(value.vt, 4) + " ";
  if ((value.vt & VT_BYREF) != 0) return out + (value.byref == nullptr ? "null" : "reference");
  if ((value.vt & VT_ARRAY) != 0) return out + ShowArray(value.parray);
  return out + ShowPlain(value);
}

const char* section = "";
int number = 0;

void Print(const std::string& what, const std::string& result) {
  printf("%s %d %s => %s\n", section, ++number, what.c_str(), result.c_str());
}
std::string Status(HRESULT status) {
  return Hex(static_cast<ULONG>(status), 8);
}
void Section(const char* name) {
  section = name;
  number = 0;
}

// ---- values

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

// Refers to the value in another VARIANT.
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

constexpr LCID kEnglish = 0x0409;
const VARTYPE kTypes[] = {VT_EMPTY, VT_NULL,  VT_I1,       VT_UI1,     VT_I2,      VT_UI2,
                          VT_I4,    VT_UI4,   VT_I8,       VT_UI8,     VT_INT,     VT_UINT,
                          VT_R4,    VT_R8,    VT_BOOL,     VT_CY,      VT_DECIMAL, VT_DATE,
                          VT_BSTR,  VT_ERROR, VT_DISPATCH, VT_UNKNOWN, VT_VARIANT};

void Change(VARIANT from, USHORT flags, VARTYPE type) {
  VARIANT to = Integer(VT_I4, 4711);  // a sentinel: what a failure leaves there
  const HRESULT status = VariantChangeTypeEx(&to, &from, kEnglish, flags, type);
  Print(Show(from) + " f" + Decimal(flags) + " -> " + Decimal(type),
        Status(status) + " " + Show(to));
  VariantClear(&to);
}

// ---- sections

void Tags() {
  Section("tags");
  const unsigned flags[] = {0, 0x1000, 0x2000, 0x4000, 0x6000, 0x8000, 0xE000};
  static BYTE zeros[64];
  for (unsigned flag : flags) {
    for (unsigned base = 0; base < 0x60; ++base) {
      const VARTYPE type = static_cast<VARTYPE>(base | flag);
      VARIANT value = Of(type);
      const HRESULT cleared = VariantClear(&value);
      const VARTYPE after = value.vt;
      value = Of(type);
      if ((type & VT_BYREF) != 0) value.byref = zeros;
      VARIANT copy = Integer(VT_I4, 1);
      const HRESULT copied = VariantCopy(&copy, &value);
      VARIANT direct = Integer(VT_I4, 1);
      const HRESULT followed = VariantCopyInd(&direct, &value);
      VARIANT from_this = Integer(VT_I4, 1);
      const HRESULT changed = VariantChangeType(&from_this, &value, 0, VT_I4);
      VARIANT to_this = Integer(VT_I4, 1);
      VARIANT one = Integer(VT_I4, 1);
      const HRESULT into = VariantChangeType(&to_this, &one, 0, type);
      Print(Hex(type, 4), Status(cleared) + "/" + Hex(after, 4) + " " + Status(copied) + "/" +
                              Hex(copy.vt, 4) + " " + Status(followed) + "/" + Hex(direct.vt, 4) +
                              " " + Status(changed) + "/" + Hex(from_this.vt, 4) + " " +
                              Status(into) + "/" + Hex(to_this.vt, 4));
      VariantClear(&to_this);
    }
  }
}

std::vector<VARIANT> IntegerValues() {
  std::vector<VARIANT> values;
  struct Range {
    VARTYPE type;
    LONGLONG least;
    LONGLONG greatest;
  };
  const Range ranges[] = {{VT_I1, -128, 127},
                          {VT_UI1, 0, 255},
                          {VT_I2, -32768, 32767},
                          {VT_UI2, 0, 65535},
                          {VT_I4, INT_MIN, INT_MAX},
                          {VT_INT, INT_MIN, INT_MAX},
                          {VT_UI4, 0, 0xFFFFFFFFll},
                          {VT_UINT, 0, 0xFFFFFFFFll},
                          {VT_I8, LLONG_MIN, LLONG_MAX},
                          {VT_UI8, 0, -1},
                          {VT_CY, LLONG_MIN, LLONG_MAX},
                          {VT_BOOL, -32768, 32767},
                          {VT_ERROR, INT_MIN, INT_MAX}};
  const LONGLONG edges[] = {0,
                            1,
                            2,
                            -1,
                            -2,
                            12,
                            100,
                            127,
                            128,
                            -128,
                            -129,
                            255,
                            256,
                            1234,
                            32767,
                            32768,
                            -32768,
                            -32769,
                            65535,
                            65536,
                            2147483647ll,
                            2147483648ll,
                            -2147483648ll,
                            -2147483649ll,
                            4294967295ll,
                            4294967296ll,
                            9007199254740993ll,
                            922337203685477ll,
                            922337203685478ll,
                            -922337203685477ll,
                            -922337203685478ll,
                            1234567890123456789ll};
  for (const Range& range : ranges) {
    for (LONGLONG edge : edges) {
      const bool wide = range.type == VT_UI8;
      if (wide ? edge < 0 : edge < range.least || edge > range.greatest) continue;
      values.push_back(Integer(range.type, edge));
    }
    if (range.least < INT_MIN) values.push_back(Integer(range.type, range.least));
    if (range.greatest > 0xFFFFFFFFll || range.greatest < 0) {
      values.push_back(Integer(range.type, range.greatest));
    }
  }
  for (LONGLONG cy :
       {5000ll,    15000ll,     25000ll,     -5000ll,     -15000ll,         -25000ll,
        5001ll,    4999ll,      12345ll,     1275000ll,   1284999ll,        -1285000ll,
        2555000ll, 327675000ll, 327674999ll, 655355000ll, 21474836475000ll, 42949672955000ll,
        10ll,      120000ll,    1234567ll}) {
    values.push_back(Integer(VT_CY, cy));
  }
  return values;
}

std::vector<VARIANT> RealValues() {
  const double inf = std::numeric_limits<double>::infinity();
  const double edges[] = {0.0,
                          -0.0,
                          1.0,
                          -1.0,
                          0.5,
                          1.5,
                          2.5,
                          3.5,
                          -0.5,
                          -1.5,
                          -2.5,
                          0.49999999,
                          0.50000001,
                          0.1,
                          1.0 / 3,
                          2.0 / 3,
                          100.25,
                          12345.678,
                          1e6,
                          1e7,
                          12345678.9,
                          123456789.0,
                          1e14,
                          1e15,
                          123456789012345.0,
                          1234567890123456.0,
                          1e16,
                          1e20,
                          1e28,
                          1e29,
                          7.9e28,
                          8e28,
                          1e38,
                          3.4e38,
                          3.5e38,
                          1e100,
                          1.7e308,
                          1e-1,
                          0.001,
                          1e-4,
                          1e-5,
                          1.5e-5,
                          1e-7,
                          1e-10,
                          1e-28,
                          1e-29,
                          1e-38,
                          1e-45,
                          5e-324,
                          127.0,
                          127.4,
                          127.5,
                          127.6,
                          128.0,
                          -128.0,
                          -128.4,
                          -128.5,
                          -128.6,
                          -129.0,
                          255.0,
                          255.4,
                          255.5,
                          255.6,
                          256.0,
                          32767.4,
                          32767.5,
                          32767.6,
                          32768.0,
                          -32768.4,
                          -32768.5,
                          -32768.6,
                          65535.4,
                          65535.5,
                          65535.6,
                          2147483647.4,
                          2147483647.5,
                          2147483647.6,
                          -2147483648.4,
                          -2147483648.5,
                          -2147483648.6,
                          4294967295.4,
                          4294967295.5,
                          4294967295.6,
                          9223372036854774784.0,
                          9223372036854775808.0,
                          -9223372036854775808.0,
                          -9223372036854777856.0,
                          18446744073709549568.0,
                          18446744073709551616.0,
                          922337203685477.5,
                          922337203685477.6,
                          922337203685478.0,
                          -922337203685477.5,
                          0.00005,
                          0.00015,
                          0.00025,
                          1.00005,
                          -657434.0,
                          -657435.0,
                          2958465.0,
                          2958465.999,
                          2958466.0,
                          36526.0,
                          36526.75,
                          -1.25,
                          0.75,
                          60.0,
                          1.2345678901234567,
                          9.99999999999999e14,
                          999999999999999.9,
                          0.1 + 0.2,
                          1e21 / 3,
                          65.4321,
                          inf,
                          -inf,
                          std::numeric_limits<double>::quiet_NaN()};
  std::vector<VARIANT> values;
  for (double edge : edges) {
    for (VARTYPE type : {VT_R4, VT_R8, VT_DATE}) {
      const double magnitude = std::fabs(edge);
      if (type == VT_R4 && magnitude > 3.45e38 && !std::isinf(edge)) continue;
      values.push_back(Real(type, edge));
    }
  }
  return values;
}

std::vector<VARIANT> DecimalValues() {
  std::vector<VARIANT> values;
  struct Row {
    BYTE scale;
    ULONG high;
    ULONGLONG low;
  };
  const Row rows[] = {{0, 0, 0},
                      {0, 0, 1},
                      {5, 0, 0},
                      {1, 0, 5},
                      {1, 0, 15},
                      {1, 0, 25},
                      {1, 0, 35},
                      {0, 0, 127},
                      {1, 0, 1275},
                      {1, 0, 1285},
                      {0, 0, 128},
                      {0, 0, 255},
                      {1, 0, 2555},
                      {0, 0, 256},
                      {0, 0, 32767},
                      {0, 0, 32768},
                      {0, 0, 65535},
                      {0, 0, 65536},
                      {0, 0, 2147483647},
                      {0, 0, 2147483648u},
                      {0, 0, 4294967295u},
                      {0, 0, 4294967296ull},
                      {1, 0, 42949672955ull},
                      {4, 0, 12345678},
                      {4, 0, 12340000},
                      {28, 0, 1},
                      {28, 0xFFFFFFFF, 0xFFFFFFFFFFFFFFFFull},
                      {0, 0xFFFFFFFF, 0xFFFFFFFFFFFFFFFFull},
                      {0, 0, 0x7FFFFFFFFFFFFFFFull},
                      {0, 0, 0x8000000000000000ull},
                      {0, 0, 0xFFFFFFFFFFFFFFFFull},
                      {0, 1, 0},
                      {1, 5, 0},
                      {5, 0, 123456789},
                      {10, 0, 1},
                      {6, 0, 1000050},
                      {5, 0, 5},
                      {5, 0, 15},
                      {4, 0, 0x7FFFFFFFFFFFFFFFull},
                      {4, 0, 0x8000000000000000ull},
                      {2, 0, 120},
                      {20, 0x1234, 0x56789ABCDEF01234ull}};
  for (const Row& row : rows) {
    for (bool negative : {false, true})
      values.push_back(Dec(row.scale, negative, row.high, row.low));
  }
  return values;
}

const OLECHAR* const kNumberTexts[] = {
    OLESTR(""),
    OLESTR(" "),
    OLESTR("0"),
    OLESTR("1"),
    OLESTR("-1"),
    OLESTR("+1"),
    OLESTR(" 12 "),
    OLESTR("\t12\t"),
    OLESTR("\n12\n"),
    OLESTR("1 2"),
    OLESTR("12abc"),
    OLESTR("abc"),
    OLESTR("1e3"),
    OLESTR("1E3"),
    OLESTR("1e+3"),
    OLESTR("1e-3"),
    OLESTR("1.5e3"),
    OLESTR("1e"),
    OLESTR("1d3"),
    OLESTR("e3"),
    OLESTR("&HFF"),
    OLESTR("&hff"),
    OLESTR("&O17"),
    OLESTR("&o17"),
    OLESTR("&H"),
    OLESTR("&HFFFF"),
    OLESTR("&HFFFFFFFF"),
    OLESTR("&H80000000"),
    OLESTR("&H7FFF"),
    OLESTR("&H8000"),
    OLESTR("-&HFF"),
    OLESTR(" &HFF "),
    OLESTR("&HFFFFFFFFFFFFFFFF"),
    OLESTR("&O177777"),
    OLESTR("0x10"),
    OLESTR("1,234.5"),
    OLESTR("1,2,3"),
    OLESTR("12,34"),
    OLESTR(",1"),
    OLESTR("1,"),
    OLESTR("1,234"),
    OLESTR("1,,2"),
    OLESTR("$5"),
    OLESTR("$ 5"),
    OLESTR("5$"),
    OLESTR("-$5"),
    OLESTR("$-5"),
    OLESTR("$1,234.56"),
    OLESTR("(5)"),
    OLESTR("(5"),
    OLESTR("5)"),
    OLESTR("($5)"),
    OLESTR("$(5)"),
    OLESTR("(-5)"),
    OLESTR("5-"),
    OLESTR("5+"),
    OLESTR("-5-"),
    OLESTR("--5"),
    OLESTR("+-5"),
    OLESTR("- 5"),
    OLESTR("5 -"),
    OLESTR("( 5 )"),
    OLESTR("true"),
    OLESTR("True"),
    OLESTR("TRUE"),
    OLESTR("false"),
    OLESTR("#TRUE#"),
    OLESTR("#FALSE#"),
    OLESTR("#true#"),
    OLESTR("yes"),
    OLESTR(" true"),
    OLESTR("0.5"),
    OLESTR("1.5"),
    OLESTR("2.5"),
    OLESTR("-0.5"),
    OLESTR("-1.5"),
    OLESTR(".5"),
    OLESTR("5."),
    OLESTR("."),
    OLESTR("-"),
    OLESTR("+"),
    OLESTR("1.2.3"),
    OLESTR("127"),
    OLESTR("128"),
    OLESTR("-128"),
    OLESTR("-129"),
    OLESTR("127.4"),
    OLESTR("127.5"),
    OLESTR("128.5"),
    OLESTR("255"),
    OLESTR("255.5"),
    OLESTR("254.5"),
    OLESTR("256"),
    OLESTR("32767"),
    OLESTR("32767.5"),
    OLESTR("32768"),
    OLESTR("-32768"),
    OLESTR("-32769"),
    OLESTR("65535"),
    OLESTR("65535.5"),
    OLESTR("65536"),
    OLESTR("2147483647"),
    OLESTR("2147483647.5"),
    OLESTR("2147483648"),
    OLESTR("-2147483648"),
    OLESTR("-2147483649"),
    OLESTR("4294967295"),
    OLESTR("4294967295.5"),
    OLESTR("4294967296"),
    OLESTR("9223372036854775807"),
    OLESTR("9223372036854775808"),
    OLESTR("-9223372036854775808"),
    OLESTR("-9223372036854775809"),
    OLESTR("18446744073709551615"),
    OLESTR("18446744073709551616"),
    OLESTR("79228162514264337593543950335"),
    OLESTR("79228162514264337593543950336"),
    OLESTR("-79228162514264337593543950335"),
    OLESTR("0.0000000000000000000000000001"),
    OLESTR("0.00000000000000000000000000001"),
    OLESTR("7.9228162514264337593543950335"),
    OLESTR("1.23456789012345678901234567890123456789"),
    OLESTR("123456789012345678901234567890123456789"),
    OLESTR("1e28"),
    OLESTR("1e29"),
    OLESTR("1e38"),
    OLESTR("3.5e38"),
    OLESTR("1e308"),
    OLESTR("1e309"),
    OLESTR("1e-400"),
    OLESTR("1e-45"),
    OLESTR("1e99999"),
    OLESTR("0e99999"),
    OLESTR("922337203685477.5807"),
    OLESTR("922337203685477.5808"),
    OLESTR("-922337203685477.5808"),
    OLESTR("0.00005"),
    OLESTR("0.00015"),
    OLESTR("0.00025"),
    OLESTR("1.00005"),
    OLESTR("0.1"),
    OLESTR("3.14159265358979"),
    OLESTR("3.141592653589793238"),
    OLESTR("000123"),
    OLESTR("-000"),
    OLESTR("00.100"),
    OLESTR("100"),
    OLESTR("1000000"),
    OLESTR("1200"),
    OLESTR("12.3400"),
    OLESTR("%5"),
    OLESTR("5%"),
    OLESTR("inf"),
    OLESTR("nan"),
    OLESTR("1.#INF"),
    OLESTR("\u0661"),
    OLESTR("\uFF11"),
    OLESTR("\u00A01"),
    OLESTR("1\u00A0"),
    OLESTR("\u20AC5"),
    OLESTR("1'000"),
    OLESTR("1e3.5"),
    OLESTR("1e 3"),
    OLESTR("1 e3"),
    OLESTR("1,000e3"),
    OLESTR("(1e3)"),
    OLESTR("1e3-"),
    OLESTR("36526"),
    OLESTR("36526.5"),
    OLESTR("1/2"),
    OLESTR("10:30"),
    OLESTR("1.5,3"),
    OLESTR("1.,5"),
    OLESTR("1,.5"),
    OLESTR("(5)-"),
    OLESTR("-(5)"),
    OLESTR("(5-)"),
    OLESTR("((5))"),
    OLESTR("$$5"),
    OLESTR("$5$"),
    OLESTR("5 $"),
    OLESTR("5$-"),
    OLESTR("5-$"),
    OLESTR("+5+"),
    OLESTR("-5+"),
    OLESTR("+5-"),
    OLESTR("-+5"),
    OLESTR("$+5"),
    OLESTR("(+5)"),
    OLESTR("(5+)"),
    OLESTR("&H5-"),
    OLESTR("&H5)"),
    OLESTR("(&H5)"),
    OLESTR("$&H5"),
    OLESTR("+&H5"),
    OLESTR("&H 5"),
    OLESTR("& H5"),
    OLESTR("&H5 5"),
    OLESTR("&H1G"),
    OLESTR("&H1.5"),
    OLESTR("&O8"),
    OLESTR("&O18"),
    OLESTR("&H123456789"),
    OLESTR("&H7FFFFFFFFFFFFFFF"),
    OLESTR("&H8000000000000000"),
    OLESTR("&HFFFFFFFFF"),
    OLESTR("&H00000000000000000FF"),
    OLESTR("&HFFFFFFFE"),
    OLESTR("&H90000000"),
    OLESTR("&HC0000000"),
    OLESTR("&HFFFF0000"),
    OLESTR("&O37777777777"),
    OLESTR("&O20000000000"),
    OLESTR("1e+"),
    OLESTR("1e-"),
    OLESTR("1e+-3"),
    OLESTR("1e03"),
    OLESTR("1e00000000000000000003"),
    OLESTR(".e3"),
    OLESTR(".5e1"),
    OLESTR("5.e1"),
    OLESTR("e"),
    OLESTR("0x"),
    OLESTR("1\t\r\n"),
    OLESTR("\v1"),
    OLESTR("\f1"),
    OLESTR("\r1"),
    OLESTR("1\v"),
    OLESTR("\u20031"),
    OLESTR("\u30001"),
    OLESTR("1\u3000"),
    OLESTR("1 000"),
    OLESTR("1\u00a0000"),
    OLESTR("USD5"),
    OLESTR("5USD"),
    OLESTR("- $ 5"),
    OLESTR("$ - 5"),
    OLESTR("( $ 5 )"),
    OLESTR("$5)"),
    OLESTR("1 , 2"),
    OLESTR("1, 2"),
    OLESTR("1. 5"),
    OLESTR("1 .5"),
    OLESTR("00"),
    OLESTR("0.0"),
    OLESTR("-0"),
    OLESTR("0e5"),
    OLESTR("-0.4"),
    OLESTR("-0.6"),
    OLESTR("(0)"),
    OLESTR("0-"),
    OLESTR("(0.5)"),
    OLESTR("2.50000000000000000000000000000000000000000000000000000000000000000000001"),
    OLESTR("79228162514264337593543950334.5"),
    OLESTR("9.99999999999999999999999999999999"),
    OLESTR("6e-29"),
    OLESTR("1e-29")};

const OLECHAR* const kDateTexts[] = {OLESTR("1/2/2000"),
                                     OLESTR("2000-01-02"),
                                     OLESTR("10:30 PM"),
                                     OLESTR("10:30PM"),
                                     OLESTR("10:30"),
                                     OLESTR("10:30:45"),
                                     OLESTR("10:30:45 AM"),
                                     OLESTR("22:30"),
                                     OLESTR("24:00"),
                                     OLESTR("23:59:59"),
                                     OLESTR("10:60"),
                                     OLESTR("10:30:60"),
                                     OLESTR("12:00 AM"),
                                     OLESTR("12:00 PM"),
                                     OLESTR("13:00 PM"),
                                     OLESTR("0:30 AM"),
                                     OLESTR("10 PM"),
                                     OLESTR("10 am"),
                                     OLESTR("10pm"),

                                     OLESTR("1/2/2000 10:30"),
                                     OLESTR("1/2/2000 10:30:45 PM"),
                                     OLESTR("10:30 1/2/2000"),
                                     OLESTR("2000-01-02 10:30:45"),
                                     OLESTR("2000-01-02T10:30:45"),
                                     OLESTR("2000/01/02"),
                                     OLESTR("2000.01.02"),
                                     OLESTR("2/1/2000"),
                                     OLESTR("13/1/2000"),
                                     OLESTR("1/13/2000"),
                                     OLESTR("31/12/1999"),
                                     OLESTR("12/31/1999"),
                                     OLESTR("2/30/2000"),
                                     OLESTR("2/29/2000"),
                                     OLESTR("2/29/1900"),
                                     OLESTR("2/29/2001"),
                                     OLESTR("13/13/2000"),
                                     OLESTR("0/1/2000"),
                                     OLESTR("1/0/2000"),
                                     OLESTR("1/32/2000"),
                                     OLESTR("1/2/0"),
                                     OLESTR("1/2/00"),
                                     OLESTR("1/2/29"),
                                     OLESTR("1/2/30"),
                                     OLESTR("1/2/49"),
                                     OLESTR("1/2/50"),
                                     OLESTR("1/2/99"),
                                     OLESTR("1/2/100"),
                                     OLESTR("1/2/999"),
                                     OLESTR("1/2/9999"),
                                     OLESTR("1/2/10000"),
                                     OLESTR("01/02/2000"),
                                     OLESTR("1-2-2000"),
                                     OLESTR("1.2.2000"),
                                     OLESTR("1 2 2000"),
                                     OLESTR("1,2,2000"),
                                     OLESTR("1 / 2 / 2000"),
                                     OLESTR("1-2/2000"),
                                     OLESTR("Jan 2 2000"),
                                     OLESTR("January 2, 2000"),
                                     OLESTR("jan 2, 2000"),
                                     OLESTR("2 January 2000"),
                                     OLESTR("2 jan 2000"),
                                     OLESTR("2-Jan-2000"),
                                     OLESTR("2-jan-00"),
                                     OLESTR("Jan-2-2000"),
                                     OLESTR("2000 Jan 2"),
                                     OLESTR("2000 2 Jan"),
                                     OLESTR("Jan 2000"),
                                     OLESTR("January 2000"),
                                     OLESTR("2000 January"),
                                     OLESTR("May 5 2010"),
                                     OLESTR("Sept 5 2010"),
                                     OLESTR("Sep 5 2010"),
                                     OLESTR("Dec 31 1999 11:59 PM"),
                                     OLESTR("Feb 30 2000"),
                                     OLESTR("Janu 2 2000"),
                                     OLESTR("Ja 2 2000"),
                                     OLESTR("Jan/2/2000"),
                                     OLESTR("jan2,2000"),
                                     OLESTR("January 2, 2000 10:30:00 AM"),
                                     OLESTR("Sunday, January 2, 2000"),
                                     OLESTR("Sun Jan 2 2000"),
                                     OLESTR("Monday January 2 2000"),
                                     OLESTR("Sunday"),
                                     OLESTR("January"),
                                     OLESTR("Jan"),
                                     OLESTR("Jan 40"),
                                     OLESTR("Jan 1999"),
                                     OLESTR("2000"),
                                     OLESTR("20000102"),
                                     OLESTR("1/2000"),
                                     OLESTR("13/2000"),
                                     OLESTR("2000/1"),
                                     OLESTR("2000/13"),
                                     OLESTR("2000-02-30"),
                                     OLESTR("2000-13-01"),
                                     OLESTR("2000-12-13"),
                                     OLESTR("2000-31-12"),
                                     OLESTR("100-1-1"),
                                     OLESTR("99-1-1"),
                                     OLESTR("99/12/31"),
                                     OLESTR("50-6-7"),
                                     OLESTR("32/1/2"),
                                     OLESTR("1/32/2"),
                                     OLESTR("40/5/6"),
                                     OLESTR("5/40/6"),
                                     OLESTR("12/13/14"),
                                     OLESTR("13/12/14"),
                                     OLESTR("14/13/12"),
                                     OLESTR("31/31/31"),
                                     OLESTR("12/30/1899"),
                                     OLESTR("12/29/1899"),
                                     OLESTR("12/31/1899"),
                                     OLESTR("12/30/1899 10:30"),
                                     OLESTR("12/29/1899 10:30"),
                                     OLESTR("1/1/100"),
                                     OLESTR("1/1/0100"),
                                     OLESTR("12/31/9999"),
                                     OLESTR("12/31/9999 23:59:59"),
                                     OLESTR("1/1/1900"),
                                     OLESTR("3/1/1900"),
                                     OLESTR("2/28/1900"),
                                     OLESTR("1/2/2000 "),
                                     OLESTR(" 1/2/2000"),
                                     OLESTR("1/2/2000x"),
                                     OLESTR("x1/2/2000"),
                                     OLESTR("1/2/2000 25:00"),
                                     OLESTR("1/2/2000 PM"),
                                     OLESTR("1//2000"),
                                     OLESTR("/1/2000"),
                                     OLESTR("1/2/"),
                                     OLESTR("1:"),
                                     OLESTR(":30"),
                                     OLESTR("1:2:3:4"),
                                     OLESTR("1:2.5"),
                                     OLESTR("10:30:45.5"),
                                     OLESTR("10.30"),
                                     OLESTR("10.30.45"),
                                     OLESTR("1.2.3.4"),
                                     OLESTR("1/2/3/4"),
                                     OLESTR("garbage"),
                                     OLESTR("12:30 a.m."),

                                     OLESTR("1:2 pm 1/2/2003"),
                                     OLESTR("1/2/2003 1:2pm"),
                                     OLESTR("01:02:03 pm"),
                                     OLESTR("1/2/2000 10:30:45PM"),
                                     OLESTR("#1/2/2000#"),
                                     OLESTR("1.5"),
                                     OLESTR("-1.5"),
                                     OLESTR("1e3"),
                                     OLESTR("32"),
                                     OLESTR("36526"),
                                     OLESTR("13/5"),
                                     OLESTR("31/4"),
                                     OLESTR("5/31"),
                                     OLESTR("2/30"),
                                     OLESTR("2/29"),
                                     OLESTR("99/1"),
                                     OLESTR("1/99"),
                                     OLESTR("32/1"),
                                     OLESTR("1/32"),
                                     OLESTR("0/5"),
                                     OLESTR("5/0"),
                                     OLESTR("12/12"),
                                     OLESTR("13/13"),
                                     OLESTR("32/32"),
                                     OLESTR("Jan 5"),
                                     OLESTR("5 Jan"),
                                     OLESTR("Jan 31"),
                                     OLESTR("Jan 32"),
                                     OLESTR("Feb 29"),
                                     OLESTR("Feb 30"),
                                     OLESTR("Jan 0"),
                                     OLESTR("0 Jan"),
                                     OLESTR("Jan 5 6"),
                                     OLESTR("5 Jan 6"),
                                     OLESTR("5 6 Jan"),
                                     OLESTR("Jan 32 6"),
                                     OLESTR("Jan 6 32"),
                                     OLESTR("32 Jan 6"),
                                     OLESTR("6 Jan 32"),
                                     OLESTR("Jan 31 31"),
                                     OLESTR("Feb 29 30"),
                                     OLESTR("Feb 30 29"),
                                     OLESTR("30 Feb 29"),
                                     OLESTR("1/2/2000 12"),
                                     OLESTR("1/2/3 4 PM"),
                                     OLESTR("1 PM 2/3/2004"),
                                     OLESTR("10:30 Jan 5 2000"),
                                     OLESTR("10:30 Jan 5"),
                                     OLESTR("1 2 3 4"),
                                     OLESTR("1 2"),
                                     OLESTR("5"),
                                     OLESTR("Jan Feb 5"),
                                     OLESTR("10:30 11:30"),
                                     OLESTR("10:30 10:40 PM"),
                                     OLESTR("PM"),
                                     OLESTR("PM 10:30"),
                                     OLESTR("AM 10"),
                                     OLESTR("10:30 PM AM"),
                                     OLESTR("1:2:3 1/2"),
                                     OLESTR("1/2 1:2:3"),
                                     OLESTR("1.30 PM"),
                                     OLESTR("1.30 1/2/2000"),
                                     OLESTR("1/2/2000 1.30"),
                                     OLESTR("25.30"),
                                     OLESTR("1.2.3 PM"),
                                     OLESTR("1/2-3"),
                                     OLESTR("1-2-3"),
                                     OLESTR("1,2 3"),
                                     OLESTR("1, 2, 3"),
                                     OLESTR("/1/2/3"),
                                     OLESTR("1/2/3/"),
                                     OLESTR("1:2:"),
                                     OLESTR("1::2"),
                                     OLESTR("1 :2"),
                                     OLESTR("1: 2"),
                                     OLESTR("1 : 2 : 3"),
                                     OLESTR("1/2/2000,10:30"),
                                     OLESTR("1/2/2000, 10:30"),
                                     OLESTR("1/2/2000-10:30"),
                                     OLESTR("1/2/2000/10:30"),
                                     OLESTR("10:30,1/2/2000"),
                                     OLESTR("Mon 1/2/2000"),
                                     OLESTR("Mon"),
                                     OLESTR("Tue 10:30"),
                                     OLESTR("mon jan 5"),
                                     OLESTR("Jan. 5 2000"),
                                     OLESTR("5. Jan 2000"),
                                     OLESTR("5 of Jan"),
                                     OLESTR("5th Jan"),
                                     OLESTR("march 5 2000"),
                                     OLESTR("mar 5 2000"),
                                     OLESTR("marc 5 2000"),
                                     OLESTR("12/25/99"),
                                     OLESTR("25/12/99"),
                                     OLESTR("99/25/12"),
                                     OLESTR("12/99/25"),
                                     OLESTR("25/99/12"),
                                     OLESTR("99/12/25"),
                                     OLESTR("\t1/2/2000"),
                                     OLESTR("1/2/2000\n"),
                                     OLESTR("1\t2\t2000"),
                                     OLESTR("1/2/2000\u00A0"),
                                     OLESTR("0:0:0"),
                                     OLESTR("0:0"),
                                     OLESTR("00:00:00"),
                                     OLESTR("10:5"),
                                     OLESTR("10:005"),
                                     OLESTR("010:05"),
                                     OLESTR("1/002/2000"),
                                     OLESTR("1/2/02000"),
                                     OLESTR("00001/2/2000"),
                                     OLESTR("1/2/000"),
                                     OLESTR("1/2/0005"),
                                     OLESTR("1/2/005"),
                                     OLESTR("12 AM"),
                                     OLESTR("12 PM"),
                                     OLESTR("0 AM"),
                                     OLESTR("0 PM"),
                                     OLESTR("13 PM"),
                                     OLESTR("23 PM"),
                                     OLESTR("24 PM"),
                                     OLESTR("13 AM"),
                                     OLESTR("23:00 AM"),
                                     OLESTR("10:30 XM"),
                                     OLESTR("10:30 a.m."),
                                     OLESTR("10:30 AMX"),
                                     OLESTR("10:30 P M"),
                                     OLESTR("January, 2000"),
                                     OLESTR("January,2000"),
                                     OLESTR("2000, January"),
                                     OLESTR("1/Jan/2000"),
                                     OLESTR("1 Jan 2000 10:30:45 pm"),
                                     OLESTR("Saturday 1 January 2000 10:30:45 pm"),
                                     OLESTR("+1/2/2000"),
                                     OLESTR("-1/2/2000"),
                                     OLESTR("(1/2/2000)"),
                                     OLESTR("1/2/2000;10:30"),
                                     OLESTR("9/31/2000"),
                                     OLESTR("12/31/99"),
                                     OLESTR("1/1/0099"),
                                     OLESTR("1/1/99"),
                                     OLESTR("65536/1/1"),
                                     OLESTR("1/65537/2000"),
                                     OLESTR("99999999999/1/1"),
                                     OLESTR("4294967297/1/2000"),
                                     OLESTR("1 2 PM"),
                                     OLESTR("10:30 pm 1-2-2000"),
                                     OLESTR("2000-1"),
                                     OLESTR("2000 1"),
                                     OLESTR("1 2000"),
                                     OLESTR("2000 13"),
                                     OLESTR("10,30"),
                                     OLESTR("1e3/2"),
                                     OLESTR("May"),
                                     OLESTR("may 5"),
                                     OLESTR("mayo 5"),
                                     OLESTR("may5"),
                                     OLESTR("5may"),
                                     OLESTR("5may2000"),
                                     OLESTR("5may00"),
                                     OLESTR("1/2/2000 0:00"),
                                     OLESTR("12/30/1899 0:00"),
                                     OLESTR("12/29/1899 12:00"),
                                     OLESTR("12/29/1899 0:00:01"),
                                     OLESTR("1/1/100 0:00:01"),
                                     OLESTR("1.1"),
                                     OLESTR("1.1.1.1"),
                                     OLESTR("24.1"),
                                     OLESTR("23.59"),
                                     OLESTR("23.59.59"),
                                     OLESTR("23.60"),
                                     OLESTR("1:2.3"),
                                     OLESTR("1.2:3"),
                                     OLESTR("1:2:3.5")};

void Coercions() {
  Section("change");
  std::vector<VARIANT> values = {Of(VT_EMPTY),        Of(VT_NULL),    Of(VT_BSTR),
                                 Of(VT_DISPATCH),     Of(VT_UNKNOWN), Of(VT_VARIANT),
                                 Of(VT_I4 | VT_ARRAY)};
  for (const VARIANT& value : IntegerValues()) values.push_back(value);
  for (const VARIANT& value : RealValues()) values.push_back(value);
  for (const VARIANT& value : DecimalValues()) values.push_back(value);
  for (const VARIANT& value : values) {
    for (VARTYPE type : kTypes) Change(value, 0, type);
    Change(value, 0, VT_I4 | VT_ARRAY);
  }
}

void Texts() {
  Section("text");
  for (const OLECHAR* text : kNumberTexts) {
    VARIANT value = Words(text);
    for (VARTYPE type : kTypes) Change(value, 0, type);
    VariantClear(&value);
  }
  Section("date-text");
  for (const OLECHAR* text : kDateTexts) {
    VARIANT value = Words(text);
    for (VARTYPE type : {VT_DATE, VT_R8, VT_BOOL}) Change(value, 0, type);
    VariantClear(&value);
  }
}

void Dates() {
  Section("date");
  const double days[] = {0,       1,       2,      -1,    -2,    59,    60,    61,    365,
                         366,     36525,   36526,  36584, 36585, 36586, 40000, 73050, 109205,
                         2958465, -657434, -36522, -100,  -1.25, -1.75, -0.5};
  const double times[] = {0,
                          0.25,
                          0.5,
                          0.75,
                          1.0 / 86400,
                          1.4 / 86400,
                          1.5 / 86400,
                          0.4 / 86400,
                          0.5 / 86400,
                          0.6 / 86400,
                          59.0 / 86400,
                          59.6 / 86400,
                          3599.0 / 86400,
                          3599.6 / 86400,
                          86399.0 / 86400,
                          86399.4 / 86400,
                          86399.6 / 86400,
                          86399.9999 / 86400,
                          45000.0 / 86400,
                          43199.0 / 86400,
                          43200.0 / 86400,
                          46799.0 / 86400};
  for (double day : days) {
    for (double time : times) {
      Change(Real(VT_DATE, day < 0 ? day - time : day + time), 0, VT_BSTR);
    }
  }
  for (USHORT flags : {1, 2, 4, 8, 16, 32, 64}) {
    Change(Real(VT_DATE, 36526.75), flags, VT_BSTR);
    Change(Real(VT_R8, 1234.5), flags, VT_BSTR);
    Change(Integer(VT_CY, 12345678), flags, VT_BSTR);
    Change(Integer(VT_I4, -1234567), flags, VT_BSTR);
    for (SHORT truth : {-1, 0, 1}) Change(Integer(VT_BOOL, truth), flags, VT_BSTR);
    VARIANT text = Words(OLESTR("1/2/2000 10:30"));
    Change(text, flags, VT_DATE);
    VariantClear(&text);
  }
}

// ---- objects

// An object whose default value is a VARIANT; it lives as long as the test.
class Object : public IDispatch {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    if (!IsEqualIID(iid, IID_IUnknown) && (!IsEqualIID(iid, IID_IDispatch) || refuses_dispatch)) {
      return E_NOINTERFACE;
    }
    *out = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references); }
  ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--references); }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return DISP_E_UNKNOWNNAME;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params,
                                   VARIANT* result, EXCEPINFO*, UINT*) override {
    last_call = Decimal(id) + "/" + Decimal(flags) + "/" + Decimal(params->cArgs);
    if (FAILED(status)) return status;
    return VariantCopy(result, &value);
  }

  VARIANT value;
  HRESULT status = S_OK;
  bool refuses_dispatch = false;
  int references = 1;
  std::string last_call;
};

void Objects() {
  Section("object");
  Object object;
  const auto run = [&object](const char* what, VARTYPE tag, USHORT flags, VARTYPE type) {
    VARIANT from = Of(tag);
    if (tag == VT_DISPATCH) {
      from.pdispVal = &object;
    } else {
      from.punkVal = &object;
    }
    object.last_call = "none";
    VARIANT to = Integer(VT_I4, 4711);
    const HRESULT status = VariantChangeTypeEx(&to, &from, kEnglish, flags, type);
    std::string result = Status(status) + " " + Show(to) + " call " + object.last_call;
    VariantClear(&to);
    result += " references " + Decimal(object.references);
    Print(std::string(what) + " " + Decimal(tag) + " f" + Decimal(flags) + " -> " + Decimal(type),
          result);
  };
  for (bool refuses : {false, true}) {
    object.refuses_dispatch = refuses;
    object.value = Integer(VT_I4, 1234);
    for (VARTYPE tag : {VT_DISPATCH, VT_UNKNOWN}) {
      for (VARTYPE type : kTypes) {
        for (USHORT flags : {0, 1}) run(refuses ? "refuses" : "number", tag, flags, type);
      }
    }
  }
  object.refuses_dispatch = false;
  const VARIANT values[] = {Of(VT_EMPTY),          Of(VT_NULL),          Of(VT_BSTR),
                            Integer(VT_ERROR, -5), Integer(VT_BOOL, -1), Words(OLESTR("12")),
                            Words(OLESTR("x")),    Real(VT_R8, 2.5),     Of(VT_DISPATCH)};
  for (const VARIANT& value : values) {
    object.value = value;
    for (VARTYPE type : {VT_I4, VT_BSTR, VT_R8, VT_BOOL}) run("value", VT_DISPATCH, 0, type);
  }
  for (HRESULT status : {E_FAIL, DISP_E_MEMBERNOTFOUND, DISP_E_TYPEMISMATCH, E_OUTOFMEMORY}) {
    object.status = status;
    for (VARTYPE type : {VT_I4, VT_BSTR}) run("fails", VT_DISPATCH, 0, type);
  }
}

// ---- copies and references

void Copies() {
  Section("copy");
  std::vector<VARIANT> values = {Of(VT_EMPTY),
                                 Of(VT_NULL),
                                 Integer(VT_I1, -3),
                                 Integer(VT_UI1, 200),
                                 Integer(VT_I2, -300),
                                 Integer(VT_UI2, 60000),
                                 Integer(VT_I4, -70000),
                                 Integer(VT_UI4, 4000000000ll),
                                 Integer(VT_I8, -5000000000ll),
                                 Integer(VT_UI8, 5000000000ll),
                                 Integer(VT_INT, -1),
                                 Integer(VT_UINT, 1),
                                 Real(VT_R4, 1.5),
                                 Real(VT_R8, -2.25),
                                 Integer(VT_BOOL, -1),
                                 Integer(VT_CY, 12345),
                                 Real(VT_DATE, 36526.5),
                                 Dec(3, true, 1, 2),
                                 Integer(VT_ERROR, -7),
                                 Words(OLESTR("text")),
                                 Words(OLESTR("")),
                                 Of(VT_BSTR),
                                 Of(VT_DISPATCH),
                                 Of(VT_UNKNOWN)};
  BSTR zeros = SysAllocStringLen(OLESTR("a\0b\0"), 4);
  values.push_back(Of(VT_BSTR));
  values.back().bstrVal = zeros;
  values.push_back(Of(VT_BSTR));
  values.back().bstrVal = SysAllocStringByteLen("odd", 3);
  values.push_back(Of(VT_ARRAY | VT_UI1));
  values.back().parray = SafeArrayCreateVector(VT_UI1, -5, 7);
  values.push_back(Of(VT_ARRAY | VT_BSTR));
  for (VARIANT& value : values) {
    const std::string what = Show(value);
    VARIANT to = Integer(VT_I4, 4711);
    HRESULT status = VariantCopy(&to, &value);
    Print("copy " + what, Status(status) + " " + Show(to));
    status = VariantCopyInd(&to, &value);
    Print("copyind " + what, Status(status) + " " + Show(to));
    status = VariantCopy(&to, &to);
    Print("itself " + what, Status(status) + " " + Show(to));
    status = VariantCopyInd(&to, &to);
    Print("itselfind " + what, Status(status) + " " + Show(to));
    VARIANT in_variant = ReferenceToVariant(&value);
    status = VariantCopyInd(&to, &in_variant);
    Print("variant " + what, Status(status) + " " + Show(to));
    if (value.vt > VT_NULL) {
      VARIANT direct = Reference(&value);
      status = VariantCopy(&to, &direct);
      Print("reference " + what, Status(status) + " " + Show(to));
      status = VariantCopyInd(&to, &direct);
      Print("referenceind " + what, Status(status) + " " + Show(to));
      VARIANT twice = ReferenceToVariant(&direct);
      status = VariantCopyInd(&to, &twice);
      Print("twice " + what, Status(status) + " " + Show(to));
      VARIANT thrice = ReferenceToVariant(&twice);
      status = VariantCopyInd(&to, &thrice);
      Print("thrice " + what, Status(status) + " " + Show(to));
      for (VARTYPE type : {VT_I4, VT_BSTR, VT_R8, VT_VARIANT}) {
        VARIANT changed = Integer(VT_I4, 4711);
        status = VariantChangeTypeEx(&changed, &direct, kEnglish, 0, type);
        Print("change reference " + what + " -> " + Decimal(type),
              Status(status) + " " + Show(changed));
        VariantClear(&changed);
        status = VariantChangeTypeEx(&changed, &twice, kEnglish, 0, type);
        Print("change twice " + what + " -> " + Decimal(type),
              Status(status) + " " + Show(changed));
        VariantClear(&changed);
        status = VariantChangeTypeEx(&changed, &thrice, kEnglish, 0, type);
        Print("change thrice " + what + " -> " + Decimal(type),
              Status(status) + " " + Show(changed));
        VariantClear(&changed);
      }
      VARIANT same = direct;
      status = VariantCopyInd(&same, &same);
      Print("in place " + what, Status(status) + " " + Show(same));
      VariantClear(&same);
      same = direct;
      status = VariantChangeTypeEx(&same, &same, kEnglish, 0, VT_BSTR);
      Print("change in place " + what, Status(status) + " " + Show(same));
      VariantClear(&same);
      VARIANT to_reference = Integer(VT_I4, 4711);
      status = VariantChangeTypeEx(&to_reference, &direct, kEnglish, 0, direct.vt);
      Print("to the same reference " + what, Status(status) + " " + Show(to_reference));
    }
    for (VARTYPE type : {VT_BSTR, VT_I4, VT_EMPTY, VT_NULL}) {
      VARIANT copy = Of(VT_EMPTY);
      VariantCopy(&copy, &value);
      status = VariantChangeTypeEx(&copy, &copy, kEnglish, 0, type);
      Print("in place " + what + " -> " + Decimal(type), Status(status) + " " + Show(copy));
      VariantClear(&copy);
    }
  }
  const VARTYPE referred[] = {VT_I4, VT_BSTR, VT_VARIANT, VT_ARRAY | VT_I4, VT_DISPATCH};
  for (VARTYPE type : referred) {
    VARIANT null_reference = Of(static_cast<VARTYPE>(type | VT_BYREF));
    VARIANT to = Integer(VT_I4, 4711);
    HRESULT status = VariantCopy(&to, &null_reference);
    Print("null reference copy " + Decimal(type), Status(status) + " " + Show(to));
  }
  const VARTYPE kElementTypes[] = {VT_UI1, VT_I1, VT_I2, VT_UI2, VT_BSTR, VT_VARIANT};
  for (VARTYPE type : kElementTypes) {
    SAFEARRAYBOUND bounds[2] = {{3, -1}, {2, 5}};
    for (UINT dimensions : {1u, 2u}) {
      VARIANT array = Of(static_cast<VARTYPE>(VT_ARRAY | type));
      array.parray = SafeArrayCreate(type, dimensions, bounds);
      if (type == VT_UI1) memset(array.parray->pvData, 65, 3 * dimensions);
      for (int locked = 0; locked < 2; ++locked) {
        Change(array, 0, VT_BSTR);
        Change(array, 0, VT_ARRAY | VT_UI1);
        Change(array, 0, VT_ARRAY | VT_VARIANT);
        SafeArrayLock(array.parray);
      }
    }
    for (BSTR text : {SysAllocString(OLESTR("text")), SysAllocString(nullptr),
                      SysAllocString(OLESTR("")), SysAllocStringByteLen("odd", 3)}) {
      VARIANT from = Of(VT_BSTR);
      from.bstrVal = text;
      Change(from, 0, static_cast<VARTYPE>(VT_ARRAY | type));
    }
  }
  VARIANT no_array = Of(VT_ARRAY | VT_UI1);
  Change(no_array, 0, VT_BSTR);
  VARIANT array = Of(VT_ARRAY | VT_UI1);
  array.parray = SafeArrayCreateVector(VT_UI1, 0, 3);
  SafeArrayLock(array.parray);
  VARIANT one = Integer(VT_I4, 1);
  HRESULT status = VariantClear(&array);
  Print("clear locked", Status(status) + " " + Show(array));
  status = VariantCopy(&array, &one);
  Print("copy over locked", Status(status) + " " + Show(array));
  status = VariantCopyInd(&array, &one);
  Print("copyind over locked", Status(status) + " " + Show(array));
  status = VariantChangeType(&array, &one, 0, VT_BSTR);
  Print("change over locked", Status(status) + " " + Show(array));
  VARIANT invalid = Of(15);
  status = VariantCopy(&invalid, &one);
  Print("copy over an invalid tag", Status(status) + " " + Show(invalid));
  invalid = Of(15);
  status = VariantChangeType(&invalid, &one, 0, VT_BSTR);
  Print("change over an invalid tag", Status(status) + " " + Show(invalid));
}

// ---- texts

void Bstrs() {
  Section("bstr");
  const auto show = [](const char* what, BSTR text) {
    std::string result =
        Quoted(text) + " " + Decimal(SysStringLen(text)) + " " + Decimal(SysStringByteLen(text));
    if (text != nullptr) result += " end " + Decimal(text[SysStringLen(text)]);
    Print(what, result);
    SysFreeString(text);
  };
  show("null", SysAllocString(nullptr));
  show("empty", SysAllocString(OLESTR("")));
  show("text", SysAllocString(OLESTR("text")));
  show("zeros", SysAllocStringLen(OLESTR("a\0b\0c"), 5));
  show("cut", SysAllocStringLen(OLESTR("abcdef"), 3));
  show("no length", SysAllocStringLen(OLESTR("abc"), 0));
  show("null no length", SysAllocStringLen(nullptr, 0));
  show("bytes", SysAllocStringByteLen("a\0bc", 4));
  show("odd bytes", SysAllocStringByteLen("abc", 3));
  show("no bytes", SysAllocStringByteLen("", 0));
  show("null no bytes", SysAllocStringByteLen(nullptr, 0));
  show("too long", SysAllocStringLen(OLESTR("a"), 0x7FFFFFFEu));
  show("longest", SysAllocStringLen(OLESTR("a"), 0xFFFFFFFFu));
  show("too many bytes", SysAllocStringByteLen("a", 0xFFFFFFFFu));
  const auto change = [](const char* what, const OLECHAR* from, UINT length, bool counted) {
    for (const OLECHAR* old :
         {static_cast<const OLECHAR*>(nullptr), OLESTR(""), OLESTR("former text")}) {
      BSTR text = SysAllocString(old);
      const INT done =
          counted ? SysReAllocStringLen(&text, from, length) : SysReAllocString(&text, from);
      std::string result = Decimal(done != 0) + " " + Decimal(SysStringLen(text));
      // Without a source what lies past the former text is not defined.
      const UINT known = from == nullptr && counted
                             ? (old == nullptr ? 0 : static_cast<UINT>(Text(old).size()))
                             : 0xFFFF;
      if (text != nullptr) {
        result += " " + Quoted(text, SysStringLen(text) < known ? SysStringLen(text) : known) +
                  " end " + Decimal(text[SysStringLen(text)]);
      }
      Print(what, result);
      SysFreeString(text);
    }
  };
  change("again text", OLESTR("ab"), 0, false);
  change("again longer", OLESTR("a much longer text than before"), 0, false);
  change("again null", nullptr, 0, false);
  change("again counted", OLESTR("a\0b"), 3, true);
  change("again nothing", OLESTR("abc"), 0, true);
  change("again null shorter", nullptr, 4, true);
  change("again null longer", nullptr, 40, true);
  change("again null nothing", nullptr, 0, true);
  BSTR self = SysAllocString(OLESTR("former text"));
  INT done = SysReAllocStringLen(&self, self, 6);
  Print("itself", Decimal(done != 0) + " " + Quoted(self));
  done = SysReAllocString(&self, self);
  Print("itself", Decimal(done != 0) + " " + Quoted(self));
  SysFreeString(self);
}

// ---- arrays

void Describe(const std::string& what, SAFEARRAY* array) {
  Print(what, ShowArray(array));
}

void Elements(const std::string& what, SAFEARRAY* array,
              const std::vector<std::vector<LONG>>& places) {
  for (std::vector<LONG> place : places) {
    std::string name = what;
    for (LONG index : place) name += " " + Decimal(index);
    void* address = nullptr;
    const HRESULT status = SafeArrayPtrOfIndex(array, place.data(), &address);
    Print(name, Status(status) + " " +
                    (FAILED(status) ? std::string("-")
                                    : Decimal(static_cast<BYTE*>(address) -
                                              static_cast<BYTE*>(array->pvData))));
  }
}

void Arrays() {
  Section("array");
  for (unsigned type = 0; type < 80; ++type) {
    SAFEARRAY* array = SafeArrayCreateVector(static_cast<VARTYPE>(type), 1, 2);
    Describe("vector of " + Decimal(type), array);
    SafeArrayDestroy(array);
    SAFEARRAYBOUND bound = {2, -7};
    array = SafeArrayCreate(static_cast<VARTYPE>(type), 1, &bound);
    Describe("array of " + Decimal(type), array);
    SAFEARRAY* copy = nullptr;
    const HRESULT status = SafeArrayCopy(array, &copy);
    Describe("copy of " + Decimal(type) + " " + Status(status), copy);
    SafeArrayDestroy(copy);
    SafeArrayDestroy(array);
  }
  SAFEARRAYBOUND bounds[3] = {{2, 10}, {3, -1}, {4, 0}};
  SAFEARRAY* array = SafeArrayCreate(VT_I4, 3, bounds);
  Describe("three dimensions", array);
  Print("stored bounds", Decimal(array->rgsabound[0].cElements) + " " +
                             Decimal(array->rgsabound[0].lLbound) + " " + Decimal(array->cDims) +
                             " " + Decimal(SafeArrayGetDim(array)));
  Elements("element", array,
           {{10, -1, 0},
            {11, -1, 0},
            {10, 0, 0},
            {10, 1, 0},
            {10, -1, 1},
            {11, 1, 3},
            {9, -1, 0},
            {12, -1, 0},
            {10, -2, 0},
            {10, 2, 0},
            {10, -1, -1},
            {10, -1, 4},
            {INT_MAX, -1, 0},
            {INT_MIN, -1, 0}});
  for (UINT dimension = 0; dimension < 5; ++dimension) {
    LONG lower = 99;
    LONG upper = 99;
    const HRESULT first = SafeArrayGetLBound(array, dimension, &lower);
    const HRESULT second = SafeArrayGetUBound(array, dimension, &upper);
    Print("bounds " + Decimal(dimension),
          Status(first) + " " + Decimal(lower) + " " + Status(second) + " " + Decimal(upper));
  }
  LONG place[3] = {11, 1, 3};
  LONG value = 1234567;
  Print("put", Status(SafeArrayPutElement(array, place, &value)));
  value = 0;
  HRESULT status = SafeArrayGetElement(array, place, &value);
  Print("get", Status(status) + " " + Decimal(value));
  place[0] = 12;
  Print("put outside",
        Status(SafeArrayPutElement(array, place, &value)) + " locks " + Decimal(array->cLocks));
  Print("get outside",
        Status(SafeArrayGetElement(array, place, &value)) + " locks " + Decimal(array->cLocks));
  void* data = nullptr;
  Print("lock", Status(SafeArrayLock(array)) + " " + Decimal(array->cLocks));
  Print("access", Status(SafeArrayAccessData(array, &data)) + " " + Decimal(array->cLocks) + " " +
                      Decimal(data == array->pvData));
  Print("destroy locked", Status(SafeArrayDestroy(array)));
  SAFEARRAY* copy = nullptr;
  status = SafeArrayCopy(array, &copy);
  Describe("copy locked " + Status(status), copy);
  Elements("copied element", copy, {{11, 1, 3}});
  SafeArrayDestroy(copy);
  Print("unaccess", Status(SafeArrayUnaccessData(array)) + " " + Decimal(array->cLocks));
  Print("unlock", Status(SafeArrayUnlock(array)) + " " + Decimal(array->cLocks));
  Print("unlock too often", Status(SafeArrayUnlock(array)) + " " + Decimal(array->cLocks));
  Print("destroy", Status(SafeArrayDestroy(array)));

  for (ULONG count : {0u, 1u, 5u}) {
    for (LONG lower : {0, 1, -1, INT_MIN, INT_MAX}) {
      SAFEARRAYBOUND bound = {count, lower};
      array = SafeArrayCreate(VT_UI1, 1, &bound);
      Describe("count " + Decimal(count) + " from " + Decimal(lower), array);
      if (array != nullptr) {
        Elements("  element", array, {{lower}});
        SafeArrayDestroy(array);
      }
    }
  }
  SAFEARRAYBOUND huge[2] = {{0x10000, 0}, {0x10000, 0}};
  Describe("too large", SafeArrayCreate(VT_I4, 2, huge));
  Describe("too large bytes", SafeArrayCreate(VT_UI1, 2, huge));
  Describe("no dimensions", SafeArrayCreate(VT_I4, 0, bounds));
  SAFEARRAYBOUND with_empty[2] = {{0, 3}, {2, 1}};
  array = SafeArrayCreate(VT_I4, 2, with_empty);
  Describe("an empty dimension", array);
  SafeArrayDestroy(array);

  array = SafeArrayCreateVector(VT_BSTR, 0, 3);
  BSTR text = SysAllocStringLen(OLESTR("x\0y"), 3);
  LONG index = 1;
  Print("put text", Status(SafeArrayPutElement(array, &index, text)));
  Print("put text again", Status(SafeArrayPutElement(array, &index, text)));
  SysFreeString(text);
  text = nullptr;
  status = SafeArrayGetElement(array, &index, &text);
  Print("get text", Status(status) + " " + Quoted(text));
  SysFreeString(text);
  index = 2;
  text = SysAllocString(OLESTR("former"));
  BSTR former = text;
  status = SafeArrayGetElement(array, &index, &text);
  Print("get null text", Status(status) + " " + Quoted(text));
  SysFreeString(former);
  Print("put null text", Status(SafeArrayPutElement(array, &index, nullptr)));
  status = SafeArrayCopy(array, &copy);
  index = 1;
  status = SafeArrayGetElement(copy, &index, &text);
  Print("text of the copy", Status(status) + " " + Quoted(text));
  SysFreeString(text);
  SafeArrayDestroy(copy);
  SafeArrayDestroy(array);

  array = SafeArrayCreateVector(VT_VARIANT, 0, 2);
  VARIANT element = Words(OLESTR("in a value"));
  index = 0;
  Print("put value", Status(SafeArrayPutElement(array, &index, &element)));
  VariantClear(&element);
  element = Of(15);
  Print("put invalid value", Status(SafeArrayPutElement(array, &index, &element)));
  element = Of(VT_EMPTY);
  status = SafeArrayGetElement(array, &index, &element);
  Print("get value", Status(status) + " " + Show(element));
  VariantClear(&element);
  element = Integer(VT_I4, 1);
  VARIANT reference = Reference(&element);
  Print("put reference", Status(SafeArrayPutElement(array, &index, &reference)));
  VARIANT read = Of(VT_EMPTY);
  status = SafeArrayGetElement(array, &index, &read);
  Print("get reference", Status(status) + " " + Show(read));
  VARIANT inner = Of(VT_ARRAY | VT_UI1);
  inner.parray = SafeArrayCreateVector(VT_UI1, 0, 2);
  Print("put array", Status(SafeArrayPutElement(array, &index, &inner)));
  SafeArrayDestroy(inner.parray);
  Print("destroy values", Status(SafeArrayDestroy(array)));

  Object object;
  for (VARTYPE type : {VT_UNKNOWN, VT_DISPATCH}) {
    array = SafeArrayCreateVector(type, 0, 2);
    index = 0;
    Print("put object",
          Status(SafeArrayPutElement(array, &index, static_cast<IDispatch*>(&object))) + " " +
              Decimal(object.references));
    Print("put object again",
          Status(SafeArrayPutElement(array, &index, static_cast<IDispatch*>(&object))) + " " +
              Decimal(object.references));
    IUnknown* found = nullptr;
    status = SafeArrayGetElement(array, &index, &found);
    Print("get object",
          Status(status) + " " + Decimal(found == &object) + " " + Decimal(object.references));
    if (found != nullptr) found->Release();
    status = SafeArrayCopy(array, &copy);
    Print("copy objects", Status(status) + " " + Decimal(object.references));
    SafeArrayDestroy(copy);
    Print("put no object",
          Status(SafeArrayPutElement(array, &index, nullptr)) + " " + Decimal(object.references));
    SafeArrayDestroy(array);
    Print("after objects", Decimal(object.references));
  }

  Print("null dim",
        Decimal(SafeArrayGetDim(nullptr)) + " " + Decimal(SafeArrayGetElemsize(nullptr)));
  LONG bound = 5;
  VARTYPE vartype = 5;
  Print("null", Status(SafeArrayDestroy(nullptr)) + " " + Status(SafeArrayLock(nullptr)) + " " +
                    Status(SafeArrayUnlock(nullptr)) + " " +
                    Status(SafeArrayGetLBound(nullptr, 1, &bound)) + " " +
                    Status(SafeArrayGetUBound(nullptr, 1, &bound)) + " " +
                    Status(SafeArrayGetVartype(nullptr, &vartype)) + " " +
                    Status(SafeArrayAccessData(nullptr, &data)) + " " +
                    Status(SafeArrayUnaccessData(nullptr)) + " " +
                    Status(SafeArrayPtrOfIndex(nullptr, &bound, &data)) + " " +
                    Status(SafeArrayGetElement(nullptr, &bound, &data)) + " " +
                    Status(SafeArrayPutElement(nullptr, &bound, &data)));
  copy = array;
  status = SafeArrayCopy(nullptr, &copy);
  Print("copy null", Status(status) + " " + Decimal(copy == nullptr));
}

// ---- values between the chosen ones

void RandomValues() {
  Section("random");
  ULONGLONG state = 1;
  const auto next = [&state] {  // a 64-bit linear congruence; its high half is what is used
    state = state * 6364136223846793005u + 1442695040888963407u;
    return static_cast<ULONG>(state >> 32);
  };
  const auto wide = [&next] { return (static_cast<ULONGLONG>(next()) << 32) | next(); };
  for (int i = 0; i < 400; ++i) {
    const double mantissa = static_cast<double>(wide() >> 11) / 4503599627370496.0 - 1;
    const int exponent = static_cast<int>(next() % 120) - 60;
    const double real = std::ldexp(mantissa, exponent);
    for (VARTYPE type : {VT_R8, VT_R4}) {
      for (VARTYPE to : {VT_BSTR, VT_I4, VT_UI1, VT_I8, VT_CY, VT_BOOL})
        Change(Real(type, real), 0, to);
    }
    Change(Real(VT_R8, std::ldexp(mantissa, static_cast<int>(next() % 2000) - 1000)), 0, VT_BSTR);
    const double date = std::floor(static_cast<double>(next() % 3600000)) - 650000 +
                        static_cast<double>(next() % 86400) / 86400;
    for (VARTYPE to : {VT_BSTR, VT_R8, VT_I4}) Change(Real(VT_DATE, date), 0, to);
    const VARIANT decimal =
        Dec(static_cast<BYTE>(next() % 29), next() % 2 != 0, next() >> next() % 32, wide());
    for (VARTYPE to : {VT_BSTR, VT_I8, VT_UI4, VT_BOOL, VT_R4}) Change(decimal, 0, to);
    const VARIANT currency = Integer(VT_CY, static_cast<LONGLONG>(wide()) >> next() % 64);
    for (VARTYPE to : {VT_BSTR, VT_R8, VT_DECIMAL, VT_I4, VT_UI2}) Change(currency, 0, to);
    VARIANT text = Of(VT_EMPTY);
    VARIANT source = decimal;
    VariantChangeTypeEx(&text, &source, kEnglish, 0, VT_BSTR);
    for (VARTYPE to : {VT_DECIMAL, VT_I4, VT_I8, VT_UI8, VT_R4}) Change(text, 0, to);
    VariantClear(&text);
  }
}

// ---- character sets

void CharacterSets() {
  Section("charset");
  const UINT pages[] = {0,    437, 850, 1250, 1251, 1252,  1253,  1254,  1255,  1256,  1257,
                        1258, 932, 936, 949,  950,  20127, 28591, 28605, 65000, 65001, 12345};
  const Text samples[] = {Text(),
                          OLESTR("a"),
                          OLESTR("plain text 123"),
                          OLESTR("\u00E9\u00E8\u00FC"),
                          OLESTR("\u20AC"),
                          OLESTR("\u0416\u0438"),
                          OLESTR("\u03B1\u03B2"),
                          OLESTR("\u05D0"),
                          OLESTR("\u0627"),
                          OLESTR("\u3042\u30A2\u4E9C"),
                          OLESTR("\u4E2D\u6587"),
                          OLESTR("\uAC00"),
                          Text{0xD83D, 0xDE00},
                          Text{0xD83D, 'x'},
                          Text{'x', 0xDE00},
                          OLESTR("\u0001\u007F\u0080\u009F"),
                          OLESTR("+&~"),
                          Text(OLESTR("a\0b"), 3),
                          OLESTR("\uFF71"),
                          OLESTR("\u2500"),
                          OLESTR("\u00A5\u203E")};
  for (UINT page : pages) {
    for (const Text& sample : samples) {
      const INT length = static_cast<INT>(sample.size());
      const std::string what = Decimal(page) + " " + Quoted(sample.data(), sample.size());
      char bytes[64];
      memset(bytes, 0x55, sizeof bytes);
      const INT needed =
          WideCharToMultiByte(page, 0, sample.data(), length, nullptr, 0, nullptr, nullptr);
      const INT written =
          WideCharToMultiByte(page, 0, sample.data(), length, bytes, 64, nullptr, nullptr);
      std::string result = Decimal(needed) + " " + Decimal(written) + " ";
      for (INT i = 0; i < written; ++i) result += Hex(static_cast<BYTE>(bytes[i]), 2);
      Print("encode " + what, result);
      OLECHAR text[64];
      const INT back = MultiByteToWideChar(page, 0, bytes, written, text, 64);
      Print("decode " + what, Decimal(back) + " " + Quoted(text, static_cast<size_t>(back)));
      const INT terminated =
          WideCharToMultiByte(page, 0, sample.c_str(), -1, bytes, 64, nullptr, nullptr);
      const INT short_room =
          WideCharToMultiByte(page, 0, sample.data(), length, bytes, 1, nullptr, nullptr);
      Print("ends " + what, Decimal(terminated) + " " + Decimal(short_room));
    }
    // Every byte alone, and every lead byte with a trail byte.
    for (unsigned byte = 0; byte < 256; ++byte) {
      for (unsigned trail : {0u, 0x41u, 0xA1u}) {
        const char bytes[2] = {static_cast<char>(byte), static_cast<char>(trail)};
        OLECHAR text[8];
        const INT count = MultiByteToWideChar(page, 0, bytes, trail == 0 ? 1 : 2, text, 8);
        Print("bytes " + Decimal(page) + " " + Hex(byte, 2) + Hex(trail, 2),
              Decimal(count) + " " + Quoted(text, static_cast<size_t>(count)));
      }
    }
  }
}

}  // namespace

int main() {
  Tags();
  Coercions();
  Texts();
  Dates();
  Objects();
  Copies();
  Bstrs();
  Arrays();
  RandomValues();
  CharacterSets();
  return 0;
}
