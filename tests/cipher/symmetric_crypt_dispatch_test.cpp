// SymmetricCryptObject late-bound, as a script host calls it: names, optional arguments, errors.
#include <initializer_list>
#include <vector>

#include "symmetric_crypt_fixture.h"

namespace mirolta::test {
namespace {

class SymmetricCryptDispatchTest : public SymmetricCryptTest {
 protected:
  void TearDown() override {
    ForgetException();
    SymmetricCryptTest::TearDown();
  }
  DISPID IdOf(const OLECHAR* name) {
    LPOLESTR names = const_cast<LPOLESTR>(name);
    DISPID id = DISPID_UNKNOWN;
    crypt->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id);
    return id;
  }
  HRESULT Call(const OLECHAR* name, WORD flags, std::initializer_list<VARIANT> arguments,
               std::vector<DISPID> names = {}) {
    std::vector<VARIANT> reversed(std::rbegin(arguments), std::rend(arguments));
    DISPPARAMS params = {reversed.data(), names.data(), static_cast<UINT>(reversed.size()),
                         static_cast<UINT>(names.size())};
    ForgetException();
    VariantClear(&result);
    return crypt->Invoke(IdOf(name), IID_NULL, LOCALE_USER_DEFAULT, flags, &params, &result,
                         &exception, nullptr);
  }
  HRESULT Method(const OLECHAR* name, std::initializer_list<VARIANT> arguments = {}) {
    return Call(name, DISPATCH_METHOD, arguments);
  }
  HRESULT Get(const OLECHAR* name) { return Call(name, DISPATCH_PROPERTYGET, {}); }
  HRESULT Put(const OLECHAR* name, const VARIANT& value) {
    return Call(name, DISPATCH_PROPERTYPUT, {value}, {DISPID_PROPERTYPUT});
  }
  void ForgetException() {
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrHelpFile);
    exception = {};
  }

  TestValue result;
  EXCEPINFO exception = {};
};

TEST_F(SymmetricCryptDispatchTest, MembersHaveTheirIds) {
  struct Named {
    const OLECHAR* name;
    DISPID id;
  };
  for (const Named& named :
       {Named{OLESTR("Key"), 1}, Named{OLESTR("BlockSize"), 2}, Named{OLESTR("codePage"), 3},
        Named{OLESTR("Encrypt"), 4}, Named{OLESTR("Decrypt"), 5}, Named{OLESTR("Reset"), 6},
        Named{OLESTR("ResetKey"), 7}, Named{OLESTR("Init"), 8}, Named{OLESTR("PadType"), 9},
        Named{OLESTR("CODEPAGE"), 3}, Named{OLESTR("Value"), DISPID_UNKNOWN}}) {
    EXPECT_EQ(IdOf(named.name), named.id);
  }
}

TEST_F(SymmetricCryptDispatchTest, ACallWithoutTheFlagIsTheLast) {
  ASSERT_EQ(Method(OLESTR("Init"), {TextValue(OLESTR("AES"))}), S_OK);
  ASSERT_EQ(Put(OLESTR("Key"), BytesValue(BytesOfHex(kAesKey))), S_OK);
  const TestValue text = TextValue(OLESTR("abc"));
  ASSERT_EQ(Method(OLESTR("Encrypt"), {text}), S_OK);
  const Bytes cipher = BytesOfArray(result);
  EXPECT_EQ(cipher.size(), 16u);
  TestValue missing(VT_ERROR);
  missing->scode = DISP_E_PARAMNOTFOUND;
  ASSERT_EQ(Method(OLESTR("Encrypt"), {text, missing}), S_OK);
  EXPECT_EQ(BytesOfArray(result), cipher);
  TestValue no(VT_BOOL);
  ASSERT_EQ(Method(OLESTR("Encrypt"), {text, no}), S_OK);
  EXPECT_EQ(BytesOfArray(result), Bytes());
  EXPECT_EQ(V_VT(&result.operator const VARIANT&()), 0x2011);
  ASSERT_EQ(Method(OLESTR("Reset")), S_OK);
  ASSERT_EQ(Method(OLESTR("Reset"), {NumberValue(12345)}), S_OK);
  ASSERT_EQ(Method(OLESTR("Decrypt"), {BytesValue(cipher)}), S_OK);
  EXPECT_EQ(BytesOfArray(result).size(), 16u);
  ASSERT_EQ(Method(OLESTR("ResetKey")), S_OK);
  ASSERT_EQ(Get(OLESTR("Key")), S_OK);
  EXPECT_EQ(V_VT(&result.operator const VARIANT&()), VT_EMPTY);
}

TEST_F(SymmetricCryptDispatchTest, PropertiesAreNumbers) {
  ASSERT_EQ(Method(OLESTR("Init"), {TextValue(OLESTR("DES"))}), S_OK);
  ASSERT_EQ(Put(OLESTR("PadType"), NumberValue(-1)), S_OK);
  ASSERT_EQ(Get(OLESTR("PadType")), S_OK);
  EXPECT_EQ(result->lVal, -1);
  ASSERT_EQ(Put(OLESTR("codePage"), TextValue(OLESTR("65001"))), S_OK);
  ASSERT_EQ(Get(OLESTR("codePage")), S_OK);
  EXPECT_EQ(result->lVal, 65001);
  ASSERT_EQ(Get(OLESTR("BlockSize")), S_OK);
  EXPECT_EQ(result->lVal, 8);
  EXPECT_EQ(Put(OLESTR("BlockSize"), NumberValue(16)), DISP_E_MEMBERNOTFOUND);
}

TEST_F(SymmetricCryptDispatchTest, AReportedFailureIsAnException) {
  SetClassDescription(CLSID_SymmetricCryptObject, OLESTR("A description"));
  EXPECT_EQ(Get(OLESTR("Key")), DISP_E_EXCEPTION);
  EXPECT_EQ(exception.scode, kNotInitialized);
  ASSERT_NE(exception.bstrDescription, nullptr);
  EXPECT_EQ(Text(exception.bstrDescription), OLESTR("Not initialized."));
  ASSERT_NE(exception.bstrSource, nullptr);
  EXPECT_EQ(Text(exception.bstrSource), OLESTR("A description"));
}

}  // namespace
}  // namespace mirolta::test
