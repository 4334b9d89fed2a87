// What the members of PexBigNumber take as operands: values of every form, numbers, other objects.
#include <vector>

#include "big_number_fixture.h"
#include "fake_object.h"

namespace mirolta::test {
namespace {

TEST_F(BigNumberTest, OperandsMayHaveAnyForm) {
  const Number a = Of("255");
  EXPECT_EQ(DecOf(Apply(a, &IPexBigNumber::Add, BytesValue({1, 0})).Get()), "511");
  EXPECT_EQ(DecOf(Apply(a, &IPexBigNumber::Add, NumberValue(45)).Get()), "300");
  EXPECT_EQ(DecOf(Apply(a, &IPexBigNumber::Add, LeftOut()).Get()), "255");
}

TEST_F(BigNumberTest, NumbersAreOperandsOfOthers) {
  const Number a = Of("100");
  const Number b = Of("23");
  EXPECT_EQ(DecOf(Apply(a, &IPexBigNumber::Add, ObjectValue(b.Get())).Get()), "123");
  EXPECT_EQ(DecOf(Apply(a, &IPexBigNumber::Mul, ObjectValue(a.Get())).Get()), "10000");
  EXPECT_EQ(a->Inc(ObjectValue(a.Get())), S_OK);
  EXPECT_EQ(DecOf(a.Get()), "200");
  EXPECT_EQ(a->put_Value(ObjectValue(b.Get())), S_OK);
  EXPECT_EQ(DecOf(a.Get()), "23");
  // Its default member is decimal text, here read as hexadecimal.
  EXPECT_EQ(a->put_Hex(ObjectValue(b.Get())), S_OK);
  EXPECT_EQ(HexOf(a.Get()), "23");
  // Its text has no sign.
  const Number below = Difference("1", "2");
  EXPECT_EQ(DecOf(Apply(b, &IPexBigNumber::Add, ObjectValue(below.Get())).Get()), "24");
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
    struct {
      Binary member;
      const char* result;
    } const kResults[] = {{&IPexBigNumber::Add, "12"},
                          {&IPexBigNumber::Sub, "12"},
                          {&IPexBigNumber::Mul, "0"},
                          {&IPexBigNumber::GCD, "12"},
                          {&IPexBigNumber::NewNumber, "0"}};
    for (const auto& row : kResults) {
      EXPECT_EQ(DecOf(Apply(a, row.member, value).Get()), row.result);
    }
    Number result;
    for (const Binary member : {&IPexBigNumber::Div, &IPexBigNumber::Mod, &IPexBigNumber::ModInv}) {
      EXPECT_EQ((a.Get()->*member)(value, result.Put()), DISP_E_DIVBYZERO);
      EXPECT_FALSE(result);
    }
    ASSERT_EQ(a->ModExp(value, NumberValue(7), result.Put()), S_OK);
    EXPECT_EQ(DecOf(result.Get()), "1");
    EXPECT_EQ(a->ModExp(NumberValue(7), value, result.Put()), DISP_E_DIVBYZERO);
    EXPECT_EQ(Order(a, value), 1);
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
  EXPECT_EQ(HexOf(Apply(zero, &IPexBigNumber::Add, ObjectValue(zero.Get())).Get()), "0");
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
    // A failed operation gives no number.
    const auto expect_none = [&](HRESULT expected, const char* name, const auto& call) {
      IPexBigNumber* result = number.Get();
      EXPECT_EQ(call(&result), expected) << name;
      EXPECT_EQ(result, nullptr) << name;
    };
    for (const NamedBinary& binary : kBinaries) {
      expect_none(bad.status, binary.name, [&](IPexBigNumber** result) {
        return (number.Get()->*binary.member)(bad.value, result);
      });
    }
    expect_none(bad.status, "ModExp, exponent", [&](IPexBigNumber** result) {
      return number->ModExp(bad.value, NumberValue(3), result);
    });
    expect_none(bad.status, "ModExp, modulus", [&](IPexBigNumber** result) {
      return number->ModExp(NumberValue(3), bad.value, result);
    });
    expect_none(E_OUTOFMEMORY, "NewNumber",
                [&](IPexBigNumber** result) { return number->NewNumber(bad.value, result); });
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

// An operand has no sign, even if it comes from a number that has one.
TEST_F(BigNumberTest, CmpComparesWithNonNegativeOperands) {
  EXPECT_EQ(Order(Of("5"), Dec("3")), 1);
  EXPECT_EQ(Order(Of("3"), Dec("5")), -1);
  EXPECT_EQ(Order(Of("5"), Dec("5")), 0);
  EXPECT_EQ(Order(Of("4294967296"), Dec("4294967295")), 1);
  const Number minus_five = Difference("0", "5");
  const Number minus_three = Difference("0", "3");
  EXPECT_EQ(Order(minus_five, ObjectValue(minus_three.Get())), -1);
  EXPECT_EQ(Order(minus_three, ObjectValue(minus_five.Get())), -1);
  EXPECT_EQ(Order(minus_three, ObjectValue(minus_three.Get())), -1);
}

}  // namespace
}  // namespace mirolta::test
