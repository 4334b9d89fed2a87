// RSACrypt late-bound, as scripts use it.
#include <initializer_list>
#include <vector>

#include "class_description.h"
#include "loaded_module.h"

namespace mirolta::test {
namespace {

class RsaCryptDispatchTest : public ModuleTest {
 protected:
  void SetUp() override {
    ModuleTest::SetUp();
    ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
    SetClassDescription(CLSID_RSACrypt, OLESTR("Vardeko RSACrypt Class"));
    rsa = module.Create<IDispatch>(CLSID_RSACryptFree, IID_IDispatch);
    ASSERT_TRUE(rsa);
  }
  void TearDown() override {
    Forget();
    rsa.Reset();
    EXPECT_EQ(MiroltaRegistryInMemory(FALSE), ERROR_SUCCESS);
    ModuleTest::TearDown();
  }

  DISPID Id(const OLECHAR* name) {
    LPOLESTR text = const_cast<LPOLESTR>(name);
    DISPID id = -99;
    EXPECT_EQ(rsa->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, &id), S_OK);
    return id;
  }
  // The status of the call, of the member itself if it failed.
  HRESULT Call(const OLECHAR* name, WORD flags, std::initializer_list<VARIANT> arguments = {}) {
    std::vector<VARIANT> reversed(std::rbegin(arguments), std::rend(arguments));
    DISPID named = DISPID_PROPERTYPUT;
    const bool puts = flags == DISPATCH_PROPERTYPUT;
    DISPPARAMS params = {reversed.data(), puts ? &named : nullptr,
                         static_cast<UINT>(reversed.size()), puts ? 1u : 0u};
    VariantClear(&result);
    Forget();
    const HRESULT status = rsa->Invoke(Id(name), IID_NULL, LOCALE_USER_DEFAULT, flags, &params,
                                       &result, &exception, nullptr);
    return status == DISP_E_EXCEPTION ? exception.scode : status;
  }
  HRESULT Method(const OLECHAR* name, std::initializer_list<VARIANT> arguments = {}) {
    return Call(name, DISPATCH_METHOD, arguments);
  }
  HRESULT Get(const OLECHAR* name) { return Call(name, DISPATCH_PROPERTYGET); }
  HRESULT Put(const OLECHAR* name, const VARIANT& value) {
    return Call(name, DISPATCH_PROPERTYPUT, {value});
  }
  Bytes Result() { return BytesOfArray(result); }
  void Forget() {
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrHelpFile);
    exception = {};
  }

  OwnedReference<IDispatch> rsa;
  TestValue result;
  EXCEPINFO exception = {};
};

TEST_F(RsaCryptDispatchTest, Ids) {
  struct Named {
    const OLECHAR* name;
    DISPID id;
  };
  constexpr Named kNames[] = {
      {OLESTR("CreateKeys"), 1}, {OLESTR("CreateRandKeys"), 2}, {OLESTR("Modulus"), 3},
      {OLESTR("PublicExp"), 4},  {OLESTR("SecretExp"), 5},      {OLESTR("P"), 6},
      {OLESTR("Q"), 7},          {OLESTR("Encrypt"), 8},        {OLESTR("Decrypt"), 9},
      {OLESTR("DecryptPQ"), 10}, {OLESTR("Reset"), 11},         {OLESTR("BlockSize"), 12},
  };
  for (const Named& named : kNames) EXPECT_EQ(Id(named.name), named.id);
}

TEST_F(RsaCryptDispatchTest, SizesLeftOut) {
  // 32 bytes, not exact: a byte more.
  EXPECT_EQ(Method(OLESTR("CreateRandKeys")), S_OK);
  EXPECT_EQ(Get(OLESTR("Modulus")), S_OK);
  EXPECT_EQ(Result().size(), 33u);
  EXPECT_EQ(Method(OLESTR("CreateRandKeys"), {NumberValue(16)}), S_OK);
  EXPECT_EQ(Get(OLESTR("Modulus")), S_OK);
  EXPECT_EQ(Result().size(), 17u);
  TestValue yes(VT_BOOL);
  yes->boolVal = VARIANT_TRUE;
  EXPECT_EQ(Method(OLESTR("CreateRandKeys"), {NumberValue(16), yes}), S_OK);
  EXPECT_EQ(Get(OLESTR("Modulus")), S_OK);
  EXPECT_EQ(Result().size(), 16u);
  EXPECT_EQ(Get(OLESTR("BlockSize")), S_OK);
  const VARIANT& size = result;
  EXPECT_EQ(V_VT(&size), VT_I4);
  EXPECT_EQ(size.lVal, 15);
  EXPECT_EQ(Method(OLESTR("CreateRandKeys"), {NumberValue(0)}), E_INVALIDARG);
  EXPECT_EQ(exception.bstrDescription, nullptr);
  EXPECT_EQ(exception.bstrSource, nullptr);
}

TEST_F(RsaCryptDispatchTest, ErrorsCarryTheirTextAndTheClass) {
  EXPECT_EQ(Method(OLESTR("Encrypt"), {NumberValue(5)}), static_cast<HRESULT>(0x80042779));
  ASSERT_NE(exception.bstrDescription, nullptr);
  EXPECT_EQ(Text(exception.bstrDescription), OLESTR("Key not set."));
  ASSERT_NE(exception.bstrSource, nullptr);
  EXPECT_EQ(Text(exception.bstrSource), OLESTR("Vardeko RSACrypt Class"));

  EXPECT_EQ(Method(OLESTR("CreateRandKeys"), {NumberValue(16)}), S_OK);
  EXPECT_EQ(Get(OLESTR("Modulus")), S_OK);
  TestValue modulus;
  std::swap(*&modulus, *&result);
  EXPECT_EQ(Method(OLESTR("Encrypt"), {modulus}), static_cast<HRESULT>(0x8004277A));
  ASSERT_NE(exception.bstrDescription, nullptr);
  EXPECT_EQ(Text(exception.bstrDescription), OLESTR("Too much data."));
  EXPECT_EQ(Method(OLESTR("Decrypt"), {modulus}), S_OK);
  EXPECT_EQ(Result(), Bytes());
}

TEST_F(RsaCryptDispatchTest, PropertiesAreByteArrays) {
  for (const OLECHAR* const name :
       {OLESTR("Modulus"), OLESTR("PublicExp"), OLESTR("SecretExp"), OLESTR("P"), OLESTR("Q")}) {
    EXPECT_EQ(Put(name, TextValue(OLESTR("0102fF"))), S_OK);
    EXPECT_EQ(Get(name), S_OK);
    EXPECT_EQ(Result(), (Bytes{1, 2, 0xFF}));
  }
  EXPECT_EQ(Method(OLESTR("Reset")), S_OK);
  EXPECT_EQ(Get(OLESTR("Q")), S_OK);
  EXPECT_EQ(V_VT(&result), VT_ARRAY | VT_UI1);
  EXPECT_EQ(Result(), Bytes());
}

TEST_F(RsaCryptDispatchTest, ArgumentsAreRequired) {
  EXPECT_EQ(Method(OLESTR("CreateKeys"), {NumberValue(5)}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(Method(OLESTR("Encrypt")), DISP_E_BADPARAMCOUNT);
}

}  // namespace
}  // namespace mirolta::test
