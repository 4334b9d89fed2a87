// Conversions of values to text and of text to numbers and dates.
#include <climits>
#include <limits>
#include <string>

#include "portable/test_hooks.h"
#include "variant_change_support.h"

namespace mirolta {
namespace {

TEST(VariantText, ValuesAreWrittenAsText) {
  struct Row {
    const char* name;
    VARIANT from;
    USHORT flags;
    HRESULT status;
    const OLECHAR* expected;
  };
  // clang-format off
  const Row rows[] = {
      ROW(I1(-128), 0, S_OK, OLESTR("-128")),
      ROW(I8(LLONG_MIN), 0, S_OK, OLESTR("-9223372036854775808")),
      ROW(Ui8(0xFFFFFFFFFFFFFFFFull), 0, S_OK, OLESTR("18446744073709551615")),
      ROW(Of(VT_EMPTY), 0, S_OK, OLESTR("")), ROW(Of(VT_NULL), 0, kMismatch, nullptr),
      ROW(Of(VT_ERROR), 0, kMismatch, nullptr), ROW(Bool(VARIANT_TRUE), 0, S_OK, OLESTR("-1")),
      ROW(Bool(VARIANT_FALSE), 0, S_OK, OLESTR("0")),
      ROW(Bool(VARIANT_TRUE), VARIANT_ALPHABOOL, S_OK, OLESTR("True")),
      ROW(Bool(VARIANT_FALSE), VARIANT_ALPHABOOL, S_OK, OLESTR("False")),
      ROW(Bool(1), VARIANT_LOCALBOOL, S_OK, OLESTR("True")),
      ROW(R4(1.0f / 3), 0, S_OK, OLESTR("0.3333333")),
      ROW(R4(4464502.5f), 0, S_OK, OLESTR("4464503")),
      ROW(R4(-3676326.5f), 0, S_OK, OLESTR("-3676327")),
      ROW(R4(9999999.5f), 0, S_OK, OLESTR("1E+07")),
      ROW(R8(29602117213639.25), 0, S_OK, OLESTR("29602117213639.3")),
      ROW(R4(1e7f), 0, S_OK, OLESTR("1E+07")), ROW(R4(1000000.0f), 0, S_OK, OLESTR("1000000")),
      ROW(R8(1.0 / 3), 0, S_OK, OLESTR("0.333333333333333")),
      ROW(R8(0.1 + 0.2), 0, S_OK, OLESTR("0.3")), ROW(R8(-0.0), 0, S_OK, OLESTR("0")),
      ROW(R8(100000000000000.0), 0, S_OK, OLESTR("100000000000000")),
      ROW(R8(1e15), 0, S_OK, OLESTR("1E+15")), ROW(R8(0.0001), 0, S_OK, OLESTR("0.0001")),
      ROW(R8(1.5e-5), 0, S_OK, OLESTR("1.5E-05")), ROW(R8(1.7e308), 0, S_OK, OLESTR("1.7E+308")),
      ROW(R8(5e-324), 0, S_OK, OLESTR("4.94065645841247E-324")),
      ROW(R8(-std::numeric_limits<double>::infinity()), 0, S_OK, OLESTR("-INF")),
      ROW(R8(std::numeric_limits<double>::quiet_NaN()), 0, S_OK, OLESTR("NAN")),
      ROW(Cy(10), 0, S_OK, OLESTR("0.001")), ROW(Cy(-12340000), 0, S_OK, OLESTR("-1234")),
      ROW(Cy(LLONG_MIN), 0, S_OK, OLESTR("-922337203685477.5808")),
      ROW(Dec(true, 0, 120, 2), 0, S_OK, OLESTR("-1.2")),
      ROW(Dec(true, 0, 0, 2), 0, S_OK, OLESTR("0")),
      ROW(Dec(false, 0, 1, 28), 0, S_OK, OLESTR("0.0000000000000000000000000001")),
      ROW(Dec(true, 0xFFFFFFFF, 0xFFFFFFFFFFFFFFFFull, 0), 0, S_OK, OLESTR("-79228162514264337593543950335")),
      ROW(Date(0), 0, S_OK, OLESTR("12:00:00 AM")), ROW(Date(0.5), 0, S_OK, OLESTR("12:00:00 PM")),
      ROW(Date(1), 0, S_OK, OLESTR("12/31/1899")),
      ROW(Date(36526.75), 0, S_OK, OLESTR("1/1/2000 6:00:00 PM")),
      ROW(Date(36585), 0, S_OK, OLESTR("2/29/2000")),
      ROW(Date(-1.25), 0, S_OK, OLESTR("12/29/1899 6:00:00 AM")),
      ROW(Date(-0.5), 0, S_OK, OLESTR("12:00:00 PM")),
      ROW(Date(36525.9999999), 0, S_OK, OLESTR("1/1/2000 12:00:00 AM")),
      ROW(Date(-657434), 0, S_OK, OLESTR("1/1/100")),
      ROW(Date(2958465), 0, S_OK, OLESTR("12/31/9999")),
      ROW(Date(-657435), 0, E_INVALIDARG, nullptr), ROW(Date(2958466), 0, E_INVALIDARG, nullptr),
  };
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    TestValue to;
    EXPECT_EQ(Change(row.from, VT_BSTR, &to, row.flags), row.status);
    if (SUCCEEDED(row.status)) {
      EXPECT_EQ(TextOf(to), row.expected);
    }
  }
}

TEST(VariantText, NumberTextBecomesTheNearestReal) {
  struct Row {
    const char* name;
    const OLECHAR* text;
    HRESULT status;
    double expected;
  };
  // clang-format off
  const Row rows[] = {
      TEXT_ROW("", kMismatch, 0), TEXT_ROW(" ", kMismatch, 0), TEXT_ROW(" 12 ", S_OK, 12),
      TEXT_ROW("\t12\r\n", S_OK, 12), TEXT_ROW("1 2", kMismatch, 0),
      TEXT_ROW("12abc", kMismatch, 0), TEXT_ROW("1e3", S_OK, 1000),
      TEXT_ROW("1.5E-3", S_OK, 0.0015), TEXT_ROW("1e", kMismatch, 0), TEXT_ROW("e3", kMismatch, 0),
      TEXT_ROW("1,234.5", S_OK, 1234.5), TEXT_ROW("1,2,3", S_OK, 123), TEXT_ROW(",1", kMismatch, 0),
      TEXT_ROW("$5", S_OK, 5), TEXT_ROW("-$ 5", S_OK, -5), TEXT_ROW("5$-", S_OK, -5),
      TEXT_ROW("$$5", kMismatch, 0), TEXT_ROW("(5)", S_OK, -5), TEXT_ROW("(-5)", S_OK, -5),
      TEXT_ROW("(5", kMismatch, 0), TEXT_ROW("5)", kMismatch, 0), TEXT_ROW("5-", S_OK, -5),
      TEXT_ROW("-5-", kMismatch, 0), TEXT_ROW("--5", kMismatch, 0), TEXT_ROW("+-5", S_OK, -5),
      TEXT_ROW(".5", S_OK, 0.5), TEXT_ROW("5.", S_OK, 5), TEXT_ROW(".", kMismatch, 0),
      TEXT_ROW("1.2.3", kMismatch, 0), TEXT_ROW("&HFF", S_OK, 255), TEXT_ROW("&hfa", S_OK, 250),
      TEXT_ROW("&o17", S_OK, 15), TEXT_ROW("&H", kMismatch, 0), TEXT_ROW("&H1G", kMismatch, 0),
      TEXT_ROW("&H123456789", kOverflow, 0), TEXT_ROW("&H10000000000000000", kOverflow, 0),
      TEXT_ROW("0x10", kMismatch, 0),
      TEXT_ROW("1e308", S_OK, 1e308), TEXT_ROW("1e309", kOverflow, 0), TEXT_ROW("1e-400", S_OK, 0),
      TEXT_ROW("0e99999", S_OK, 0), TEXT_ROW("true", kMismatch, 0), TEXT_ROW("\u00A01", S_OK, 1),
      TEXT_ROW("\uFF11", kMismatch, 0),
      TEXT_ROW("3.141592653589793238", S_OK, 3.141592653589793238),
      TEXT_ROW("2.50000000000000000000000000000000000000000000000000000000000000000000001", S_OK, 2.5),
      TEXT_ROW("20000000000000000000000000000000000000000000000000000000000000000000001", S_OK, 2e70),
  };
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    TestValue to;
    EXPECT_EQ(ChangeText(row.text, VT_R8, &to), row.status);
    if (SUCCEEDED(row.status)) {
      EXPECT_EQ(to->dblVal, row.expected);
    }
  }
}

