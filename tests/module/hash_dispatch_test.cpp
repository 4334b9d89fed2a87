// Late-bound calls of a class of the module, as a script host makes them: names to ids, ids to
// calls.
#include <initializer_list>
#include <vector>

#include "class_description.h"
#include "loaded_module.h"

namespace mirolta::test {
namespace {

constexpr OLECHAR kMd5OfAbc[] = OLESTR("900150983CD24FB0D6963F7D28E17F72");
constexpr DISPID kUnwritten = 4711;

class HashDispatchTest : public ModuleTest {
 protected:
  void SetUp() override {
    ModuleTest::SetUp();
    ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
    hash = module.Create<IDispatch>(CLSID_HashObject, IID_IDispatch);
    ASSERT_TRUE(hash);
  }
  void TearDown() override {
    ForgetException();
    hash.Reset();
    EXPECT_EQ(MiroltaRegistryInMemory(FALSE), ERROR_SUCCESS);
    ModuleTest::TearDown();
  }

  HRESULT Ids(std::vector<const OLECHAR*> names) {
    ids.assign(names.size() + 1, kUnwritten);
    return hash->GetIDsOfNames(IID_NULL, const_cast<LPOLESTR*>(names.data()),
                               static_cast<UINT>(names.size()), LOCALE_USER_DEFAULT, ids.data());
  }
  HRESULT Call(const OLECHAR* name, WORD flags, std::initializer_list<VARIANT> arguments = {},
               std::vector<DISPID> names = {}) {
    if (Ids({name}) != S_OK) return DISP_E_UNKNOWNNAME;
    std::vector<VARIANT> reversed(std::rbegin(arguments), std::rend(arguments));
    DISPPARAMS params = {reversed.data(), names.data(), static_cast<UINT>(reversed.size()),
                         static_cast<UINT>(names.size())};
    ForgetException();
    VariantClear(&result);
    bad_argument = 99;
    return hash->Invoke(ids[0], IID_NULL, LOCALE_USER_DEFAULT, flags, &params, &result, &exception,
                        &bad_argument);
  }
  HRESULT Method(const OLECHAR* name, std::initializer_list<VARIANT> arguments = {}) {
    return Call(name, DISPATCH_METHOD, arguments);
  }
  HRESULT Get(const OLECHAR* name) { return Call(name, DISPATCH_PROPERTYGET); }
  HRESULT Put(const OLECHAR* name, const VARIANT& value) {
    return Call(name, DISPATCH_PROPERTYPUT, {value}, {DISPID_PROPERTYPUT});
  }
  Text Value() {
    EXPECT_EQ(Get(OLESTR("Value")), S_OK);
    const VARIANT& value = result;
    if (V_VT(&value) != VT_BSTR) return OLESTR("(no text)");
    return Text(value.bstrVal != nullptr ? value.bstrVal : OLESTR(""), SysStringLen(value.bstrVal));
  }
  void ForgetException() {
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrHelpFile);
    exception = {};
  }

