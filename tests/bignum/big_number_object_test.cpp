// PexBigNumber through its interface.
#include <functional>
#include <vector>

#include "big_number_fixture.h"
#include "fake_object.h"

namespace mirolta::test {
namespace {

TEST_F(BigNumberTest, ANewNumberIsZero) {
  EXPECT_EQ(HexOf(number.Get()), "0");
  LONG order = 7;
  EXPECT_EQ(number->Cmp(TestValue(), &order), S_OK);
  EXPECT_EQ(order, 0);
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
  EXPECT_EQ(number->put_Hex(Dec("ff")), S_OK);
  EXPECT_EQ(DecOf(number.Get()), "255");
  EXPECT_EQ(number->put_Value(Dec("ff")), S_OK);
  EXPECT_EQ(DecOf(number.Get()), "0");
  EXPECT_EQ(number->put_Hex(Dec("0xABCdef")), S_OK);
  EXPECT_EQ(HexOf(number.Get()), "abcdef");
  EXPECT_EQ(number->put_Value(Dec("-12,345 ")), S_OK);
  EXPECT_EQ(DecOf(number.Get()), "12345");
  EXPECT_EQ(number->put_Binary(BytesValue({0, 1, 2})), S_OK);
  EXPECT_EQ(HexOf(number.Get()), "102");
  EXPECT_EQ(number->put_Binary(Dec("16")), S_OK);
  EXPECT_EQ(HexOf(number.Get()), "10");
  EXPECT_EQ(number->put_Hex(BytesValue({0x12, 0x34})), S_OK);
  EXPECT_EQ(HexOf(number.Get()), "1234");
  EXPECT_EQ(number->put_Hex(NumberValue(16)), S_OK);
  EXPECT_EQ(HexOf(number.Get()), "10");
  EXPECT_EQ(number->put_Value(TestValue(VT_NULL)), S_OK);
  EXPECT_EQ(HexOf(number.Get()), "0");
  const OwnedBstr text(SysAllocString(OLESTR("A\u20AC")));
  EXPECT_EQ(number->put_Text(-1, text.Get()), S_OK);
  EXPECT_EQ(HexOf(number.Get()), "4120ac");
  EXPECT_EQ(number->put_Text(-2, text.Get()), S_OK);
  EXPECT_EQ(HexOf(number.Get()), "4100ac20");
  OwnedBstr back;
  EXPECT_EQ(number->get_Text(-9, back.Put()), S_OK);
  EXPECT_EQ(Text(back.Get()), OLESTR("A\u20AC"));
  EXPECT_EQ(number->put_Text(65001, text.Get()), S_OK);
  EXPECT_EQ(HexOf(number.Get()), "41e282ac");
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
    Number result;
    ASSERT_EQ((a.Get()->*one.member)(Dec(one.b), result.Put()), S_OK);
    EXPECT_EQ(DecOf(result.Get()), one.result) << one.a << " " << one.b;
    EXPECT_EQ(DecOf(a.Get()), one.a);
    EXPECT_NE(result.Get(), a.Get());
  }
}

TEST_F(BigNumberTest, OperandsMayHaveAnyForm) {
  EXPECT_EQ(number->put_Value(Dec("255")), S_OK);
  Number sum;
  ASSERT_EQ(number->Add(BytesValue({1, 0}), sum.Put()), S_OK);
  EXPECT_EQ(DecOf(sum.Get()), "511");
  ASSERT_EQ(number->Add(NumberValue(45), sum.Put()), S_OK);
  EXPECT_EQ(DecOf(sum.Get()), "300");
  ASSERT_EQ(number->Add(LeftOut(), sum.Put()), S_OK);
  EXPECT_EQ(DecOf(sum.Get()), "255");
}

TEST_F(BigNumberTest, NumbersAreOperandsOfOthers) {
  const Number a = Of("100");
  const Number b = Of("23");
  Number sum;
  ASSERT_EQ(a->Add(ObjectValue(b.Get()), sum.Put()), S_OK);
  EXPECT_EQ(DecOf(sum.Get()), "123");
  ASSERT_EQ(a->Mul(ObjectValue(a.Get()), sum.Put()), S_OK);
  EXPECT_EQ(DecOf(sum.Get()), "10000");
  EXPECT_EQ(a->Inc(ObjectValue(a.Get())), S_OK);
  EXPECT_EQ(DecOf(a.Get()), "200");
  EXPECT_EQ(a->put_Value(ObjectValue(b.Get())), S_OK);
  EXPECT_EQ(DecOf(a.Get()), "23");
  // Its default member is decimal text, here read as hexadecimal.
  EXPECT_EQ(a->put_Hex(ObjectValue(b.Get())), S_OK);
  EXPECT_EQ(HexOf(a.Get()), "23");
  // Its text has no sign.
  const Number below = Difference("1", "2");
  ASSERT_EQ(b->Add(ObjectValue(below.Get()), sum.Put()), S_OK);
  EXPECT_EQ(DecOf(sum.Get()), "24");
}

// The text of zero cannot be read; as an operand the object is zero.
TEST_F(BigNumberTest, ANumberThatHoldsZeroIsAnOperand) {
  const Number zero = Create();
  // Negative zero is zero too.
  const Number flagged = Difference("1", "2");
  ASSERT_EQ(flagged->put_Value(NumberValue(0)), S_OK);
  FakeObject around(ObjectValue(zero.Get()));
  const TestValue values[] = {ObjectValue(zero.Get()), UnknownValue(zero.Get()),
                              ObjectValue(flagged.Get()), ObjectValue(&around)};
  for (const TestValue& value : values) {
    const Number a = Of("12");
    Number result;
    struct {
      Binary member;
      const char* result;
    } const kResults[] = {{&IPexBigNumber::Add, "12"},
                          {&IPexBigNumber::Sub, "12"},
                          {&IPexBigNumber::Mul, "0"},
                          {&IPexBigNumber::GCD, "12"},
                          {&IPexBigNumber::NewNumber, "0"}};
    for (const auto& row : kResults) {
      ASSERT_EQ((a.Get()->*row.member)(value, result.Put()), S_OK);
      EXPECT_EQ(DecOf(result.Get()), row.result);
    }
    for (const Binary member : {&IPexBigNumber::Div, &IPexBigNumber::Mod, &IPexBigNumber::ModInv}) {
      EXPECT_EQ((a.Get()->*member)(value, result.Put()), DISP_E_DIVBYZERO);
      EXPECT_FALSE(result);
    }
    ASSERT_EQ(a->ModExp(value, NumberValue(7), result.Put()), S_OK);
    EXPECT_EQ(DecOf(result.Get()), "1");
    EXPECT_EQ(a->ModExp(NumberValue(7), value, result.Put()), DISP_E_DIVBYZERO);
    LONG order = 7;
    EXPECT_EQ(a->Cmp(value, &order), S_OK);
    EXPECT_EQ(order, 1);
    EXPECT_EQ(a->Inc(value), S_OK);
    EXPECT_EQ(DecOf(a.Get()), "12");
    EXPECT_EQ(a->Dec(value), S_OK);
    EXPECT_EQ(DecOf(a.Get()), "12");
    for (const auto put :
         {&IPexBigNumber::put_Value, &IPexBigNumber::put_Hex, &IPexBigNumber::put_Binary}) {
      ASSERT_EQ(a->put_Value(NumberValue(5)), S_OK);
      EXPECT_EQ((a.Get()->*put)(value), S_OK);
      EXPECT_EQ(HexOf(a.Get()), "0");
    }
  }
  // One object as both operands.
  Number twice;
  ASSERT_EQ(zero->Add(ObjectValue(zero.Get()), twice.Put()), S_OK);
  EXPECT_EQ(HexOf(twice.Get()), "0");
}

// An object whose value cannot be read for lack of memory is not zero.
TEST_F(BigNumberTest, ANumberWhoseTextMemoryIsShortForIsNotZero) {
  const Number a = Of("100");
  const Number b = Of("23");
  const TestValue operand = ObjectValue(b.Get());
  int failures = 0;
  for (LONG allowed = 0;; ++allowed) {
    Number sum;
    MiroltaFailAllocationAfter(allowed);
    const HRESULT status = a->Add(operand, sum.Put());
    const bool has_failed = MiroltaAllocationHasFailed() != 0;
    MiroltaFailAllocationAfter(-1);
    if (SUCCEEDED(status)) {
      EXPECT_EQ(DecOf(sum.Get()), "123");
      if (!has_failed) break;
    }
    ++failures;
  }
  EXPECT_GE(failures, 1);
}

TEST_F(BigNumberTest, OtherObjectsWithoutAReadableValueFailWithItsStatus) {
  FakeObject failing(NumberValue(1));
  Number result;
  for (const HRESULT status : {E_OUTOFMEMORY, DISP_E_EXCEPTION, E_ACCESSDENIED}) {
    failing.status = status;
    EXPECT_EQ(number->Add(ObjectValue(&failing), result.Put()), status);
    EXPECT_EQ(number->put_Value(ObjectValue(&failing)), status);
    EXPECT_EQ(number->NewNumber(ObjectValue(&failing), result.Put()), E_OUTOFMEMORY);
  }
  // An object of the module that is no number and has no default member.
  const auto rsa = module.Create<IDispatch>(CLSID_RSACrypt, IID_IDispatch);
  EXPECT_EQ(number->Add(ObjectValue(rsa.Get()), result.Put()), DISP_E_MEMBERNOTFOUND);
}

TEST_F(BigNumberTest, OperandsThatDoNotConvertLeaveNumberAndResult) {
  EXPECT_EQ(number->put_Value(Dec("9")), S_OK);
  LONG value = 5;
  struct Bad {
    TestValue value;
    HRESULT status;
  };
  std::vector<Bad> all;
  for (const VARTYPE type : {VT_BOOL, VT_DATE, VT_CY, VT_I8, VT_UI8, VT_INT, VT_UINT, VT_DECIMAL}) {
    all.push_back({TestValue(static_cast<VARTYPE>(type)), DISP_E_TYPEMISMATCH});
  }
  TestValue error(VT_ERROR);
  error->scode = E_FAIL;
  all.push_back({std::move(error), DISP_E_TYPEMISMATCH});
  all.push_back({ArrayValue(VT_I2, 2, {}), DISP_E_TYPEMISMATCH});
  TestValue reference;
  *&reference = ReferenceTo(VT_I4, &value);
  all.push_back({std::move(reference), DISP_E_TYPEMISMATCH});
  all.push_back({NumberValue(-1), DISP_E_OVERFLOW});
  all.push_back({ObjectValue(nullptr), E_FAIL});
  for (const Bad& bad : all) {
    for (const NamedBinary& binary : kBinaries) {
      IPexBigNumber* result = number.Get();
      EXPECT_EQ((number.Get()->*binary.member)(bad.value, &result), bad.status) << binary.name;
      EXPECT_EQ(result, nullptr);
    }
    IPexBigNumber* result = number.Get();
    EXPECT_EQ(number->ModExp(bad.value, NumberValue(3), &result), bad.status);
    EXPECT_EQ(result, nullptr);
    result = number.Get();
    EXPECT_EQ(number->ModExp(NumberValue(3), bad.value, &result), bad.status);
    EXPECT_EQ(result, nullptr);
    result = number.Get();
    EXPECT_EQ(number->NewNumber(bad.value, &result), E_OUTOFMEMORY);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(number->Inc(bad.value), bad.status);
    EXPECT_EQ(number->Dec(bad.value), bad.status);
    LONG order = 7;
    EXPECT_EQ(number->Cmp(bad.value, &order), bad.status);
    EXPECT_EQ(order, 7);
    EXPECT_EQ(number->put_Value(bad.value), bad.status);
    EXPECT_EQ(number->put_Hex(bad.value), bad.status);
    EXPECT_EQ(number->put_Binary(bad.value), bad.status);
    EXPECT_EQ(DecOf(number.Get()), "9");
  }
}

TEST_F(BigNumberTest, TheExponentIsConvertedBeforeTheModulus) {
  IPexBigNumber* result = nullptr;
  EXPECT_EQ(number->ModExp(NumberValue(-1), TestValue(VT_BOOL), &result), DISP_E_OVERFLOW);
  EXPECT_EQ(number->ModExp(TestValue(VT_BOOL), NumberValue(-1), &result), DISP_E_TYPEMISMATCH);
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
  EXPECT_EQ(DecOf(a.Get()), "2");
  LONG order = 7;
  EXPECT_EQ(a->Cmp(NumberValue(0), &order), S_OK);
  EXPECT_EQ(order, -1);
  EXPECT_EQ(a->Cmp(NumberValue(1), &order), S_OK);
  EXPECT_EQ(order, -1);
  Number sum;
  ASSERT_EQ(a->Add(NumberValue(5), sum.Put()), S_OK);
  EXPECT_EQ(DecOf(sum.Get()), "3");
  EXPECT_EQ(sum->Cmp(NumberValue(0), &order), S_OK);
  EXPECT_EQ(order, 1);
  Number product;
  ASSERT_EQ(a->Mul(NumberValue(7), product.Put()), S_OK);
  EXPECT_EQ(DecOf(product.Get()), "14");
  EXPECT_EQ(product->Cmp(NumberValue(0), &order), S_OK);
  EXPECT_EQ(order, -1);
  Number rest;
  ASSERT_EQ(product->Mod(NumberValue(4), rest.Put()), S_OK);
  EXPECT_EQ(DecOf(rest.Get()), "2");
  EXPECT_EQ(rest->Cmp(NumberValue(0), &order), S_OK);
  EXPECT_EQ(order, -1);
  ASSERT_EQ(product->Div(NumberValue(4), rest.Put()), S_OK);
  EXPECT_EQ(DecOf(rest.Get()), "3");
  EXPECT_EQ(rest->Cmp(NumberValue(0), &order), S_OK);
  EXPECT_EQ(order, -1);
}

TEST_F(BigNumberTest, LoadsKeepTheSignFlag) {
  const Number a = Difference("3", "5");
  LONG order = 7;
  const auto is_below_zero = [&] {
    EXPECT_EQ(a->Cmp(NumberValue(0), &order), S_OK);
    return order == -1;
  };
  EXPECT_EQ(a->put_Value(Dec("100")), S_OK);
  EXPECT_TRUE(is_below_zero());
  EXPECT_EQ(a->put_Hex(Dec("ff")), S_OK);
  EXPECT_TRUE(is_below_zero());
  EXPECT_EQ(a->put_Binary(BytesValue({1})), S_OK);
  EXPECT_TRUE(is_below_zero());
  const OwnedBstr text(SysAllocString(OLESTR("a")));
  EXPECT_EQ(a->put_Text(0, text.Get()), S_OK);
  EXPECT_TRUE(is_below_zero());
  EXPECT_EQ(a->Random(4, 1, 1), S_OK);
  EXPECT_TRUE(is_below_zero());
  // Zero with the sign flag is not negative, and keeps the flag.
  EXPECT_EQ(a->put_Value(NumberValue(0)), S_OK);
  EXPECT_FALSE(is_below_zero());
  EXPECT_EQ(order, 0);
  EXPECT_EQ(a->put_Value(NumberValue(6)), S_OK);
  EXPECT_TRUE(is_below_zero());
}

// An operand has no sign, even if it comes from a number that has one.
TEST_F(BigNumberTest, CmpComparesWithNonNegativeOperands) {
  struct Case {
    const char* a;
    const char* b;
    LONG order;
  };
  for (const Case& one : {Case{"5", "3", 1}, Case{"3", "5", -1}, Case{"5", "5", 0},
                          Case{"4294967296", "4294967295", 1}}) {
    LONG order = 7;
    EXPECT_EQ(Of(one.a)->Cmp(Dec(one.b), &order), S_OK);
    EXPECT_EQ(order, one.order);
  }
  const Number minus_five = Difference("0", "5");
  const Number minus_three = Difference("0", "3");
  LONG order = 7;
  EXPECT_EQ(minus_five->Cmp(ObjectValue(minus_three.Get()), &order), S_OK);
  EXPECT_EQ(order, -1);
  EXPECT_EQ(minus_three->Cmp(ObjectValue(minus_five.Get()), &order), S_OK);
  EXPECT_EQ(order, -1);
  EXPECT_EQ(minus_three->Cmp(ObjectValue(minus_three.Get()), &order), S_OK);
  EXPECT_EQ(order, -1);
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
  Number copy;
  ASSERT_EQ(number->Add(NumberValue(0), copy.Put()), S_OK);
  Number other;
  ASSERT_EQ(copy->Sub(NumberValue(0), other.Put()), S_OK);
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
  const auto fails = [&](const std::function<HRESULT()>& call) {
    MiroltaFailAllocationAfter(0);
    EXPECT_EQ(call(), E_OUTOFMEMORY);
    EXPECT_TRUE(MiroltaAllocationHasFailed());
    MiroltaFailAllocationAfter(-1);
  };
  VARIANT value;
  fails([&] { return number->get_Value(&value); });
  EXPECT_EQ(V_VT(&value), VT_EMPTY);
  fails([&] { return number->get_Hex(&value); });
  EXPECT_EQ(V_VT(&value), VT_EMPTY);
  fails([&] { return number->get_Binary(&value); });
  EXPECT_EQ(V_VT(&value), VT_EMPTY);
  BSTR text = nullptr;
  fails([&] { return number->get_Text(0, &text); });
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(DecOf(number.Get()), "9");
}

std::vector<CRITICAL_SECTION*> entered;
constexpr MiroltaLockProbe kProbe = {[](CRITICAL_SECTION* section) { entered.push_back(section); },
                                     [](CRITICAL_SECTION*) {}};

TEST_F(BigNumberTest, NoMemberTakesTheLock) {
  for (const CLSID& id : {CLSID_PexBigNumber, CLSID_PexBigNumberFree}) {
    const Number one = module.Create<IPexBigNumber>(id, IID_IPexBigNumber);
    const OwnedBstr text(SysAllocString(OLESTR("abc")));
    const TestValue operand = Dec("123456789123456789");
    const TestValue bad(VT_BOOL);
    entered.clear();
    MiroltaSetLockProbe(&kProbe);
    EXPECT_EQ(one->put_Hex(operand), S_OK);
    EXPECT_EQ(one->put_Binary(operand), S_OK);
    EXPECT_EQ(one->put_Text(0, text.Get()), S_OK);
    EXPECT_EQ(one->put_Value(operand), S_OK);
    EXPECT_EQ(one->put_Value(bad), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(one->Random(2, 0, 0), S_OK);
    EXPECT_EQ(one->put_Value(operand), S_OK);
    EXPECT_EQ(one->Inc(operand), S_OK);
    EXPECT_EQ(one->Dec(operand), S_OK);
    {
      TestValue value;
      EXPECT_EQ(one->get_Value(&value), S_OK);
    }
    {
      TestValue value;
      EXPECT_EQ(one->get_Hex(&value), S_OK);
    }
    {
      TestValue value;
      EXPECT_EQ(one->get_Binary(&value), S_OK);
    }
    OwnedBstr out;
    EXPECT_EQ(one->get_Text(-1, out.Put()), S_OK);
    LONG order = 7;
    EXPECT_EQ(one->Cmp(operand, &order), S_OK);
    for (const NamedBinary& binary : kBinaries) {
      Number result;
      EXPECT_EQ((one.Get()->*binary.member)(operand, result.Put()), S_OK) << binary.name;
    }
    Number result;
    EXPECT_EQ(one->ModExp(operand, operand, result.Put()), S_OK);
    EXPECT_EQ(one->NewNumber(operand, result.Put()), S_OK);
    MiroltaSetLockProbe(nullptr);
    EXPECT_TRUE(entered.empty());
  }
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
