// RSACrypt late-bound, as scripts use it.
#include <optional>

#include "class_description.h"
#include "error_slot.h"
#include "late_bound.h"
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
    late.emplace(rsa.Get());
  }
  void TearDown() override {
    late.reset();
    rsa.Reset();
    EXPECT_EQ(MiroltaRegistryInMemory(FALSE), ERROR_SUCCESS);
    ModuleTest::TearDown();
  }
  // The length of the modulus that CreateRandKeys makes.
  size_t ModulusSize(std::initializer_list<VARIANT> arguments) {
    EXPECT_EQ(late->Method(OLESTR("CreateRandKeys"), arguments), S_OK);
    EXPECT_EQ(late->Get(OLESTR("Modulus")), S_OK);
    return late->ResultBytes().size();
  }

  OwnedReference<IDispatch> rsa;
  std::optional<LateBound> late;
};

TEST_F(RsaCryptDispatchTest, MembersHaveTheirIds) {
  constexpr struct {
    const OLECHAR* name;
    DISPID id;
  } kRows[] = {
      {OLESTR("CreateKeys"), 1}, {OLESTR("CreateRandKeys"), 2}, {OLESTR("Modulus"), 3},
      {OLESTR("PublicExp"), 4},  {OLESTR("SecretExp"), 5},      {OLESTR("P"), 6},
      {OLESTR("Q"), 7},          {OLESTR("Encrypt"), 8},        {OLESTR("Decrypt"), 9},
      {OLESTR("DecryptPQ"), 10}, {OLESTR("Reset"), 11},         {OLESTR("BlockSize"), 12},
  };
  for (const auto& row : kRows) EXPECT_EQ(late->IdOf(row.name), row.id);
}

TEST_F(RsaCryptDispatchTest, SizesLeftOutAreThirtyTwoBytesAndNotExact) {
  EXPECT_EQ(ModulusSize({}), 33u);
  EXPECT_EQ(ModulusSize({NumberValue(16)}), 17u);
  TestValue yes(VT_BOOL);
  yes->boolVal = VARIANT_TRUE;
  EXPECT_EQ(ModulusSize({NumberValue(16), yes}), 16u);
  EXPECT_EQ(late->Get(OLESTR("BlockSize")), S_OK);
  EXPECT_EQ(late->Type(), VT_I4);
  EXPECT_EQ(late->result->lVal, 15);
  EXPECT_EQ(late->Method(OLESTR("CreateRandKeys"), {NumberValue(0)}), E_INVALIDARG);
  EXPECT_FALSE(late->has_description);
  EXPECT_FALSE(late->has_source);
}

TEST_F(RsaCryptDispatchTest, DescribedErrorsCarryTheirTextAndTheClass) {
  EXPECT_EQ(late->Method(OLESTR("Encrypt"), {NumberValue(5)}), kKeyNotSet);
  EXPECT_EQ(late->description, OLESTR("Key not set."));
  EXPECT_EQ(late->source, OLESTR("Vardeko RSACrypt Class"));

  EXPECT_EQ(ModulusSize({NumberValue(16)}), 17u);
  TestValue modulus;
  std::swap(*&modulus, *&late->result);
  EXPECT_EQ(late->Method(OLESTR("Encrypt"), {modulus}), kTooMuchData);
  EXPECT_EQ(late->description, OLESTR("Too much data."));
  EXPECT_EQ(late->Method(OLESTR("Decrypt"), {modulus}), S_OK);
  EXPECT_EQ(late->ResultBytes(), Bytes());
}

TEST_F(RsaCryptDispatchTest, NumbersAreByteArrays) {
  for (const OLECHAR* const name :
       {OLESTR("Modulus"), OLESTR("PublicExp"), OLESTR("SecretExp"), OLESTR("P"), OLESTR("Q")}) {
    EXPECT_EQ(late->Put(name, {TextValue(OLESTR("0102fF"))}), S_OK);
    EXPECT_EQ(late->Get(name), S_OK);
    EXPECT_EQ(late->ResultBytes(), (Bytes{1, 2, 0xFF}));
  }
  EXPECT_EQ(late->Method(OLESTR("Reset")), S_OK);
  EXPECT_EQ(late->Get(OLESTR("Q")), S_OK);
  EXPECT_EQ(late->Type(), VT_ARRAY | VT_UI1);
  EXPECT_EQ(late->ResultBytes(), Bytes());
}

TEST_F(RsaCryptDispatchTest, MissingArgumentsAreRefused) {
  EXPECT_EQ(late->Method(OLESTR("CreateKeys"), {NumberValue(5)}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(late->Method(OLESTR("Encrypt")), DISP_E_BADPARAMCOUNT);
}

}  // namespace
}  // namespace mirolta::test
