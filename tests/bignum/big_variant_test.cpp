// Numbers from automation values and back: every type, and the state after failures.
#include "big_variant.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <limits>

#include "array_bytes.h"
#include "big_testing.h"
#include "fake_object.h"
#include "memory_watch.h"
#include "runtime_allocations.h"

namespace mirolta::test {
namespace {

constexpr HRESULT kMismatch = static_cast<HRESULT>(0x80020005);
constexpr HRESULT kNoMemory = static_cast<HRESULT>(0x8007000E);

// The hexadecimal digits that a value converts to, or the status of a failure, which leaves the
// number.
std::string ReadAs(const VARIANT& value, NumberBase base = NumberBase::kDecimal) {
  BigInt n(0xABCD);
  n.SetSignFlag(true);
  const HRESULT status = NumberFromVariant(n, value, base);
  if (FAILED(status)) {
    EXPECT_EQ(Hex(n), "-abcd");
    char text[16];
    std::snprintf(text, sizeof text, "%08X", static_cast<unsigned>(status));
    return text;
  }
  EXPECT_EQ(status, S_OK);
  EXPECT_TRUE(n.SignFlag()) << "the flag is not touched";
  n.SetSignFlag(false);
  return Hex(n);
}

std::string TextAs(const std::string& text, NumberBase base) {
  TestValue value(VT_BSTR);
  const auto wide = Widen(text);
  value->bstrVal = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
  return ReadAs(value, base);
}

TestValue RealValue(double number) {
  TestValue value(VT_R8);
  value->dblVal = number;
  return value;
}

TestValue SmallValue(VARTYPE type, uint32_t bits) {
  TestValue value(type);
  switch (type) {
    case VT_I1:
    case VT_UI1:
      value->bVal = static_cast<BYTE>(bits);
      break;
    case VT_I2:
    case VT_UI2:
      value->uiVal = static_cast<USHORT>(bits);
      break;
    default:
      value->ulVal = bits;
  }
  return value;
}

TEST(BigVariantTest, EmptyNullAndMissingValuesAreZero) {
  TestValue left_out(VT_ERROR);
  left_out->scode = DISP_E_PARAMNOTFOUND;
  EXPECT_EQ(ReadAs(left_out), "0");
  EXPECT_EQ(ReadAs(TestValue(VT_EMPTY)), "0");
  EXPECT_EQ(ReadAs(TestValue(VT_NULL)), "0");
}

TEST(BigVariantTest, OtherErrorsAreNoNumbers) {
  TestValue error(VT_ERROR);
  for (const HRESULT status : {S_OK, E_FAIL, DISP_E_TYPEMISMATCH, DISP_E_PARAMNOTOPTIONAL}) {
    error->scode = status;
    EXPECT_EQ(ReadAs(error), "80020005");
  }
}

TEST(BigVariantTest, IntegersAreTheirValues) {
  EXPECT_EQ(ReadAs(SmallValue(VT_I1, 127)), "7f");
  EXPECT_EQ(ReadAs(SmallValue(VT_UI1, 255)), "ff");
  EXPECT_EQ(ReadAs(SmallValue(VT_I2, 32767)), "7fff");
  EXPECT_EQ(ReadAs(SmallValue(VT_UI2, 65535)), "ffff");
  EXPECT_EQ(ReadAs(SmallValue(VT_I4, 0x7FFFFFFF)), "7fffffff");
  EXPECT_EQ(ReadAs(SmallValue(VT_UI4, 0xFFFFFFFF)), "ffffffff");
  for (const VARTYPE type : {VT_I1, VT_I2, VT_I4, VT_UI1, VT_UI2, VT_UI4}) {
    EXPECT_EQ(ReadAs(SmallValue(type, 0)), "0") << type;
    EXPECT_EQ(ReadAs(SmallValue(type, 1), NumberBase::kHexadecimal), "1") << type;
  }
}

TEST(BigVariantTest, NegativeIntegersAreRefused) {
  for (const VARTYPE type : {VT_I1, VT_I2, VT_I4}) {
    EXPECT_EQ(ReadAs(SmallValue(type, 0xFFFFFFFF)), "8002000A") << type;
  }
  EXPECT_EQ(ReadAs(SmallValue(VT_I1, 0x80)), "8002000A");
  EXPECT_EQ(ReadAs(SmallValue(VT_I2, 0x8000)), "8002000A");
  EXPECT_EQ(ReadAs(SmallValue(VT_I4, 0x80000000)), "8002000A");
}

TEST(BigVariantTest, FractionsAreRoundedToWords) {
  TestValue single(VT_R4);
  single->fltVal = 16777216.0f;
  EXPECT_EQ(ReadAs(single), "1000000");
  single->fltVal = -1.0f;
  EXPECT_EQ(ReadAs(single), "8002000A");
  EXPECT_EQ(ReadAs(RealValue(4294967295.0)), "ffffffff");
  EXPECT_EQ(ReadAs(RealValue(2.5)), "2");
  EXPECT_EQ(ReadAs(RealValue(3.5)), "4");
  EXPECT_EQ(ReadAs(RealValue(-0.25)), "0");
  EXPECT_EQ(ReadAs(RealValue(-1)), "8002000A");
  EXPECT_EQ(ReadAs(RealValue(4294967296.0)), "8002000A");
  EXPECT_EQ(ReadAs(RealValue(1e300)), "8002000A");
#ifndef _WIN32  // Wine's coercion takes it
  EXPECT_EQ(ReadAs(RealValue(std::numeric_limits<double>::quiet_NaN())), "8002000A");
#endif
  EXPECT_EQ(ReadAs(RealValue(std::numeric_limits<double>::infinity())), "8002000A");
}

TEST(BigVariantTest, TextIsReadInTheGivenBase) {
  EXPECT_EQ(TextAs("255", NumberBase::kDecimal), "ff");
  EXPECT_EQ(TextAs("255", NumberBase::kHexadecimal), "255");
  EXPECT_EQ(TextAs("12,345", NumberBase::kDecimal), "3039");
  EXPECT_EQ(TextAs("-12345", NumberBase::kDecimal), "3039");
  EXPECT_EQ(TextAs("0x1F", NumberBase::kHexadecimal), "1f");
  EXPECT_EQ(TextAs("abcABC", NumberBase::kHexadecimal), "abcabc");
  EXPECT_EQ(TextAs("ff", NumberBase::kDecimal), "0");
  EXPECT_EQ(TextAs("", NumberBase::kDecimal), "0");
  EXPECT_EQ(TextAs("", NumberBase::kHexadecimal), "0");
  // A zero character is skipped as any other that is no digit.
  EXPECT_EQ(TextAs(std::string("1\0002", 3), NumberBase::kDecimal), "c");
  EXPECT_EQ(TextAs(std::string("1\0002", 3), NumberBase::kHexadecimal), "12");
  EXPECT_EQ(ReadAs(TestValue(VT_BSTR)), "0");
}

TEST(BigVariantTest, OnlyWholeUnitsOfAnOddNumberOfBytesCount) {
  TestValue odd(VT_BSTR);
  odd->bstrVal = SysAllocStringByteLen("1\0002\0003", 5);
  EXPECT_EQ(ReadAs(odd), "c");
  EXPECT_EQ(ReadAs(odd, NumberBase::kHexadecimal), "12");
}

TEST(BigVariantTest, CharactersLikeDigitsAreSkipped) {
  // The neighbours of the digits, and full-width and Arabic-Indic ones.
  EXPECT_EQ(ReadAs(TextValue(OLESTR("/1:2\uFF13\u06632"))), "7a");
  EXPECT_EQ(ReadAs(TextValue(OLESTR("/9:@AFG`afg\u0141\uFF21")), NumberBase::kHexadecimal),
            "9afaf");
}

TEST(BigVariantTest, ByteArraysAreNumbersWithTheHighByteFirst) {
  EXPECT_EQ(ReadAs(BytesValue({1, 2, 3, 4, 5})), "102030405");
  EXPECT_EQ(ReadAs(BytesValue({0, 0, 1})), "1");
  EXPECT_EQ(ReadAs(BytesValue({})), "0");
  EXPECT_EQ(ReadAs(BytesValue({0, 0, 0, 0, 0})), "0");
  EXPECT_EQ(ReadAs(BytesValue({0x12, 0x34}, -7)), "1234");
  EXPECT_EQ(ReadAs(TestValue(kByteArrayType)), "0");
}

TEST(BigVariantTest, EveryOtherTypeIsAMismatch) {
  for (const VARTYPE type :
       {VT_CY, VT_DATE, VT_ERROR, VT_BOOL, VT_DECIMAL, VT_I8, VT_UI8, VT_INT, VT_UINT}) {
    EXPECT_EQ(ReadAs(TestValue(type)), "80020005") << type;
  }
  for (const VARTYPE type : {VT_I1, VT_I2, VT_I4, VT_UI2, VT_UI4, VT_R4, VT_R8, VT_BSTR, VT_BOOL,
                             VT_VARIANT, VT_DISPATCH, VT_CY}) {
    EXPECT_EQ(ReadAs(ArrayValue(static_cast<VARTYPE>(type), 2, {})), "80020005") << type;
  }
}

TEST(BigVariantTest, ReferencesAreNotFollowed) {
  TestValue inner = NumberValue(5);
  LONG number = 5;
  BSTR text = nullptr;
  SAFEARRAY* array = nullptr;
  IDispatch* object = nullptr;
  EXPECT_EQ(ReadAs(ReferenceTo(VT_I4, &number)), "80020005");
  EXPECT_EQ(ReadAs(ReferenceTo(VT_UI1, &number)), "80020005");
  EXPECT_EQ(ReadAs(ReferenceTo(VT_BSTR, &text)), "80020005");
  EXPECT_EQ(ReadAs(ReferenceTo(kByteArrayType, &array)), "80020005");
  EXPECT_EQ(ReadAs(ReferenceTo(VT_DISPATCH, &object)), "80020005");
  EXPECT_EQ(ReadAs(ReferenceTo(VT_VARIANT, &inner)), "80020005");
}

TEST(BigVariantTest, MalformedValuesFailAsTheirCopyDoes) {
  for (const VARTYPE type : {VARTYPE{15}, VARTYPE{77}, VARTYPE{VT_ARRAY | 15}}) {
    VARIANT value;
    VariantInit(&value);
    V_VT(&value) = type;
    VARIANT copy;
    VariantInit(&copy);
    const HRESULT status = VariantCopy(&copy, &value);
    ASSERT_TRUE(FAILED(status)) << type;
    BigInt n(3);
    EXPECT_EQ(NumberFromVariant(n, value, NumberBase::kDecimal), status) << type;
    EXPECT_EQ(Hex(n), "3");
  }
}

TEST(BigVariantTest, ObjectsAreTheirDefaultValues) {
  FakeObject text(TextValue(OLESTR("12")));
  EXPECT_EQ(ReadAs(ObjectValue(&text)), "c");
  EXPECT_EQ(ReadAs(ObjectValue(&text), NumberBase::kHexadecimal), "12");
  EXPECT_EQ(ReadAs(UnknownValue(&text)), "c");
  EXPECT_EQ(text.reads, 3);
  EXPECT_EQ(text.references, 1u);

  FakeObject outer(ObjectValue(&text));
  EXPECT_EQ(ReadAs(ObjectValue(&outer)), "c");

  FakeObject bytes(BytesValue({1, 0}));
  EXPECT_EQ(ReadAs(ObjectValue(&bytes)), "100");
  FakeObject nothing;
  EXPECT_EQ(ReadAs(ObjectValue(&nothing)), "0");
}

TEST(BigVariantTest, ObjectsWithoutANumberAreRefused) {
  FakeObject truth((TestValue(VT_BOOL)));
  EXPECT_EQ(ReadAs(ObjectValue(&truth)), "80020005");
  FakeObject below_zero(NumberValue(-1));
  EXPECT_EQ(ReadAs(ObjectValue(&below_zero)), "8002000A");
  FakeObject failing(NumberValue(1));
  failing.status = static_cast<HRESULT>(0x80041234);
  EXPECT_EQ(ReadAs(ObjectValue(&failing)), "80041234");
  FakeObject silent(NumberValue(1));
  silent.has_dispatch = false;
  EXPECT_EQ(ReadAs(UnknownValue(&silent)), "80004005");
  EXPECT_EQ(ReadAs(ObjectValue(nullptr)), "80004005");
  EXPECT_EQ(ReadAs(UnknownValue(nullptr)), "80004005");
}

TEST(BigVariantTest, NumbersAreWrittenAsText) {
  TestValue value;
  ASSERT_EQ(
      NumberToVariant(BigHex("ABCDEF0123456789abc"), VT_BSTR, NumberBase::kHexadecimal, &value),
      S_OK);
  ASSERT_EQ(V_VT(&value), VT_BSTR);
  EXPECT_EQ(std::basic_string<OLECHAR>(value->bstrVal), OLESTR("abcdef0123456789abc"));
  VariantClear(&value);
  ASSERT_EQ(NumberToVariant(Negated(BigInt(1024)), VT_BSTR, NumberBase::kDecimal, &value), S_OK);
  EXPECT_EQ(std::basic_string<OLECHAR>(value->bstrVal), OLESTR("1024"));
  EXPECT_EQ(SysStringLen(value->bstrVal), 4u);
}

TEST(BigVariantTest, ZeroHasNoText) {
  for (const NumberBase base : {NumberBase::kDecimal, NumberBase::kHexadecimal}) {
    VARIANT value;
    V_VT(&value) = VT_I4;
    EXPECT_EQ(NumberToVariant(BigInt(), VT_BSTR, base, &value), kNoMemory);
    EXPECT_EQ(V_VT(&value), VT_EMPTY);
  }
}

TEST(BigVariantTest, NumbersAreWrittenAsByteArrays) {
  TestValue value;
  ASSERT_EQ(NumberToVariant(BigInt(0x10203), kByteArrayType, NumberBase::kDecimal, &value), S_OK);
  EXPECT_EQ(BytesOfArray(value), (Bytes{1, 2, 3}));
  VariantClear(&value);
  ASSERT_EQ(NumberToVariant(BigInt(), kByteArrayType, NumberBase::kDecimal, &value), S_OK);
  ASSERT_EQ(V_VT(&value), kByteArrayType);
  ASSERT_NE(value->parray, nullptr);
  EXPECT_EQ(BytesOfArray(value), Bytes());
}

TEST(BigVariantTest, OtherTypesAreRefused) {
  for (const int type : {+VT_EMPTY, +VT_I4, +VT_R8, +VT_UI1, +VT_ARRAY, VT_ARRAY | VT_I1,
                         VT_BYREF | VT_BSTR, +VT_DISPATCH}) {
    VARIANT value;
    V_VT(&value) = VT_I4;
    EXPECT_EQ(NumberToVariant(BigInt(1), static_cast<VARTYPE>(type), NumberBase::kDecimal, &value),
              kMismatch);
    EXPECT_EQ(V_VT(&value), VT_EMPTY);
  }
  EXPECT_EQ(NumberToVariant(BigInt(1), VT_BSTR, NumberBase::kDecimal, nullptr), E_POINTER);
  EXPECT_EQ(NumberToVariant(BigInt(1), VT_I4, NumberBase::kDecimal, nullptr), E_POINTER);
}

TEST(BigVariantTest, WithoutMemoryNumbersAndValuesStayEmpty) {
  FakeObject text(TextValue(OLESTR("12345678901234567890")));
  const TestValue object = ObjectValue(&text);
  const TestValue values[] = {TextValue(OLESTR("12345678901234567890")),
                              BytesValue(Bytes(40, 0x5A)), NumberValue(7)};
  int failures = 0;
  for (const TestValue& value : values) {
    for (const NumberBase base : {NumberBase::kDecimal, NumberBase::kHexadecimal}) {
      for (long allowed = 0;; ++allowed) {
        BigInt n;
        HRESULT status = S_OK;
        {
          const FailAllocationsAfter fail(allowed);
          status = NumberFromVariant(n, value, base);
        }
        if (status == S_OK) break;
        ++failures;
        ASSERT_EQ(status, kNoMemory);
        ASSERT_TRUE(n.IsZero());
      }
    }
  }
  EXPECT_GE(failures, 6);
  if (!kRuntimeFailsOnDemand) return;
  // The copy of an object's text comes from the runtime.
  BigInt n(9);
  MiroltaFailAllocationAfter(0);
  EXPECT_EQ(NumberFromVariant(n, object, NumberBase::kDecimal), kNoMemory);
  EXPECT_TRUE(MiroltaAllocationHasFailed());
  MiroltaFailAllocationAfter(-1);
  EXPECT_EQ(Hex(n), "9");
}

TEST(BigVariantTest, WithoutMemoryThereIsNoResult) {
  const BigInt n = BigHex("123456789abcdef0123456789abcdef0");
  for (const VARTYPE type : {VARTYPE{VT_BSTR}, kByteArrayType}) {
    for (long allowed = 0; allowed < 1; ++allowed) {
      VARIANT value;
      V_VT(&value) = VT_I4;
      HRESULT status = S_OK;
      {
        const FailAllocationsAfter fail(allowed);
        status = NumberToVariant(n, type, NumberBase::kDecimal, &value);
      }
      EXPECT_EQ(status, kNoMemory);
      EXPECT_EQ(V_VT(&value), VT_EMPTY);
    }
    if (!kRuntimeFailsOnDemand) continue;
    VARIANT value;
    V_VT(&value) = VT_I4;
    MiroltaFailAllocationAfter(0);
    EXPECT_EQ(NumberToVariant(n, type, NumberBase::kDecimal, &value), kNoMemory);
    EXPECT_TRUE(MiroltaAllocationHasFailed());
    MiroltaFailAllocationAfter(-1);
    EXPECT_EQ(V_VT(&value), VT_EMPTY);
  }
}

}  // namespace
}  // namespace mirolta::test
