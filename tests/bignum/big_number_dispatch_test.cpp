// PexBigNumber late-bound, as scripts use it.
#include <initializer_list>
#include <vector>

#include "big_number_fixture.h"

namespace mirolta::test {
namespace {

class BigNumberDispatchTest : public BigNumberTest {
 protected:
  DISPID Id(const OLECHAR* name) {
    LPOLESTR text = const_cast<LPOLESTR>(name);
    DISPID id = -99;
    EXPECT_EQ(number->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, &id), S_OK);
    return id;
  }
  HRESULT Call(DISPID id, WORD flags, std::initializer_list<VARIANT> arguments = {}) {
    std::vector<VARIANT> reversed(std::rbegin(arguments), std::rend(arguments));
    DISPID named = DISPID_PROPERTYPUT;
    const bool puts = flags == DISPATCH_PROPERTYPUT;
    DISPPARAMS params = {reversed.data(), puts ? &named : nullptr,
                         static_cast<UINT>(reversed.size()), puts ? 1u : 0u};
    VariantClear(&result);
    EXCEPINFO exception = {};
    const HRESULT status = number->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params,
                                          &result, &exception, nullptr);
    if (status != DISP_E_EXCEPTION) return status;
    // A member's own failure; none of this class has a text.
    EXPECT_EQ(exception.bstrDescription, nullptr);
    EXPECT_EQ(exception.bstrSource, nullptr);
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrSource);
    return exception.scode;
  }
  HRESULT Method(const OLECHAR* name, std::initializer_list<VARIANT> arguments = {}) {
    return Call(Id(name), DISPATCH_METHOD, arguments);
  }
  HRESULT Get(const OLECHAR* name, std::initializer_list<VARIANT> arguments = {}) {
    return Call(Id(name), DISPATCH_PROPERTYGET, arguments);
  }
  HRESULT Put(const OLECHAR* name, std::initializer_list<VARIANT> arguments) {
    return Call(Id(name), DISPATCH_PROPERTYPUT, arguments);
  }
  Text ResultText() {
    const VARIANT& value = result;
    if (V_VT(&value) != VT_BSTR) return OLESTR("(no text)");
    return Text(value.bstrVal, SysStringLen(value.bstrVal));
  }
  // The number of the object that the last call returned.
  std::string ResultNumber() {
    const VARIANT& value = result;
    if (V_VT(&value) != VT_DISPATCH || value.pdispVal == nullptr) return "(no object)";
    Number made;
    EXPECT_EQ(made.Query(value.pdispVal, IID_IPexBigNumber), S_OK);
    return DecOf(made.Get());
  }

  TestValue result;
};

TEST_F(BigNumberDispatchTest, Ids) {
  struct Named {
    const OLECHAR* name;
    DISPID id;
  };
  constexpr Named kNames[] = {
      {OLESTR("Value"), 0},      {OLESTR("Hex"), 2},     {OLESTR("Text"), 3},
      {OLESTR("Binary"), 4},     {OLESTR("Add"), 5},     {OLESTR("Sub"), 6},
      {OLESTR("Mul"), 7},        {OLESTR("Div"), 8},     {OLESTR("Mod"), 9},
      {OLESTR("Inc"), 10},       {OLESTR("Dec"), 11},    {OLESTR("Cmp"), 12},
      {OLESTR("NewNumber"), 13}, {OLESTR("Random"), 14}, {OLESTR("GCD"), 15},
      {OLESTR("ModExp"), 16},    {OLESTR("ModInv"), 17},
  };
  for (const Named& named : kNames) EXPECT_EQ(Id(named.name), named.id);
}

TEST_F(BigNumberDispatchTest, ValueIsTheDefaultMember) {
  EXPECT_EQ(Call(DISPID_VALUE, DISPATCH_PROPERTYPUT, {Dec("42")}), S_OK);
  EXPECT_EQ(Call(DISPID_VALUE, DISPATCH_PROPERTYGET), S_OK);
  EXPECT_EQ(ResultText(), OLESTR("42"));
  EXPECT_EQ(Call(DISPID_VALUE, DISPATCH_PROPERTYPUT, {NumberValue(0)}), S_OK);
  EXPECT_EQ(Call(DISPID_VALUE, DISPATCH_PROPERTYGET), kNoMemory);
}