TEST(VariantText, TextBecomesIntegersInRange) {
  struct Row {
    const char* name;
    const OLECHAR* text;
    VARTYPE type;
    HRESULT status;
    LONGLONG expected;
  };
  // clang-format off
  const Row rows[] = {
      TEXT_ROW("2.5", VT_I4, S_OK, 2), TEXT_ROW("-1.5", VT_I4, S_OK, -2),
      TEXT_ROW("2.50000000000000000000000000000000000000000000000000000000000000000000001", VT_I4, S_OK, 3),
      TEXT_ROW("-0.5", VT_UI4, S_OK, 0), TEXT_ROW("-1", VT_UI4, kOverflow, 0),
      TEXT_ROW("127.5", VT_I1, kOverflow, 0), TEXT_ROW("254.5", VT_UI1, S_OK, 254),
      TEXT_ROW("2147483648", VT_I4, kOverflow, 0), TEXT_ROW("-2147483648", VT_I4, S_OK, INT_MIN),
      TEXT_ROW("9223372036854775807", VT_I8, S_OK, LLONG_MAX),
      TEXT_ROW("9223372036854775808", VT_I8, kOverflow, 0),
      TEXT_ROW("-9223372036854775808", VT_I8, S_OK, LLONG_MIN),
      TEXT_ROW("18446744073709551616", VT_UI8, kOverflow, 0),
      TEXT_ROW("1e99999", VT_I4, kOverflow, 0), TEXT_ROW("&HFFFF", VT_I2, S_OK, -1),
      TEXT_ROW("&HFFFF", VT_I4, S_OK, 65535), TEXT_ROW("&HFFFFFFFF", VT_I4, S_OK, -1),
      TEXT_ROW("&HFFFF", VT_UI1, kOverflow, 0), TEXT_ROW("&HFF", VT_CY, kOverflow, 0),
      TEXT_ROW("1.2345", VT_CY, S_OK, 12345),
      TEXT_ROW("-922337203685477.5808", VT_CY, S_OK, LLONG_MIN),
      TEXT_ROW("922337203685477.5808", VT_CY, kOverflow, 0), TEXT_ROW("true", VT_BOOL, S_OK, -1),
      TEXT_ROW("FALSE", VT_BOOL, S_OK, 0), TEXT_ROW("#TRUE#", VT_BOOL, S_OK, -1),
      TEXT_ROW("#true#", VT_BOOL, kMismatch, 0), TEXT_ROW(" true", VT_BOOL, kMismatch, 0),
      TEXT_ROW("0.0", VT_BOOL, S_OK, 0), TEXT_ROW("0.5", VT_BOOL, S_OK, -1),
      TEXT_ROW("1e309", VT_BOOL, kOverflow, 0), TEXT_ROW("garbage", VT_I4, kMismatch, 0),
      TEXT_ROW("1", VT_ERROR, kMismatch, 0),
  };
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    TestValue to;
    EXPECT_EQ(ChangeText(row.text, row.type, &to), row.status);
    if (SUCCEEDED(row.status)) {
      EXPECT_EQ(IntegerOf(&to), row.expected);
    }
  }
}

