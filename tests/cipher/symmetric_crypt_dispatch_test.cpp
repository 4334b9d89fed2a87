// SymmetricCryptObject late-bound, as a script host calls it: names, optional arguments, errors.
#include <optional>

#include "late_bound.h"
#include "symmetric_crypt_fixture.h"

namespace mirolta::test {
namespace {

class SymmetricCryptDispatchTest : public SymmetricCryptTest {
 protected:
  void SetUp() override {
    SymmetricCryptTest::SetUp();
    late.emplace(crypt.Get());
  }

  std::optional<LateBound> late;
};

TEST_F(SymmetricCryptDispatchTest, MembersHaveTheirIds) {
  constexpr struct {
    const OLECHAR* name;
    DISPID id;
  } kRows[] = {{OLESTR("Key"), 1},
               {OLESTR("BlockSize"), 2},
               {OLESTR("codePage"), 3},
               {OLESTR("Encrypt"), 4},
               {OLESTR("Decrypt"), 5},
               {OLESTR("Reset"), 6},
               {OLESTR("ResetKey"), 7},
               {OLESTR("Init"), 8},
               {OLESTR("PadType"), 9},
               {OLESTR("CODEPAGE"), 3},
               {OLESTR("Value"), DISPID_UNKNOWN}};
  for (const auto& row : kRows) EXPECT_EQ(late->IdOf(row.name), row.id);
}

TEST_F(SymmetricCryptDispatchTest, ACallWithoutItsFlagEndsTheData) {
  ASSERT_EQ(late->Method(OLESTR("Init"), {TextValue(OLESTR("AES"))}), S_OK);
  ASSERT_EQ(late->Put(OLESTR("Key"), {BytesValue(BytesOfHex(kAesKey))}), S_OK);
  const TestValue text = TextValue(OLESTR("abc"));
  ASSERT_EQ(late->Method(OLESTR("Encrypt"), {text}), S_OK);
  const Bytes cipher = late->ResultBytes();
  EXPECT_EQ(cipher.size(), 16u);
  TestValue missing(VT_ERROR);
  missing->scode = DISP_E_PARAMNOTFOUND;
  ASSERT_EQ(late->Method(OLESTR("Encrypt"), {text, missing}), S_OK);
  EXPECT_EQ(late->ResultBytes(), cipher);
  TestValue no(VT_BOOL);
  ASSERT_EQ(late->Method(OLESTR("Encrypt"), {text, no}), S_OK);
  EXPECT_EQ(late->ResultBytes(), Bytes());
  EXPECT_EQ(late->Type(), VT_ARRAY | VT_UI1);
  ASSERT_EQ(late->Method(OLESTR("Reset")), S_OK);
  ASSERT_EQ(late->Method(OLESTR("Reset"), {NumberValue(12345)}), S_OK);
  ASSERT_EQ(late->Method(OLESTR("Decrypt"), {BytesValue(cipher)}), S_OK);
  EXPECT_EQ(late->ResultBytes().size(), 16u);
  ASSERT_EQ(late->Method(OLESTR("ResetKey")), S_OK);
  ASSERT_EQ(late->Get(OLESTR("Key")), S_OK);
  EXPECT_EQ(late->Type(), VT_EMPTY);
}

TEST_F(SymmetricCryptDispatchTest, NumbersAreReadAndPutAsNumbersAndText) {
  ASSERT_EQ(late->Method(OLESTR("Init"), {TextValue(OLESTR("DES"))}), S_OK);
  ASSERT_EQ(late->Put(OLESTR("PadType"), {NumberValue(-1)}), S_OK);
  ASSERT_EQ(late->Get(OLESTR("PadType")), S_OK);
  EXPECT_EQ(late->result->lVal, -1);
  ASSERT_EQ(late->Put(OLESTR("codePage"), {TextValue(OLESTR("65001"))}), S_OK);
  ASSERT_EQ(late->Get(OLESTR("codePage")), S_OK);
  EXPECT_EQ(late->result->lVal, 65001);
  ASSERT_EQ(late->Get(OLESTR("BlockSize")), S_OK);
  EXPECT_EQ(late->result->lVal, 8);
  EXPECT_EQ(late->Put(OLESTR("BlockSize"), {NumberValue(16)}), DISP_E_MEMBERNOTFOUND);
}

TEST_F(SymmetricCryptDispatchTest, ADescribedFailureIsAnException) {
  SetClassDescription(CLSID_SymmetricCryptObject, OLESTR("A description"));
  EXPECT_EQ(late->Get(OLESTR("Key")), kNotInitialized);
  EXPECT_TRUE(late->raised);
  EXPECT_EQ(late->description, OLESTR("Not initialized."));
  EXPECT_EQ(late->source, OLESTR("A description"));
}

}  // namespace
}  // namespace mirolta::test
