// Late-bound calls of a class of the module, as a script host makes them: names to ids, ids to
// calls.
#include <optional>
#include <vector>

#include "class_description.h"
#include "late_bound.h"
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
    late.emplace(hash.Get());
  }
  void TearDown() override {
    late.reset();
    hash.Reset();
    EXPECT_EQ(MiroltaRegistryInMemory(FALSE), ERROR_SUCCESS);
    ModuleTest::TearDown();
  }

  HRESULT Ids(std::vector<const OLECHAR*> names) {
    ids.assign(names.size() + 1, kUnwritten);
    return hash->GetIDsOfNames(IID_NULL, const_cast<LPOLESTR*>(names.data()),
                               static_cast<UINT>(names.size()), LOCALE_USER_DEFAULT, ids.data());
  }
  Text Value() {
    EXPECT_EQ(late->Get(OLESTR("Value")), S_OK);
    return late->ResultText();
  }

  OwnedReference<IDispatch> hash;
  std::optional<LateBound> late;
  std::vector<DISPID> ids;
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
  ASSERT_EQ(late->Method(OLESTR("InitHash"), {TextValue(OLESTR("MD5"))}), S_OK);
  EXPECT_EQ(late->Type(), VT_EMPTY);
  ASSERT_EQ(late->Method(OLESTR("HashData"), {TextValue(OLESTR("abc"))}), S_OK);
  EXPECT_EQ(Value(), kMd5OfAbc);
  ASSERT_EQ(late->Get(OLESTR("HashSize")), S_OK);
  EXPECT_EQ(late->Type(), VT_I4);
  EXPECT_EQ(late->result->lVal, 16);
  ASSERT_EQ(late->Get(OLESTR("BinaryValue")), S_OK);
  EXPECT_EQ(late->ResultBytes().size(), 16u);
}

TEST_F(HashDispatchTest, TheCodePageArgumentMayBeLeftOutMissingOrNamed) {
  TestValue missing(VT_ERROR);
  missing->scode = DISP_E_PARAMNOTFOUND;
  ASSERT_EQ(late->Method(OLESTR("InitHash"), {TextValue(OLESTR("MD5"))}), S_OK);
  ASSERT_EQ(late->Put(OLESTR("codePage"), {NumberValue(-1)}), S_OK);
  ASSERT_EQ(late->Method(OLESTR("HashData"), {TextValue(OLESTR("abc"))}), S_OK);
  const Text wide = Value();
  EXPECT_NE(wide, kMd5OfAbc);
  ASSERT_EQ(late->Method(OLESTR("HashData"), {TextValue(OLESTR("abc")), missing}), S_OK);
  EXPECT_EQ(Value(), wide);
  ASSERT_EQ(late->Method(OLESTR("HashData"), {TextValue(OLESTR("abc")), NumberValue(-1)}), S_OK);
  EXPECT_EQ(Value(), wide);
  ASSERT_EQ(late->Method(OLESTR("HashData"), {TextValue(OLESTR("abc")), NumberValue(65001)}), S_OK);
  EXPECT_EQ(Value(), kMd5OfAbc);
  ASSERT_EQ(late->Call(late->IdOf(OLESTR("HashData")), DISPATCH_METHOD,
                       {TextValue(OLESTR("abc")), TextValue(OLESTR("65001"))}, {1}),
            S_OK);
  EXPECT_EQ(Value(), kMd5OfAbc);
}

TEST_F(HashDispatchTest, ReferencesReachTheMember) {
  TestValue name = TextValue(OLESTR("MD5"));
  TestValue data = BytesValue(BytesOf("abc"));
  ASSERT_EQ(late->Method(OLESTR("InitHash"), {ReferenceTo(VT_BSTR, &name->bstrVal)}), S_OK);
  ASSERT_EQ(late->Method(OLESTR("HashData"), {ReferenceTo(VT_VARIANT, &data)}), S_OK);
  EXPECT_EQ(Value(), kMd5OfAbc);
  ASSERT_EQ(late->Method(OLESTR("HashData"), {ReferenceTo(VT_ARRAY | VT_UI1, &data->parray)}),
            S_OK);
  EXPECT_EQ(Value(), kMd5OfAbc);
  TestValue text = TextValue(OLESTR("abc"));
  ASSERT_EQ(late->Method(OLESTR("HashData"), {ReferenceTo(VT_BSTR, &text->bstrVal)}), S_OK);
  EXPECT_EQ(Value(), kMd5OfAbc);
}

