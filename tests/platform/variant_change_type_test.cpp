// Conversions of numbers, references, objects and arrays, and their statuses.
#include <climits>
#include <limits>
#include <string>

#include "portable/test_hooks.h"
#include "variant_change_support.h"

namespace mirolta {
namespace {

TEST(VariantChangeType, NumbersRoundToIntegersInRange) {
  struct Row {
    const char* name;
    VARIANT from;
    VARTYPE type;
    HRESULT status;
    LONGLONG expected;
  };
  // clang-format off
  const Row rows[] = {
      // Halves go to even.
      ROW(R8(0.5), VT_I4, S_OK, 0), ROW(R8(1.5), VT_I4, S_OK, 2), ROW(R8(2.5), VT_I4, S_OK, 2),
      ROW(R8(-0.5), VT_I4, S_OK, 0), ROW(R8(-1.5), VT_I4, S_OK, -2),
      ROW(R8(-2.5), VT_UI1, kOverflow, 0), ROW(R8(-0.5), VT_UI1, S_OK, 0),
      ROW(R4(2.5f), VT_I2, S_OK, 2), ROW(Cy(25000), VT_I4, S_OK, 2), ROW(Cy(35000), VT_I4, S_OK, 4),
      ROW(Cy(-25000), VT_I4, S_OK, -2), ROW(Cy(25001), VT_I4, S_OK, 3),
      ROW(Dec(true, 0, 25, 1), VT_I4, S_OK, -2), ROW(Dec(false, 0, 35, 1), VT_I4, S_OK, 4),
      ROW(Date(36526.5), VT_I4, S_OK, 36526),
      // Limits.
      ROW(R8(127.4), VT_I1, S_OK, 127), ROW(R8(127.5), VT_I1, kOverflow, 0),
      ROW(R8(-128.5), VT_I1, S_OK, -128), ROW(R8(-128.6), VT_I1, kOverflow, 0),
      ROW(R8(255.4), VT_UI1, S_OK, 255), ROW(R8(255.5), VT_UI1, kOverflow, 0),
      ROW(R8(32767.5), VT_I2, kOverflow, 0), ROW(R8(65535.4), VT_UI2, S_OK, 65535),
      ROW(R8(2147483647.4), VT_I4, S_OK, 2147483647), ROW(R8(2147483647.5), VT_I4, kOverflow, 0),
      ROW(R8(-2147483648.5), VT_I4, S_OK, INT_MIN),
      ROW(R8(4294967295.4), VT_UI4, S_OK, 4294967295ll),
      ROW(R8(4294967295.5), VT_UI4, kOverflow, 0),
      ROW(R8(9223372036854775808.0), VT_I8, kOverflow, 0),
      ROW(R8(-9223372036854775808.0), VT_I8, S_OK, LLONG_MIN),
      ROW(R8(18446744073709551616.0), VT_UI8, kOverflow, 0), ROW(R8(-1), VT_UI4, kOverflow, 0),
      ROW(R4(-1), VT_UI4, kOverflow, 0),
      ROW(R8(std::numeric_limits<double>::infinity()), VT_I4, kOverflow, 0),
      ROW(R8(std::numeric_limits<double>::quiet_NaN()), VT_I4, kOverflow, 0),
      ROW(I2(-1), VT_UI4, kOverflow, 0), ROW(I2(128), VT_I1, kOverflow, 0),
      ROW(I4(256), VT_UI1, kOverflow, 0), ROW(I4(-1), VT_UI2, kOverflow, 0),
      ROW(I4(-1), VT_UI8, kOverflow, 0), ROW(I8(2147483648ll), VT_I4, kOverflow, 0),
      ROW(I8(-2147483648ll), VT_INT, S_OK, INT_MIN), ROW(I8(2147483648ll), VT_INT, kOverflow, 0),
      ROW(Ui8(4294967296ull), VT_UINT, kOverflow, 0),
      ROW(Dec(false, 0, 0x8000000000000000ull, 0), VT_I8, kOverflow, 0),
      ROW(Dec(false, 1, 0, 0), VT_UI8, kOverflow, 0),
      // Types of one width keep the bits.
      ROW(I1(-1), VT_UI1, S_OK, 255), ROW(I4(-1), VT_UI4, S_OK, 4294967295ll),
      ROW(Ui4(0x80000000u), VT_I4, S_OK, INT_MIN), ROW(Ui4(0xFFFFFFFFu), VT_INT, S_OK, -1),
      ROW(Ui8(0xFFFFFFFFFFFFFFFFull), VT_I8, S_OK, -1),
      // True is -1, cut to the width.
      ROW(Bool(VARIANT_TRUE), VT_UI1, S_OK, 255), ROW(Bool(VARIANT_TRUE), VT_I4, S_OK, -1),
      ROW(Bool(VARIANT_TRUE), VT_UI4, S_OK, 4294967295ll),
      ROW(Bool(VARIANT_TRUE), VT_CY, S_OK, -10000), ROW(Bool(256), VT_UI1, S_OK, 0),
      // Nothing is zero.
      ROW(Of(VT_EMPTY), VT_I4, S_OK, 0), ROW(Of(VT_EMPTY), VT_CY, S_OK, 0),
      ROW(Of(VT_NULL), VT_I4, kMismatch, 0), ROW(Of(VT_ERROR), VT_I4, kMismatch, 0),
      // Truth.
      ROW(I4(2), VT_BOOL, S_OK, -1), ROW(R8(0.0), VT_BOOL, S_OK, 0),
      ROW(R8(0.01), VT_BOOL, S_OK, -1), ROW(Cy(1), VT_BOOL, S_OK, -1),
      ROW(Dec(false, 0, 0, 5), VT_BOOL, S_OK, 0),
      // Currency.
      ROW(R8(0.00005), VT_CY, S_OK, 1), ROW(R8(0.00015), VT_CY, S_OK, 1),
      ROW(R8(922337203685478.0), VT_CY, kOverflow, 0), ROW(I4(-3), VT_CY, S_OK, -30000),
      ROW(I8(922337203685478ll), VT_CY, kOverflow, 0),
  };
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    TestValue to;
    EXPECT_EQ(Change(row.from, row.type, &to), row.status);
    if (SUCCEEDED(row.status)) {
      EXPECT_EQ(IntegerOf(&to), row.expected);
    }
  }
}

TEST(VariantChangeType, NumbersBecomeTheNearestReal) {
  struct Row {
    const char* name;
    VARIANT from;
    VARTYPE type;
    HRESULT status;
    double expected;
  };
  // clang-format off
  const Row rows[] = {
      ROW(I4(-7), VT_R8, S_OK, -7), ROW(Bool(VARIANT_TRUE), VT_R8, S_OK, -1),
      ROW(Ui8(0xFFFFFFFFFFFFFFFFull), VT_R8, S_OK, 18446744073709551616.0),
      ROW(Cy(12345), VT_R8, S_OK, 1.2345), ROW(Dec(true, 0, 12345678, 4), VT_R8, S_OK, -1234.5678),
      ROW(Dec(true, 0, 0, 4), VT_R8, S_OK, 0), ROW(R4(0.5f), VT_R8, S_OK, 0.5),
      ROW(R8(0.1), VT_R4, S_OK, double{0.1f}), ROW(R8(3.5e38), VT_R4, kOverflow, 0),
      ROW(R8(-std::numeric_limits<double>::infinity()), VT_R4, kOverflow, 0),
      ROW(I4(36526), VT_DATE, S_OK, 36526), ROW(I4(2958466), VT_DATE, kOverflow, 0),
      ROW(R8(-657435), VT_DATE, kOverflow, 0), ROW(R8(2958465.5), VT_DATE, S_OK, 2958465.5),
      ROW(Date(36526.75), VT_R8, S_OK, 36526.75),
  };
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    TestValue to;
    EXPECT_EQ(Change(row.from, row.type, &to), row.status);
    if (FAILED(row.status)) continue;
    EXPECT_EQ(row.type == VT_R4 ? double{to->fltVal} : to->dblVal, row.expected);
  }
}