  OwnedReference<IDispatch> hash;
  std::vector<DISPID> ids;
  TestValue result;
  EXCEPINFO exception = {};
  UINT bad_argument = 99;
};

TEST_F(HashDispatchTest, FindsIdsByExactName) {
  struct Named {
    const OLECHAR* name;
    DISPID id;
  };
  constexpr Named kNames[] = {
      {OLESTR("Value"), 0},      {OLESTR("HashSize"), 1},     {OLESTR("BlockSize"), 2},
      {OLESTR("InitHash"), 3},   {OLESTR("HashData"), 4},     {OLESTR("BinaryValue"), 5},
      {OLESTR("HashUpdate"), 6}, {OLESTR("HashFinalize"), 7}, {OLESTR("codePage"), 8},
      {OLESTR("Key"), 9},        {OLESTR("Reset"), 10},       {OLESTR("ResetKey"), 11},
  };
  for (const Named& named : kNames) {
    EXPECT_EQ(Ids({named.name}), S_OK);
    EXPECT_EQ(ids[0], named.id);
  }
}

TEST_F(HashDispatchTest, FindsIdsInOtherLetterCase) {
  EXPECT_EQ(Ids({OLESTR("CODEPAGE")}), S_OK);
  EXPECT_EQ(ids[0], 8);
  EXPECT_EQ(Ids({OLESTR("codepage")}), S_OK);
  EXPECT_EQ(ids[0], 8);
  EXPECT_EQ(Ids({OLESTR("hAsHdAtA")}), S_OK);
  EXPECT_EQ(ids[0], 4);
}

TEST_F(HashDispatchTest, EveryNameOfACallIsAMember) {
  EXPECT_EQ(Ids({OLESTR("Reset"), OLESTR("key"), OLESTR("Value")}), S_OK);
  EXPECT_EQ(ids, (std::vector<DISPID>{10, 9, 0, kUnwritten}));
}

TEST_F(HashDispatchTest, AnUnknownNameEndsTheSearchThere) {
  EXPECT_EQ(Ids({OLESTR("HashData"), OLESTR("nothing"), OLESTR("Reset")}), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(ids, (std::vector<DISPID>{4, DISPID_UNKNOWN, kUnwritten, kUnwritten}));
  EXPECT_EQ(Ids({OLESTR("HashData"), OLESTR("lCP")}), DISP_E_UNKNOWNNAME);
  for (const OLECHAR* name :
       {OLESTR(""), OLESTR("HashDat"), OLESTR("HashData "), OLESTR("Valu\u00E9")}) {
    EXPECT_EQ(Ids({name}), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(ids[0], DISPID_UNKNOWN);
  }
}

TEST_F(HashDispatchTest, NullNamesAndPlacesAreRefused) {
  LPOLESTR name = const_cast<LPOLESTR>(OLESTR("Key"));
  DISPID id = kUnwritten;
  EXPECT_EQ(hash->GetIDsOfNames(IID_NULL, nullptr, 1, 0, &id), E_POINTER);
  EXPECT_EQ(hash->GetIDsOfNames(IID_NULL, &name, 1, 0, nullptr), E_POINTER);
  EXPECT_EQ(Ids({nullptr}), E_POINTER);
  EXPECT_EQ(hash->GetIDsOfNames(IID_NULL, nullptr, 0, 0, nullptr), S_OK);
}

TEST_F(HashDispatchTest, HashesAText) {
  ASSERT_EQ(Method(OLESTR("InitHash"), {TextValue(OLESTR("MD5"))}), S_OK);
  EXPECT_EQ(V_VT(&result), VT_EMPTY);
  ASSERT_EQ(Method(OLESTR("HashData"), {TextValue(OLESTR("abc"))}), S_OK);
  EXPECT_EQ(Value(), kMd5OfAbc);
  ASSERT_EQ(Get(OLESTR("HashSize")), S_OK);
  EXPECT_EQ(V_VT(&result), VT_I4);
  EXPECT_EQ(result->lVal, 16);
  ASSERT_EQ(Get(OLESTR("BinaryValue")), S_OK);
  EXPECT_EQ(BytesOfArray(result).size(), 16u);
}

TEST_F(HashDispatchTest, TheCodePageArgumentMayBeLeftOutMissingOrNamed) {
  TestValue missing(VT_ERROR);
  missing->scode = DISP_E_PARAMNOTFOUND;
  ASSERT_EQ(Method(OLESTR("InitHash"), {TextValue(OLESTR("MD5"))}), S_OK);
  ASSERT_EQ(Put(OLESTR("codePage"), NumberValue(-1)), S_OK);
  ASSERT_EQ(Method(OLESTR("HashData"), {TextValue(OLESTR("abc"))}), S_OK);
  const Text wide = Value();
  EXPECT_NE(wide, kMd5OfAbc);
  ASSERT_EQ(Method(OLESTR("HashData"), {TextValue(OLESTR("abc")), missing}), S_OK);
  EXPECT_EQ(Value(), wide);
  ASSERT_EQ(Method(OLESTR("HashData"), {TextValue(OLESTR("abc")), NumberValue(-1)}), S_OK);
  EXPECT_EQ(Value(), wide);
  ASSERT_EQ(Method(OLESTR("HashData"), {TextValue(OLESTR("abc")), NumberValue(65001)}), S_OK);
  EXPECT_EQ(Value(), kMd5OfAbc);
  ASSERT_EQ(Call(OLESTR("HashData"), DISPATCH_METHOD,
                 {TextValue(OLESTR("abc")), TextValue(OLESTR("65001"))}, {1}),
            S_OK);
  EXPECT_EQ(Value(), kMd5OfAbc);
}

TEST_F(HashDispatchTest, ReferencesReachTheMember) {
  TestValue name = TextValue(OLESTR("MD5"));
  TestValue data = BytesValue(BytesOf("abc"));
  ASSERT_EQ(Method(OLESTR("InitHash"), {ReferenceTo(VT_BSTR, &name->bstrVal)}), S_OK);
  ASSERT_EQ(Method(OLESTR("HashData"), {ReferenceTo(VT_VARIANT, &data)}), S_OK);
  EXPECT_EQ(Value(), kMd5OfAbc);
  ASSERT_EQ(Method(OLESTR("HashData"), {ReferenceTo(VT_ARRAY | VT_UI1, &data->parray)}), S_OK);
  EXPECT_EQ(Value(), kMd5OfAbc);
  TestValue text = TextValue(OLESTR("abc"));
  ASSERT_EQ(Method(OLESTR("HashData"), {ReferenceTo(VT_BSTR, &text->bstrVal)}), S_OK);
  EXPECT_EQ(Value(), kMd5OfAbc);
}

TEST_F(HashDispatchTest, ReadsAndWritesProperties) {
  ASSERT_EQ(Put(OLESTR("codePage"), TextValue(OLESTR("65001"))), S_OK);
  ASSERT_EQ(Get(OLESTR("codepage")), S_OK);
  EXPECT_EQ(result->lVal, 65001);
  EXPECT_EQ(Put(OLESTR("codePage"), TextValue(OLESTR("abc"))), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(bad_argument, 0u);
  ASSERT_EQ(Method(OLESTR("InitHash"), {TextValue(OLESTR("MD5"))}), S_OK);
  ASSERT_EQ(Put(OLESTR("Key"), TextValue(OLESTR("key"))), S_OK);
  ASSERT_EQ(Get(OLESTR("Key")), S_OK);
  EXPECT_EQ(BytesOfArray(result), BytesOf("key"));
}

TEST_F(HashDispatchTest, WrongCallsAreRefused) {
  EXPECT_EQ(Method(OLESTR("Value")), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(Get(OLESTR("Reset")), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(Put(OLESTR("Value"), NumberValue(1)), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(Method(OLESTR("InitHash")), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(Method(OLESTR("Reset"), {NumberValue(1)}), DISP_E_BADPARAMCOUNT);
  DISPPARAMS none = {};
  EXPECT_EQ(hash->Invoke(12, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
            DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(hash->Invoke(10, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr),
            E_INVALIDARG);
}

TEST_F(HashDispatchTest, RaisesWithTheClassAsItsSource) {
  SetClassDescription(CLSID_HashObject, OLESTR("Vardeko HashObject Class"));
  ASSERT_EQ(Method(OLESTR("InitHash"), {TextValue(OLESTR("sha256"))}), DISP_E_EXCEPTION);
  EXPECT_EQ(exception.scode, static_cast<HRESULT>(0x80042777));
  EXPECT_EQ(exception.wCode, 0);
  ASSERT_NE(exception.bstrDescription, nullptr);
  EXPECT_EQ(Text(exception.bstrDescription), OLESTR("Algorithm not found."));
  ASSERT_NE(exception.bstrSource, nullptr);
  EXPECT_EQ(Text(exception.bstrSource), OLESTR("Vardeko HashObject Class"));
  EXPECT_EQ(exception.bstrHelpFile, nullptr);
  EXPECT_EQ(exception.dwHelpContext, 0u);
}

TEST_F(HashDispatchTest, WithoutRegistrationThereIsNoSource) {
  ASSERT_EQ(Method(OLESTR("Reset")), DISP_E_EXCEPTION);
  EXPECT_EQ(exception.scode, static_cast<HRESULT>(0x80042778));
  EXPECT_EQ(Text(exception.bstrDescription), OLESTR("Not initialized."));
  EXPECT_EQ(exception.bstrSource, nullptr);
}

TEST_F(HashDispatchTest, LowerFailuresHaveNoDescription) {
  ASSERT_EQ(Method(OLESTR("InitHash"), {TextValue(OLESTR("MD5"))}), S_OK);
  ASSERT_EQ(Method(OLESTR("HashData"), {TestValue(VT_NULL)}), DISP_E_EXCEPTION);
  EXPECT_EQ(exception.scode, DISP_E_TYPEMISMATCH);
  EXPECT_EQ(exception.bstrDescription, nullptr);
  EXPECT_EQ(exception.bstrSource, nullptr);
}

TEST_F(HashDispatchTest, DigestReadersWithoutAlgorithmSucceedWithNothing) {
  EXPECT_EQ(Value(), Text());
  ASSERT_GE(Get(OLESTR("BinaryValue")), 0);
  EXPECT_EQ(V_VT(&result), VT_EMPTY);
}

}  // namespace
}  // namespace mirolta::test