TEST_F(HashDispatchTest, ReadsAndWritesProperties) {
  ASSERT_EQ(late->Put(OLESTR("codePage"), {TextValue(OLESTR("65001"))}), S_OK);
  ASSERT_EQ(late->Get(OLESTR("codepage")), S_OK);
  EXPECT_EQ(late->result->lVal, 65001);
  EXPECT_EQ(late->Put(OLESTR("codePage"), {TextValue(OLESTR("abc"))}), DISP_E_TYPEMISMATCH);
  EXPECT_FALSE(late->raised);
  EXPECT_EQ(late->bad_argument, 0u);
  ASSERT_EQ(late->Method(OLESTR("InitHash"), {TextValue(OLESTR("MD5"))}), S_OK);
  ASSERT_EQ(late->Put(OLESTR("Key"), {TextValue(OLESTR("key"))}), S_OK);
  ASSERT_EQ(late->Get(OLESTR("Key")), S_OK);
  EXPECT_EQ(late->ResultBytes(), BytesOf("key"));
}

TEST_F(HashDispatchTest, WrongCallsAreRefused) {
  EXPECT_EQ(late->Method(OLESTR("Value")), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(late->Get(OLESTR("Reset")), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(late->Put(OLESTR("Value"), {NumberValue(1)}), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(late->Method(OLESTR("InitHash")), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(late->Method(OLESTR("Reset"), {NumberValue(1)}), DISP_E_BADPARAMCOUNT);
  EXPECT_FALSE(late->raised);
  DISPPARAMS none = {};
  EXPECT_EQ(hash->Invoke(12, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
            DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(hash->Invoke(10, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr),
            E_INVALIDARG);
}

TEST_F(HashDispatchTest, RaisesWithTheClassAsItsSource) {
  SetClassDescription(CLSID_HashObject, OLESTR("Vardeko HashObject Class"));
  EXPECT_EQ(late->Method(OLESTR("InitHash"), {TextValue(OLESTR("sha256"))}), kNotFound);
  EXPECT_TRUE(late->raised);
  EXPECT_EQ(late->description, OLESTR("Algorithm not found."));
  EXPECT_EQ(late->source, OLESTR("Vardeko HashObject Class"));
  EXPECT_EQ(late->exception.wCode, 0);
  EXPECT_EQ(late->exception.bstrHelpFile, nullptr);
  EXPECT_EQ(late->exception.dwHelpContext, 0u);
}

TEST_F(HashDispatchTest, WithoutRegistrationThereIsNoSource) {
  EXPECT_EQ(late->Method(OLESTR("Reset")), kNotInitialized);
  EXPECT_TRUE(late->raised);
  EXPECT_EQ(late->description, OLESTR("Not initialized."));
  EXPECT_FALSE(late->has_source);
}

TEST_F(HashDispatchTest, LowerFailuresHaveNoDescription) {
  ASSERT_EQ(late->Method(OLESTR("InitHash"), {TextValue(OLESTR("MD5"))}), S_OK);
  EXPECT_EQ(late->Method(OLESTR("HashData"), {TestValue(VT_NULL)}), DISP_E_TYPEMISMATCH);
  EXPECT_TRUE(late->raised);
  EXPECT_FALSE(late->has_description);
  EXPECT_FALSE(late->has_source);
}

TEST_F(HashDispatchTest, DigestReadersWithoutAlgorithmSucceedWithNothing) {
  EXPECT_EQ(Value(), Text());
  ASSERT_GE(late->Get(OLESTR("BinaryValue")), 0);
  EXPECT_EQ(late->Type(), VT_EMPTY);
}

}  // namespace
}  // namespace mirolta::test