TEST(VariantText, TextBecomesADecimal) {
  struct Row {
    const char* name;
    const OLECHAR* text;
    HRESULT status;
    const OLECHAR* expected;
  };
  // clang-format off
  const Row rows[] = {
      TEXT_ROW("-00.100", S_OK, OLESTR("-0.1")),
      TEXT_ROW("79228162514264337593543950335", S_OK, OLESTR("79228162514264337593543950335")),
      TEXT_ROW("79228162514264337593543950336", kOverflow, nullptr),
      TEXT_ROW("79228162514264337593543950334.5", S_OK, OLESTR("79228162514264337593543950334")),
      TEXT_ROW("1.23456789012345678901234567890123456789", S_OK, OLESTR("1.2345678901234567890123456789")),
      TEXT_ROW("9.99999999999999999999999999999999", S_OK, OLESTR("10")),
      TEXT_ROW("1e-29", S_OK, OLESTR("0")),
      TEXT_ROW("6e-29", S_OK, OLESTR("0.0000000000000000000000000001")),
      TEXT_ROW("1e28", S_OK, OLESTR("10000000000000000000000000000")),
      TEXT_ROW("1e29", kOverflow, nullptr),
  };
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    TestValue decimal;
    EXPECT_EQ(ChangeText(row.text, VT_DECIMAL, &decimal), row.status);
    if (FAILED(row.status)) continue;
    TestValue text;
    EXPECT_EQ(VariantChangeType(&text, &decimal, 0, VT_BSTR), S_OK);
    EXPECT_EQ(TextOf(text), row.expected);
  }
}

// A clock that always gives one day, for dates without a year.
void StandingTime(SYSTEMTIME* time) {
  *time = SYSTEMTIME{2026, 3, 0, 4, 5, 6, 7, 8};
}