TEST(VariantChangeType, NumbersBecomeDecimalsOrOverflow) {
  struct Row {
    const char* name;
    VARIANT from;
    HRESULT status;
    VARIANT expected;
  };
  // clang-format off
  const Row rows[] = {
      ROW(I4(-7), S_OK, Dec(true, 0, 7, 0)), ROW(Bool(VARIANT_TRUE), S_OK, Dec(false, 0, 1, 0)),
      ROW(Cy(5000), S_OK, Dec(false, 0, 5000, 4)), ROW(R8(0.1), S_OK, Dec(false, 0, 1, 1)),
      ROW(R8(-1.5), S_OK, Dec(true, 0, 15, 1)),
      ROW(R8(1e28), S_OK, Dec(false, 0x204FCE5E, 0x3E25026110000000ull, 0)),
      ROW(R8(1e29), kOverflow, Of(VT_EMPTY)), ROW(R8(1e-29), S_OK, Dec(false, 0, 0, 0)),
      ROW(R4(0.001f), S_OK, Dec(false, 0, 1, 3)),
      ROW(R8(std::numeric_limits<double>::infinity()), kOverflow, Of(VT_EMPTY)),
      ROW(R8(std::numeric_limits<double>::quiet_NaN()), DISP_E_BADVARTYPE, Of(VT_EMPTY)),
      ROW(Ui8(0xFFFFFFFFFFFFFFFFull), S_OK, Dec(false, 0, 0xFFFFFFFFFFFFFFFFull, 0)),
  };
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    TestValue to;
    EXPECT_EQ(Change(row.from, VT_DECIMAL, &to), row.status);
    if (FAILED(row.status)) continue;
    EXPECT_EQ(to->decVal.scale, row.expected.decVal.scale);
    EXPECT_EQ(to->decVal.sign, row.expected.decVal.sign);
    EXPECT_EQ(to->decVal.Hi32, row.expected.decVal.Hi32);
    EXPECT_EQ(to->decVal.Lo64, row.expected.decVal.Lo64);
  }
}

