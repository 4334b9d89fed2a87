// A PexBigNumber of the loaded module, and its members in comparable form.
#pragma once

#include <string>
#include <utility>

#include "class_description.h"
#include "loaded_module.h"
#include "portable/test_hooks.h"

namespace mirolta::test {

using Number = OwnedReference<IPexBigNumber>;

inline TestValue Dec(const std::string& digits) {
  TestValue value(VT_BSTR);
  const Text wide(digits.begin(), digits.end());
  value->bstrVal = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
  return value;
}

inline TestValue LeftOut() {
  TestValue value(VT_ERROR);
  value->scode = DISP_E_PARAMNOTFOUND;
  return value;
}

// The hexadecimal text of a number; "0" for zero, which has none.
inline std::string HexOf(IPexBigNumber* number) {
  TestValue value;
  const HRESULT status = number->get_Hex(&value);
  if (status == E_OUTOFMEMORY) {
    EXPECT_EQ(V_VT(&value), VT_EMPTY);
    TestValue bytes;
    EXPECT_EQ(number->get_Binary(&bytes), S_OK);
    EXPECT_TRUE(BytesOfArray(bytes).empty());
    return "0";
  }
  EXPECT_EQ(status, S_OK);
  if (FAILED(status)) return "failed";
  const BSTR text = value->bstrVal;
  return std::string(text, text + SysStringLen(text));
}

inline std::string DecOf(IPexBigNumber* number) {
  TestValue value;
  if (FAILED(number->get_Value(&value))) return "0";
  const BSTR text = value->bstrVal;
  return std::string(text, text + SysStringLen(text));
}

using Binary = HRESULT (STDMETHODCALLTYPE IPexBigNumber::*)(VARIANT, IPexBigNumber**);

struct NamedBinary {
  const char* name;
  Binary member;
};
inline constexpr NamedBinary kBinaries[] = {
    {"Add", &IPexBigNumber::Add},       {"Sub", &IPexBigNumber::Sub}, {"Mul", &IPexBigNumber::Mul},
    {"Div", &IPexBigNumber::Div},       {"Mod", &IPexBigNumber::Mod}, {"GCD", &IPexBigNumber::GCD},
    {"ModInv", &IPexBigNumber::ModInv},
};

class BigNumberTest : public ModuleTest {
 protected:
  void SetUp() override {
    ModuleTest::SetUp();
    number = Create();
    ASSERT_TRUE(number);
  }
  void TearDown() override {
    // Nothing that these members do describes an error.
    OwnedReference<IErrorInfo> info;
    EXPECT_EQ(GetErrorInfo(0, info.Put()), S_FALSE);
    number.Reset();
    ModuleTest::TearDown();
  }

  Number Create() const {
    return module.Create<IPexBigNumber>(CLSID_PexBigNumber, IID_IPexBigNumber);
  }
  Number Of(const std::string& digits) const {
    Number made = Create();
    EXPECT_EQ(made->put_Value(Dec(digits)), S_OK);
    return made;
  }
  // a - b of decimal digits, the only way to a negative number.
  Number Difference(const std::string& a, const std::string& b) const {
    return Apply(Of(a), &IPexBigNumber::Sub, Dec(b));
  }

  // The new number that an operation gives.
  static Number Apply(const Number& a, Binary member, const VARIANT& operand) {
    Number made;
    EXPECT_EQ((a.Get()->*member)(operand, made.Put()), S_OK);
    return made;
  }
  // Its order to an operand; 7 if they cannot be compared.
  static LONG Order(const Number& a, const VARIANT& operand) {
    LONG order = 7;
    EXPECT_EQ(a->Cmp(operand, &order), S_OK);
    return order;
  }
  // Decimal digits with the sign that comparisons tell.
  static std::string SignedDecOf(const Number& a) {
    const LONG order = Order(a, NumberValue(0));
    return (order < 0 ? "-" : order > 0 ? "+" : "") + DecOf(a.Get());
  }

  Number number;
};

}  // namespace mirolta::test
