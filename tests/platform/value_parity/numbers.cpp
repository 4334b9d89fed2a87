// The numbers of the sections, in rows by what they try.
#include <climits>
#include <cmath>
#include <limits>

#include "values.h"

namespace mirolta::value_parity {
namespace {

struct Range {
  VARTYPE type;
  LONGLONG least;
  LONGLONG greatest;
};
constexpr Range kRanges[] = {{VT_I1, -128, 127},
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

// clang-format off
constexpr LONGLONG kIntegers[] = {
    0, 1, 2, -1, -2, 12, 100,
    // The limits of 8, 16 and 32 bits.
    127, 128, -128, -129, 255, 256, 1234,
    32767, 32768, -32768, -32769, 65535, 65536,
    2147483647ll, 2147483648ll, -2147483648ll, -2147483649ll, 4294967295ll, 4294967296ll,
    // What a double does not hold; the limits of currency.
    9007199254740993ll,
    922337203685477ll, 922337203685478ll, -922337203685477ll, -922337203685478ll,
    1234567890123456789ll};

// In ten-thousandths.
constexpr LONGLONG kCurrencies[] = {
    // Halves, and what lies beside them.
    5000ll, 15000ll, 25000ll, -5000ll, -15000ll, -25000ll, 5001ll, 4999ll, 12345ll,
    // Halves beside the limits of the integers.
    1275000ll, 1284999ll, -1285000ll, 2555000ll, 327675000ll, 327674999ll, 655355000ll,
    21474836475000ll, 42949672955000ll,
    10ll, 120000ll, 1234567ll};

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kReals[] = {
    0.0, -0.0, 1.0, -1.0,
    // Halves, and what lies beside them.
    0.5, 1.5, 2.5, 3.5, -0.5, -1.5, -2.5, 0.49999999, 0.50000001,
    // Digits of a text.
    0.1, 1.0 / 3, 2.0 / 3, 100.25, 12345.678,
    // Powers of ten: where texts get an exponent, and the limits of decimals and of float.
    1e6, 1e7, 12345678.9, 123456789.0, 1e14, 1e15, 123456789012345.0, 1234567890123456.0, 1e16,
    1e20, 1e28, 1e29, 7.9e28, 8e28, 1e38, 3.4e38, 3.5e38, 1e100, 1.7e308,
    1e-1, 0.001, 1e-4, 1e-5, 1.5e-5, 1e-7, 1e-10, 1e-28, 1e-29, 1e-38, 1e-45, 5e-324,
    // The limits of 8, 16, 32 and 64 bits.
    127.0, 127.4, 127.5, 127.6, 128.0, -128.0, -128.4, -128.5, -128.6, -129.0,
    255.0, 255.4, 255.5, 255.6, 256.0,
    32767.4, 32767.5, 32767.6, 32768.0, -32768.4, -32768.5, -32768.6, 65535.4, 65535.5, 65535.6,
    2147483647.4, 2147483647.5, 2147483647.6, -2147483648.4, -2147483648.5, -2147483648.6,
    4294967295.4, 4294967295.5, 4294967295.6,
    9223372036854774784.0, 9223372036854775808.0, -9223372036854775808.0, -9223372036854777856.0,
    18446744073709549568.0, 18446744073709551616.0,
    // The limits of currency, and halves of its last digit.
    922337203685477.5, 922337203685477.6, 922337203685478.0, -922337203685477.5,
    0.00005, 0.00015, 0.00025, 1.00005,
    // The first and the last date, and others.
    -657434.0, -657435.0, 2958465.0, 2958465.999, 2958466.0, 36526.0, 36526.75, -1.25, 0.75, 60.0,
    // More digits than a text has.
    1.2345678901234567, 9.99999999999999e14, 999999999999999.9, 0.1 + 0.2, 1e21 / 3, 65.4321,
    kInfinity, -kInfinity, std::numeric_limits<double>::quiet_NaN()};
// clang-format on

struct DecimalRow {
  BYTE scale;
  ULONG high;
  ULONGLONG low;
};
// clang-format off
constexpr DecimalRow kDecimals[] = {
    {0, 0, 0}, {0, 0, 1}, {5, 0, 0},
    // Halves.
    {1, 0, 5}, {1, 0, 15}, {1, 0, 25}, {1, 0, 35},
    // The limits of the integers.
    {0, 0, 127}, {1, 0, 1275}, {1, 0, 1285}, {0, 0, 128}, {0, 0, 255}, {1, 0, 2555}, {0, 0, 256},
    {0, 0, 32767}, {0, 0, 32768}, {0, 0, 65535}, {0, 0, 65536}, {0, 0, 2147483647},
    {0, 0, 2147483648u}, {0, 0, 4294967295u}, {0, 0, 4294967296ull}, {1, 0, 42949672955ull},
    // Digits behind the point.
    {4, 0, 12345678}, {4, 0, 12340000}, {28, 0, 1},
    // The limits of decimals and of 64 bits.
    {28, 0xFFFFFFFF, 0xFFFFFFFFFFFFFFFFull}, {0, 0xFFFFFFFF, 0xFFFFFFFFFFFFFFFFull},
    {0, 0, 0x7FFFFFFFFFFFFFFFull}, {0, 0, 0x8000000000000000ull}, {0, 0, 0xFFFFFFFFFFFFFFFFull},
    {0, 1, 0}, {1, 5, 0},
    // Where currency and texts round.
    {5, 0, 123456789}, {10, 0, 1}, {6, 0, 1000050}, {5, 0, 5}, {5, 0, 15},
    {4, 0, 0x7FFFFFFFFFFFFFFFull}, {4, 0, 0x8000000000000000ull}, {2, 0, 120},
    {20, 0x1234, 0x56789ABCDEF01234ull}};
// clang-format on

}  // namespace

std::vector<VARIANT> IntegerValues() {
  std::vector<VARIANT> values;
  for (const Range& range : kRanges) {
    for (const LONGLONG number : kIntegers) {
      const bool wide = range.type == VT_UI8;
      if (wide ? number < 0 : number < range.least || number > range.greatest) continue;
      values.push_back(Integer(range.type, number));
    }
    if (range.least < INT_MIN) values.push_back(Integer(range.type, range.least));
    if (range.greatest > 0xFFFFFFFFll || range.greatest < 0) {
      values.push_back(Integer(range.type, range.greatest));
    }
  }
  for (const LONGLONG amount : kCurrencies) values.push_back(Integer(VT_CY, amount));
  return values;
}

std::vector<VARIANT> RealValues() {
  std::vector<VARIANT> values;
  for (const double number : kReals) {
    for (const VARTYPE type : {VT_R4, VT_R8, VT_DATE}) {
      if (type == VT_R4 && std::fabs(number) > 3.45e38 && !std::isinf(number)) continue;
      values.push_back(Real(type, number));
    }
  }
  return values;
}

std::vector<VARIANT> DecimalValues() {
  std::vector<VARIANT> values;
  for (const DecimalRow& row : kDecimals) {
    for (const bool negative : {false, true}) {
      values.push_back(Dec(row.scale, negative, row.high, row.low));
    }
  }
  return values;
}

}  // namespace mirolta::value_parity