// Its digits would need more room than any decimal's.
TEST(VariantChangeType, RefusesDecimalsOfMoreThan28Places) {
  for (const BYTE scale : {BYTE{28}, BYTE{29}, BYTE{64}, BYTE{255}}) {
    for (const VARTYPE type : {VT_BSTR, VT_I4, VT_R8, VT_CY, VT_DATE, VT_BOOL}) {
      TestValue to;
      EXPECT_EQ(Change(Dec(true, 0, 12, scale), type, &to), scale > 28 ? E_INVALIDARG : S_OK)
          << int{scale} << ' ' << type;
    }
  }
}

TEST(VariantChangeType, ChecksTheTags) {
  TestValue to;
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
  TestValue value = NumberValue(-12);
  EXPECT_EQ(VariantChangeType(&value, &value, 0, VT_BSTR), S_OK);
  EXPECT_EQ(TextOf(value), OLESTR("-12"));
  EXPECT_EQ(VariantChangeType(&value, &value, 0, VT_R8), S_OK);
  EXPECT_EQ(value->dblVal, -12);
  value = TextValue(OLESTR("x"));
  EXPECT_EQ(VariantChangeType(&value, &value, 0, VT_I4), kMismatch);
  EXPECT_EQ(TextOf(value), OLESTR("x"));
}

TEST(VariantChangeType, FollowsReferences) {
  LONG number = 77;
  VARIANT reference = Of(VT_I4 | VT_BYREF);
  reference.plVal = &number;
  VARIANT twice = Of(VT_VARIANT | VT_BYREF);
  twice.pvarVal = &reference;
  TestValue to;
  EXPECT_EQ(Change(reference, VT_BSTR, &to), S_OK);
  EXPECT_EQ(TextOf(to), OLESTR("77"));
  EXPECT_EQ(Change(twice, VT_I4, &to), S_OK);
  EXPECT_EQ(to->lVal, 77);
  VARIANT thrice = Of(VT_VARIANT | VT_BYREF);
  thrice.pvarVal = &twice;
  EXPECT_EQ(Change(thrice, VT_I4, &to), E_INVALIDARG);
  EXPECT_EQ(Change(Of(VT_I4 | VT_BYREF), VT_I2, &to), E_INVALIDARG);
}