TEST_F(BigNumberDispatchTest, ArgumentsLeftOut) {
  EXPECT_EQ(Method(OLESTR("Inc")), S_OK);
  EXPECT_EQ(Method(OLESTR("Inc")), S_OK);
  EXPECT_EQ(Method(OLESTR("Inc"), {LeftOut()}), S_OK);
  EXPECT_EQ(Method(OLESTR("Dec")), S_OK);
  EXPECT_EQ(DecOf(number.Get()), "2");
  EXPECT_EQ(Method(OLESTR("NewNumber")), S_OK);
  EXPECT_EQ(ResultNumber(), "0");
  EXPECT_EQ(Method(OLESTR("NewNumber"), {Dec("8")}), S_OK);
  EXPECT_EQ(ResultNumber(), "8");
  EXPECT_EQ(Method(OLESTR("NewNumber"), {TestValue(VT_BOOL)}), kNoMemory);
  EXPECT_EQ(Method(OLESTR("Random"), {NumberValue(2)}), S_OK);
  EXPECT_LE(HexOf(number.Get()).size(), 4u);
  EXPECT_EQ(Method(OLESTR("Random"), {NumberValue(0)}), E_INVALIDARG);
  EXPECT_EQ(Method(OLESTR("Random")), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(Method(OLESTR("Add")), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(Method(OLESTR("ModExp"), {NumberValue(1)}), DISP_E_BADPARAMCOUNT);
}

TEST_F(BigNumberDispatchTest, TextHasACharacterSetOrTheUsualOne) {
  EXPECT_EQ(Put(OLESTR("Text"), {TextValue(OLESTR("ab"))}), S_OK);
  EXPECT_EQ(HexOf(number.Get()), "6162");
  EXPECT_EQ(Put(OLESTR("Text"), {NumberValue(-2), TextValue(OLESTR("ab"))}), S_OK);
  EXPECT_EQ(HexOf(number.Get()), "61006200");
  EXPECT_EQ(Get(OLESTR("Text"), {NumberValue(-2)}), S_OK);
  EXPECT_EQ(ResultText(), OLESTR("ab"));
  EXPECT_EQ(Get(OLESTR("Text"), {NumberValue(-1)}), S_OK);
  EXPECT_EQ(ResultText(), OLESTR("\u6100\u6200"));
  EXPECT_EQ(Put(OLESTR("Hex"), {Dec("6364")}), S_OK);
  EXPECT_EQ(Get(OLESTR("Text")), S_OK);
  EXPECT_EQ(ResultText(), OLESTR("cd"));
}

TEST_F(BigNumberDispatchTest, OperationsReturnObjects) {
  EXPECT_EQ(Put(OLESTR("Value"), {Dec("100")}), S_OK);
  EXPECT_EQ(Method(OLESTR("Add"), {ObjectValue(number.Get())}), S_OK);
  EXPECT_EQ(ResultNumber(), "200");
  EXPECT_EQ(Method(OLESTR("ModExp"), {NumberValue(2), NumberValue(97)}), S_OK);
  EXPECT_EQ(ResultNumber(), "9");
  EXPECT_EQ(Method(OLESTR("ModInv"), {NumberValue(97)}), S_OK);
  EXPECT_EQ(ResultNumber(), "65");
  EXPECT_EQ(Method(OLESTR("Cmp"), {NumberValue(101)}), S_OK);
  const VARIANT& order = result;
  EXPECT_EQ(V_VT(&order), VT_I4);
  EXPECT_EQ(order.lVal, -1);
}

TEST_F(BigNumberDispatchTest, DivisionByZeroIsReportedAsIs) {
  EXPECT_EQ(Put(OLESTR("Value"), {Dec("100")}), S_OK);
  for (const OLECHAR* const name : {OLESTR("Div"), OLESTR("Mod"), OLESTR("ModInv")}) {
    EXPECT_EQ(Method(name, {NumberValue(0)}), kDivisionByZero);
  }
  EXPECT_EQ(Method(OLESTR("ModExp"), {NumberValue(2), NumberValue(0)}), kDivisionByZero);
  EXPECT_EQ(DecOf(number.Get()), "100");
}

}  // namespace
}  // namespace mirolta::test
