// PexBigNumber through its interface. Its operands are in big_number_operands_test.cpp.
#include "big_number_fixture.h"

namespace mirolta::test {
namespace {

TEST_F(BigNumberTest, ANewNumberIsZero) {
  EXPECT_EQ(HexOf(number.Get()), "0");
  EXPECT_EQ(Order(number, TestValue()), 0);
}

TEST_F(BigNumberTest, ZeroHasBytesAndCharactersButNoDigits) {
  for (const auto get : {&IPexBigNumber::get_Value, &IPexBigNumber::get_Hex}) {
    VARIANT value;
    V_VT(&value) = VT_I4;
    EXPECT_EQ((number.Get()->*get)(&value), E_OUTOFMEMORY);
    EXPECT_EQ(V_VT(&value), VT_EMPTY);
  }
  TestValue bytes;
  EXPECT_EQ(number->get_Binary(&bytes), S_OK);
  EXPECT_EQ(V_VT(&bytes), VT_ARRAY | VT_UI1);
  EXPECT_TRUE(BytesOfArray(bytes).empty());
  OwnedBstr text;
  EXPECT_EQ(number->get_Text(0, text.Put()), S_OK);
  ASSERT_NE(text.Get(), nullptr);
  EXPECT_EQ(SysStringLen(text.Get()), 0u);
}

TEST_F(BigNumberTest, EveryFormIsLoadedAndRead) {
  const struct {
    const char* name;
    HRESULT (STDMETHODCALLTYPE IPexBigNumber::*put)(VARIANT);
    TestValue value;
    const char* hex;
  } kRows[] = {
      {"hexadecimal", &IPexBigNumber::put_Hex, Dec("ff"), "ff"},
      {"decimal without digits", &IPexBigNumber::put_Value, Dec("ff"), "0"},
      {"hexadecimal with a prefix", &IPexBigNumber::put_Hex, Dec("0xABCdef"), "abcdef"},
      {"decimal with other characters", &IPexBigNumber::put_Value, Dec("-12,345 "), "3039"},
      {"bytes", &IPexBigNumber::put_Binary, BytesValue({0, 1, 2}), "102"},
      {"text as bytes", &IPexBigNumber::put_Binary, Dec("16"), "10"},
      {"bytes as hexadecimal", &IPexBigNumber::put_Hex, BytesValue({0x12, 0x34}), "1234"},
      {"a number as hexadecimal", &IPexBigNumber::put_Hex, NumberValue(16), "10"},
      {"null", &IPexBigNumber::put_Value, TestValue(VT_NULL), "0"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ((number.Get()->*row.put)(row.value), S_OK) << row.name;
    EXPECT_EQ(HexOf(number.Get()), row.hex) << row.name;
  }
  EXPECT_EQ(number->put_Value(Dec("12345")), S_OK);
  EXPECT_EQ(DecOf(number.Get()), "12345");
}

TEST_F(BigNumberTest, TextIsConvertedByItsCodePage) {
  const OwnedBstr text(SysAllocString(OLESTR("A\u20AC")));
  constexpr struct {
    LONG code_page;
    const char* hex;
    const OLECHAR* back;
  } kRows[] = {{-1, "4120ac", OLESTR("\u4120")},  // a number has no zero byte in front
               {-2, "4100ac20", OLESTR("A\u20AC")},
               {-9, "4100ac20", OLESTR("A\u20AC")},
               {65001, "41e282ac", OLESTR("A\u20AC")}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.code_page);
    EXPECT_EQ(number->put_Text(row.code_page, text.Get()), S_OK);
    EXPECT_EQ(HexOf(number.Get()), row.hex);
    OwnedBstr back;
    EXPECT_EQ(number->get_Text(row.code_page, back.Put()), S_OK);
    EXPECT_EQ(Text(back.Get()), row.back);
  }
  EXPECT_EQ(number->put_Text(0, nullptr), S_OK);
  EXPECT_EQ(HexOf(number.Get()), "0");
}

TEST_F(BigNumberTest, NullOutPointersAreReportedFirst) {
  EXPECT_EQ(number->put_Value(Dec("5")), S_OK);
  EXPECT_EQ(number->get_Value(nullptr), E_POINTER);
  EXPECT_EQ(number->get_Hex(nullptr), E_POINTER);
  EXPECT_EQ(number->get_Text(0, nullptr), E_POINTER);
  EXPECT_EQ(number->get_Binary(nullptr), E_POINTER);
  // Before the operand is converted.
  const TestValue bad(VT_BOOL);
  for (const NamedBinary& binary : kBinaries) {
    EXPECT_EQ((number.Get()->*binary.member)(bad, nullptr), E_POINTER) << binary.name;
  }
  EXPECT_EQ(number->ModExp(bad, bad, nullptr), E_POINTER);
  EXPECT_EQ(number->Cmp(bad, nullptr), E_POINTER);
  EXPECT_EQ(number->NewNumber(bad, nullptr), E_POINTER);
  EXPECT_EQ(DecOf(number.Get()), "5");
}

TEST_F(BigNumberTest, OperationsGiveNewNumbers) {
  struct Case {
    Binary member;
    const char* a;
    const char* b;
    const char* result;
  };
  constexpr Case kCases[] = {
      {&IPexBigNumber::Add, "18446744073709551615", "1", "18446744073709551616"},
      {&IPexBigNumber::Sub, "18446744073709551616", "1", "18446744073709551615"},
      {&IPexBigNumber::Sub, "3", "5", "2"},
      {&IPexBigNumber::Mul, "4294967295", "4294967295", "18446744065119617025"},
      {&IPexBigNumber::Mul, "5", "0", "0"},
      {&IPexBigNumber::Div, "1000", "7", "142"},
      {&IPexBigNumber::Div, "6", "7", "0"},
      {&IPexBigNumber::Mod, "1000", "7", "6"},
      {&IPexBigNumber::GCD, "12", "18", "6"},
      {&IPexBigNumber::GCD, "0", "5", "5"},
      {&IPexBigNumber::GCD, "5", "0", "5"},
      {&IPexBigNumber::GCD, "0", "0", "0"},
      {&IPexBigNumber::ModInv, "3", "7", "5"},
  };
  for (const Case& one : kCases) {
    const Number a = Of(one.a);
    const Number result = Apply(a, one.member, Dec(one.b));
    ASSERT_TRUE(result);
    EXPECT_EQ(DecOf(result.Get()), one.result) << one.a << " " << one.b;
    EXPECT_EQ(DecOf(a.Get()), one.a);
    EXPECT_NE(result.Get(), a.Get());
  }
}

TEST_F(BigNumberTest, DivisionByZeroIsReported) {
  for (const char* const dividend : {"0", "12"}) {
    const Number a = Of(dividend);
    for (const Binary member : {&IPexBigNumber::Div, &IPexBigNumber::Mod, &IPexBigNumber::ModInv}) {
      for (int form = 0; form < 3; ++form) {
        const TestValue zero = form == 0 ? Dec("0") : form == 1 ? BytesValue({}) : TestValue();
        IPexBigNumber* result = a.Get();
        EXPECT_EQ((a.Get()->*member)(zero, &result), DISP_E_DIVBYZERO);
        EXPECT_EQ(result, nullptr);
      }
    }
    IPexBigNumber* result = a.Get();
    EXPECT_EQ(a->ModExp(NumberValue(3), NumberValue(0), &result), DISP_E_DIVBYZERO);
    EXPECT_EQ(result, nullptr);
    result = a.Get();
    EXPECT_EQ(a->ModExp(NumberValue(0), NumberValue(0), &result), DISP_E_DIVBYZERO);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(DecOf(a.Get()), dividend);
  }
}

TEST_F(BigNumberTest, ModExpComputesPowers) {
  struct Case {
    const char* base;
    const char* exponent;
    const char* modulus;
    const char* result;
  };
  constexpr Case kCases[] = {
      {"4", "13", "497", "445"}, {"1000", "1", "7", "6"},     {"5", "0", "7", "1"},
      {"0", "0", "7", "1"},      {"5", "0", "1", "0"},        {"5", "3", "1", "0"},
      {"7", "5", "12", "7"},     {"3", "200", "1024", "161"}, {"0", "5", "9", "0"},
      {"2", "10", "1024", "0"},
  };
  for (const Case& one : kCases) {
    Number result;
    const Number base = Of(one.base);
    ASSERT_EQ(base->ModExp(Dec(one.exponent), Dec(one.modulus), result.Put()), S_OK);
    EXPECT_EQ(DecOf(result.Get()), one.result) << one.base << "^" << one.exponent;
    EXPECT_EQ(DecOf(base.Get()), one.base);
  }
}

TEST_F(BigNumberTest, ModInvOfNumbersWithoutAnInverseIsRefused) {
  Number result;
  EXPECT_EQ(Of("2")->ModInv(NumberValue(4), result.Put()), S_OK);
  EXPECT_EQ(DecOf(result.Get()), "1");
  EXPECT_EQ(Of("0")->ModInv(NumberValue(4), result.Put()), S_OK);
  EXPECT_EQ(DecOf(result.Get()), "0");
}

TEST_F(BigNumberTest, IncAndDecChangeTheNumber) {
  EXPECT_EQ(number->Inc(LeftOut()), S_OK);
  EXPECT_EQ(number->Inc(LeftOut()), S_OK);
  EXPECT_EQ(DecOf(number.Get()), "2");
  EXPECT_EQ(number->Dec(LeftOut()), S_OK);
  EXPECT_EQ(DecOf(number.Get()), "1");
  EXPECT_EQ(number->Inc(test::Dec("4294967295")), S_OK);
  EXPECT_EQ(HexOf(number.Get()), "100000000");
  EXPECT_EQ(number->Dec(NumberValue(2)), S_OK);
  EXPECT_EQ(HexOf(number.Get()), "fffffffe");
  // An empty value is not a missing one.
  EXPECT_EQ(number->Inc(TestValue()), S_OK);
  EXPECT_EQ(number->Dec(TestValue(VT_NULL)), S_OK);
  EXPECT_EQ(HexOf(number.Get()), "fffffffe");
}

TEST_F(BigNumberTest, NegativeNumbersHaveTheirForms) {
  const Number a = Difference("3", "5");
  EXPECT_EQ(SignedDecOf(a), "-2");
  EXPECT_EQ(Order(a, NumberValue(1)), -1);
  EXPECT_EQ(SignedDecOf(Apply(a, &IPexBigNumber::Add, NumberValue(5))), "+3");
  const Number product = Apply(a, &IPexBigNumber::Mul, NumberValue(7));
  EXPECT_EQ(SignedDecOf(product), "-14");
  EXPECT_EQ(SignedDecOf(Apply(product, &IPexBigNumber::Mod, NumberValue(4))), "-2");
  EXPECT_EQ(SignedDecOf(Apply(product, &IPexBigNumber::Div, NumberValue(4))), "-3");
}

TEST_F(BigNumberTest, LoadsKeepTheSignFlag) {
  const Number a = Difference("3", "5");
  EXPECT_EQ(a->put_Value(Dec("100")), S_OK);
  EXPECT_EQ(SignedDecOf(a), "-100");
  EXPECT_EQ(a->put_Hex(Dec("ff")), S_OK);
  EXPECT_EQ(SignedDecOf(a), "-255");
  EXPECT_EQ(a->put_Binary(BytesValue({1})), S_OK);
  EXPECT_EQ(SignedDecOf(a), "-1");
  const OwnedBstr text(SysAllocString(OLESTR("a")));
  EXPECT_EQ(a->put_Text(0, text.Get()), S_OK);
  EXPECT_EQ(SignedDecOf(a), "-97");
  EXPECT_EQ(a->Random(4, 1, 1), S_OK);
  EXPECT_EQ(Order(a, NumberValue(0)), -1);
  // Zero with the sign flag is not negative, and keeps the flag.
  EXPECT_EQ(a->put_Value(NumberValue(0)), S_OK);
  EXPECT_EQ(Order(a, NumberValue(0)), 0);
  EXPECT_EQ(a->put_Value(NumberValue(6)), S_OK);
  EXPECT_EQ(SignedDecOf(a), "-6");
}

TEST_F(BigNumberTest, NewNumberTakesAnOptionalValue) {
  EXPECT_EQ(number->put_Value(Dec("9")), S_OK);
  Number made;
  ASSERT_EQ(number->NewNumber(LeftOut(), made.Put()), S_OK);
  EXPECT_EQ(HexOf(made.Get()), "0");
  ASSERT_EQ(number->NewNumber(Dec("77"), made.Put()), S_OK);
  EXPECT_EQ(DecOf(made.Get()), "77");
  ASSERT_EQ(number->NewNumber(ObjectValue(number.Get()), made.Put()), S_OK);
  EXPECT_EQ(made->Inc(LeftOut()), S_OK);
  EXPECT_EQ(DecOf(made.Get()), "10");
  EXPECT_EQ(DecOf(number.Get()), "9");
}

TEST_F(BigNumberTest, ResultsShareNothingWithTheirSource) {
  EXPECT_EQ(number->put_Value(Dec("1000")), S_OK);
  const Number copy = Apply(number, &IPexBigNumber::Add, NumberValue(0));
  const Number other = Apply(copy, &IPexBigNumber::Sub, NumberValue(0));
  EXPECT_EQ(number->Inc(LeftOut()), S_OK);
  EXPECT_EQ(copy->Dec(LeftOut()), S_OK);
  EXPECT_EQ(other->put_Value(NumberValue(5)), S_OK);
  EXPECT_EQ(DecOf(number.Get()), "1001");
  EXPECT_EQ(DecOf(copy.Get()), "999");
  EXPECT_EQ(DecOf(other.Get()), "5");
  number.Reset();
  EXPECT_EQ(DecOf(copy.Get()), "999");
}

TEST_F(BigNumberTest, RandomTakesSizeAndTwoFlags) {
  EXPECT_EQ(number->put_Value(Dec("9")), S_OK);
  for (const LONG size : {0, -1, -2147483647 - 1}) {
    EXPECT_EQ(number->Random(size, 1, 1), E_INVALIDARG);
  }
  EXPECT_EQ(DecOf(number.Get()), "9");
  std::string last;
  for (int i = 0; i < 20; ++i) {
    ASSERT_EQ(number->Random(4, VARIANT_TRUE, VARIANT_TRUE), S_OK);
    const unsigned long value = std::stoul(HexOf(number.Get()), nullptr, 16);
    EXPECT_GE(value, 0xC0000001u);
    EXPECT_EQ(value % 2, 1u);
    ASSERT_EQ(number->Random(32, 1, 0), S_OK);  // any switch but zero is one
    const std::string hex = HexOf(number.Get());
    EXPECT_EQ(hex.size(), 64u);
    EXPECT_GE(hex[0], 'c');
    EXPECT_NE(hex, last);
    last = hex;
  }
}

TEST_F(BigNumberTest, WithoutMemoryThereIsNoText) {
  EXPECT_EQ(number->put_Value(Dec("9")), S_OK);
  const auto fails = [&](const auto& call) {
    MiroltaFailAllocationAfter(0);
    EXPECT_EQ(call(), E_OUTOFMEMORY);
    EXPECT_TRUE(MiroltaAllocationHasFailed());
    MiroltaFailAllocationAfter(-1);
  };
  for (const auto get :
       {&IPexBigNumber::get_Value, &IPexBigNumber::get_Hex, &IPexBigNumber::get_Binary}) {
    VARIANT value;
    fails([&] { return (number.Get()->*get)(&value); });
    EXPECT_EQ(V_VT(&value), VT_EMPTY);
  }
  BSTR text = nullptr;
  fails([&] { return number->get_Text(0, &text); });
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(DecOf(number.Get()), "9");
}

TEST_F(BigNumberTest, SupportsErrorInformationForItsInterfaceOnly) {
  OwnedReference<ISupportErrorInfo> support;
  ASSERT_EQ(support.Query(number.Get(), IID_ISupportErrorInfo), S_OK);
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IPexBigNumber), S_OK);
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IDispatch), S_FALSE);
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IRSACrypt), S_FALSE);
}

}  // namespace
}  // namespace mirolta::test