// White space before a number is that of Unicode, non-breaking spaces included.
TEST(VariantText, SpaceBeforeNumbersIsSkipped) {
  const std::basic_string<OLECHAR> spaces =
      OLESTR(" \u0085\u00A0\u1680\u2028\u2029\u202F\u205F\u3000");
  const std::basic_string<OLECHAR> parts_of_numbers = OLESTR("0123456789+-.$");
  for (unsigned i = 1; i <= 0xFFFF; ++i) {
    const OLECHAR c = static_cast<OLECHAR>(i);
    if (parts_of_numbers.find(c) != parts_of_numbers.npos) continue;
    const bool space =
        (c >= 0x09 && c <= 0x0D) || (c >= 0x2000 && c <= 0x200A) || spaces.find(c) != spaces.npos;
    const OLECHAR text[] = {c, u'5', 0};
    TestValue to;
    ASSERT_EQ(ChangeText(text, VT_I4, &to), space ? S_OK : kMismatch) << i;
  }
}

TEST(VariantText, DateTextGivesItsDayOrNoDate) {
  const MiroltaClock clock = {nullptr, StandingTime};
  MiroltaSetClock(&clock);
  struct Row {
    const char* name;
    const OLECHAR* text;
    double expected;  // kNoDate if there is none
  };
  constexpr double kNoDate = 0.125;
  // clang-format off
  const Row rows[] = {
      TEXT_ROW("1/2/2000", 36527), TEXT_ROW("2000-01-02", 36527), TEXT_ROW("1-2-2000", 36527),
      TEXT_ROW("1 2 2000", 36527), TEXT_ROW("13/1/2000", 36538), TEXT_ROW("2000-13-01", 36538),
      TEXT_ROW("13/12/14", 41622), TEXT_ROW("14/13/12", 41986), TEXT_ROW("31/31/31", kNoDate),
      TEXT_ROW("2/29/2000", 36585), TEXT_ROW("2/29/1900", kNoDate), TEXT_ROW("1/2/49", 54425),
      TEXT_ROW("1/2/50", 18265), TEXT_ROW("1/2/10000", kNoDate), TEXT_ROW("1/1/100", -657434),
      TEXT_ROW("1/2", 46024), TEXT_ROW("13/5", 46155), TEXT_ROW("2/30", 47515),
      TEXT_ROW("99/1", 36161), TEXT_ROW("13/13", kNoDate), TEXT_ROW("January 2, 2000", 36527),
      TEXT_ROW("2-jan-00", 36527), TEXT_ROW("2000 2 Jan", 36527), TEXT_ROW("jan2,2000", 36527),
      TEXT_ROW("Jan 5", 46027), TEXT_ROW("Jan 40", 51136),
      TEXT_ROW("Sunday, January 2, 2000", 36527), TEXT_ROW("Sunday", kNoDate),
      TEXT_ROW("2 Jan 2000 3", kNoDate), TEXT_ROW("2000 2 3 Jan", kNoDate),
      TEXT_ROW("Janu 2 2000", kNoDate), TEXT_ROW("10:30", 0.4375), TEXT_ROW("10:30 PM", 0.9375),
      TEXT_ROW("10pm", 22.0 / 24), TEXT_ROW("12:00 AM", 0), TEXT_ROW("12:00 PM", 0.5),
      TEXT_ROW("13:00 PM", 13.0 / 24), TEXT_ROW("10.30", 0.4375), TEXT_ROW("24:00", kNoDate),
      TEXT_ROW("10:60", kNoDate), TEXT_ROW("PM 10:30", kNoDate), TEXT_ROW("10:30 11:30", kNoDate),
      TEXT_ROW("1:2:3:4", kNoDate), TEXT_ROW("1/2/2000 10:30", 36527.4375),
      TEXT_ROW("10:30 1/2/2000", 36527.4375), TEXT_ROW("1/2/2000-10:30", kNoDate),
      TEXT_ROW("12/29/1899 10:30", -1.4375), TEXT_ROW("1/2/2000x", kNoDate),
      TEXT_ROW("/1/2000", kNoDate), TEXT_ROW("1/2/", kNoDate), TEXT_ROW("1/2/3/4", kNoDate),
      TEXT_ROW("99999999999/1/1", kNoDate), TEXT_ROW("32", kNoDate), TEXT_ROW("", kNoDate),
  };
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    TestValue to;
    const HRESULT status = ChangeText(row.text, VT_DATE, &to);
    EXPECT_EQ(status, row.expected == kNoDate ? kMismatch : S_OK);
    if (SUCCEEDED(status)) {
      EXPECT_EQ(to->date, row.expected);
    }
  }
  MiroltaSetClock(nullptr);
}

// Days from the whole range of the calendar.
TEST(VariantText, DatesRoundTrip) {
  for (int day = -657434; day <= 2958465; day += 997) {
    TestValue text;
    ASSERT_EQ(Change(Date(day), VT_BSTR, &text), S_OK);
    TestValue date;
    ASSERT_EQ(VariantChangeType(&date, &text, 0, VT_DATE), S_OK) << day;
    ASSERT_EQ(date->date, day);
  }
}

}  // namespace
}  // namespace mirolta