TEST(VariantChangeType, ObjectsGiveTheirDefaultValue) {
  FakeObject object;
  VARIANT from = Of(VT_DISPATCH);
  from.pdispVal = &object;
  object.value = NumberValue(1234);
  TestValue to;
  EXPECT_EQ(Change(from, VT_BSTR, &to), S_OK);
  EXPECT_EQ(TextOf(to), OLESTR("1234"));
  EXPECT_EQ(object.reads, 1);
  EXPECT_EQ(object.last_flags, DISPATCH_PROPERTYGET);
  object.value = TextValue(OLESTR("x"));
  EXPECT_EQ(Change(from, VT_I4, &to), kMismatch);
  object.last_flags = 0;
  EXPECT_EQ(Change(from, VT_BSTR, &to, VARIANT_NOVALUEPROP), kMismatch);
  EXPECT_EQ(object.last_flags, 0) << "asked for its value";
  object.status = DISP_E_MEMBERNOTFOUND;
  EXPECT_EQ(Change(from, VT_BSTR, &to), kMismatch);
  EXPECT_EQ(Change(Of(VT_DISPATCH), VT_BSTR, &to), DISP_E_BADVARTYPE);
  EXPECT_EQ(Change(Of(VT_UNKNOWN), VT_BSTR, &to), kMismatch);
  EXPECT_EQ(object.references, 1u);
}

TEST(VariantChangeType, DefaultValuesThatAreObjectsAreFollowedToAnEnd) {
  FakeObject inner;
  inner.value = NumberValue(5);
  FakeObject outer;
  outer.value->vt = VT_DISPATCH;
  outer.value->pdispVal = &inner;
  inner.AddRef();
  VARIANT from = Of(VT_DISPATCH);
  from.pdispVal = &outer;
  TestValue to;
  EXPECT_EQ(Change(from, VT_BSTR, &to), S_OK);
  EXPECT_EQ(TextOf(to), OLESTR("5"));
  EXPECT_EQ(inner.references, 2u);

  // One that is its own default value has none.
  outer.value->pdispVal = &outer;
  inner.Release();
  outer.AddRef();
  EXPECT_EQ(Change(from, VT_BSTR, &to), kMismatch);
  EXPECT_EQ(outer.references, 2u);
}

TEST(VariantChangeType, ObjectsAreAskedForTheOtherInterface) {
  FakeObject object;
  VARIANT from = Of(VT_UNKNOWN);
  from.punkVal = &object;
  TestValue to;
  EXPECT_EQ(Change(from, VT_DISPATCH, &to), S_OK);
  EXPECT_EQ(to->pdispVal, &object);
  EXPECT_EQ(object.references, 2u);
  object.has_dispatch = false;
  EXPECT_EQ(Change(from, VT_DISPATCH, &to), E_NOINTERFACE);
  EXPECT_EQ(object.references, 1u);
  EXPECT_EQ(Change(Of(VT_UNKNOWN), VT_DISPATCH, &to), S_OK);
  EXPECT_EQ(to->pdispVal, nullptr);
}

TEST(VariantChangeType, ByteArraysAndTextExchangeBytes) {
  TestValue bytes(VT_ARRAY | VT_UI1);
  bytes->parray = SafeArrayCreateVector(VT_UI1, -1, 4);
  memcpy(bytes->parray->pvData, "a\0b\0", 4);
  TestValue text;
  EXPECT_EQ(VariantChangeType(&text, &bytes, 0, VT_BSTR), S_OK);
  TestValue back;
  EXPECT_EQ(VariantChangeType(&back, &text, 0, VT_ARRAY | VT_UI1), S_OK);
  LONG upper = 0;
  EXPECT_EQ(SafeArrayGetUBound(back->parray, 1, &upper), S_OK);
  EXPECT_EQ(upper, 3);
  EXPECT_EQ(memcmp(back->parray->pvData, "a\0b\0", 4), 0);
  EXPECT_EQ(SysStringByteLen(text->bstrVal), 4u);
  TestValue numbers(VT_ARRAY | VT_I4);
  numbers->parray = SafeArrayCreateVector(VT_I4, 0, 1);
  EXPECT_EQ(VariantChangeType(&text, &numbers, 0, VT_BSTR), kMismatch);
  EXPECT_EQ(VariantChangeType(&text, &bytes, 0, VT_ARRAY | VT_I4), kMismatch);
}

TEST(VariantChangeType, ReportsShortMemory) {
  TestValue to;
  for (const VARIANT& from : {I4(5), R8(0.5), Bool(0), Date(1), Of(VT_EMPTY)}) {
    to = NumberValue(kSentinel);
    MiroltaFailAllocationAfter(0);
    EXPECT_EQ(VariantChangeType(&to, &from, 0, VT_BSTR), E_OUTOFMEMORY) << from.vt;
    EXPECT_TRUE(MiroltaAllocationHasFailed());
    EXPECT_EQ(to->lVal, kSentinel);
  }
}

}  // namespace
}  // namespace mirolta
