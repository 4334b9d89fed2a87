// Which keys of a dictionary are equal, for values that scripts cannot make.
#include "classes/dictionary_key.h"

#include <gtest/gtest.h>

#include <limits>

#include "classes/host_call.h"
#include "engine/host_errors.h"

namespace mirolta::host {
namespace {

VARIANT Real(double number) {
  VARIANT value = {};
  value.vt = VT_R8;
  value.dblVal = number;
  return value;
}
VARIANT Whole(LONGLONG number) {
  VARIANT value = {};
  value.vt = VT_I8;
  value.llVal = number;
  return value;
}
VARIANT Unsigned(ULONGLONG number) {
  VARIANT value = {};
  value.vt = VT_UI8;
  value.ullVal = number;
  return value;
}

bool AreEqual(const VARIANT& a, const VARIANT& b) {
  return ComparisonForm(a, false) == ComparisonForm(b, false);
}

HRESULT ErrorOf(const VARIANT& key) {
  try {
    static_cast<void>(ComparisonForm(key, false));
  } catch (const CallError& error) {
    return error.number;
  }
  return S_OK;
}

TEST(DictionaryKeyTest, NumbersAreEqualAcrossTypes) {
  constexpr VARTYPE kTypes[] = {VT_I1,   VT_UI1, VT_I2,  VT_UI2, VT_I4, VT_UI4, VT_INT,
                                VT_UINT, VT_I8,  VT_UI8, VT_R4,  VT_R8, VT_CY,  VT_DECIMAL};
  for (const VARTYPE type : kTypes) {
    SCOPED_TRACE(type);
    ScopedVariant seven;
    const VARIANT real = Real(7);
    ASSERT_EQ(VariantChangeType(&seven, &real, 0, type), S_OK);
    EXPECT_TRUE(AreEqual(seven, real));
    EXPECT_FALSE(AreEqual(seven, Real(8)));
  }
}

TEST(DictionaryKeyTest, LargeIntegersAreExact) {
  constexpr LONGLONG k2To53 = LONGLONG{1} << 53;
  EXPECT_FALSE(AreEqual(Whole(k2To53), Whole(k2To53 + 1)));
  EXPECT_TRUE(AreEqual(Whole(k2To53), Real(9007199254740992.0)));
  EXPECT_TRUE(AreEqual(Whole(k2To53 + 1), Unsigned(k2To53 + 1)));
  EXPECT_FALSE(AreEqual(Whole(-1), Unsigned(~ULONGLONG{0})));
  EXPECT_TRUE(AreEqual(Unsigned(ULONGLONG{1} << 63), Real(9223372036854775808.0)));
  EXPECT_TRUE(AreEqual(Whole(std::numeric_limits<LONGLONG>::min()), Real(-9223372036854775808.0)));
  EXPECT_FALSE(AreEqual(Real(18446744073709551616.0), Real(36893488147419103232.0)));
}

TEST(DictionaryKeyTest, ZerosAreEqual) {
  EXPECT_TRUE(AreEqual(Real(0.0), Real(-0.0)));
  EXPECT_TRUE(AreEqual(Real(-0.0), Whole(0)));
  VARIANT date = Real(0.0), other = Real(-0.0);
  date.vt = other.vt = VT_DATE;
  EXPECT_TRUE(AreEqual(date, other));
  EXPECT_FALSE(AreEqual(date, Real(0.0)));
}

TEST(DictionaryKeyTest, KindsDiffer) {
  VARIANT keys[8] = {};
  keys[1].vt = VT_NULL;
  keys[2].vt = VT_BOOL;
  keys[3].vt = VT_I4;
  keys[4].vt = VT_DATE;
  keys[5].vt = VT_BSTR;
  keys[6].vt = VT_DISPATCH;
  keys[7].vt = VT_ERROR;
  for (const VARIANT& a : keys) {
    for (const VARIANT& b : keys) EXPECT_EQ(AreEqual(a, b), &a == &b) << a.vt << " " << b.vt;
  }
  VARIANT unknown = {};
  unknown.vt = VT_UNKNOWN;
  EXPECT_TRUE(AreEqual(unknown, keys[6]));
}

TEST(DictionaryKeyTest, WhatIsNoKeyIsRefused) {
  VARIANT array = {};
  array.vt = VT_ARRAY | VT_UI1;
  EXPECT_EQ(ErrorOf(array), kInvalidCall);
  EXPECT_EQ(ErrorOf(Real(std::numeric_limits<double>::quiet_NaN())), kInvalidCall);
  EXPECT_EQ(ErrorOf(Real(std::numeric_limits<double>::infinity())), S_OK);
  VARIANT record = {};
  record.vt = VT_RECORD;
  EXPECT_TRUE(FAILED(ErrorOf(record)));
}

}  // namespace
}  // namespace mirolta::host
