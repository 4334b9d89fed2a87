// What RSACrypt encrypts and decrypts: which numbers of the key it needs, and data of every form.
#include "calling_object.h"
#include "fake_object.h"
#include "rsa_crypt_fixture.h"

namespace mirolta::test {
namespace {

// Which numbers must be set: the others may all be zero.
TEST_F(RsaCryptTest, MissingNumbersOfTheKeyAreReportedBeforeTheData) {
  const char* const numbers[] = {"ca1", "11", "ac1", "35", "3d"};
  for (const TransformRow& one : kTransforms) {
    SCOPED_TRACE(one.name);
    for (unsigned set = 0; set < 32; ++set) {
      ASSERT_EQ(rsa->Reset(), S_OK);
      for (unsigned i = 0; i < 5; ++i) {
        if ((set >> i & 1) == 0) continue;
        ASSERT_EQ(PutInto(kFields[i], HexText(numbers[i])), S_OK);
      }
      const std::string result = Run(one.transform, NumberValue(5));
      if ((set & one.needed) == one.needed) {
        EXPECT_EQ(result.size(), result == "01" ? 2u : 4u) << set;
        ExpectNoError();
      } else {
        EXPECT_EQ(result, "80042779") << set;
        ExpectError(OLESTR("Key not set."), kClass);
      }
      // The key comes before the data.
      const std::string bad = Run(one.transform, TestValue(VT_BOOL));
      EXPECT_EQ(bad, (set & one.needed) == one.needed ? "80020005" : "80042779");
      SetErrorInfo(0, nullptr);
    }
  }
}

TEST_F(RsaCryptTest, EncryptRefusesDataNotBelowTheModulus) {
  LoadSmallKey();
  EXPECT_EQ(Run(&IRSACrypt::Encrypt, HexText("ca0")), "0ca0");  // (-1)^17
  ExpectNoError();
  const std::string key = KeyText();
  for (const char* const data : {"ca1", "ca2", "ffffffffffffffffffff"}) {
    EXPECT_EQ(Run(&IRSACrypt::Encrypt, HexText(data)), "8004277A");
    ExpectError(OLESTR("Too much data."), kClass);
  }
  EXPECT_EQ(KeyText(), key);
}

TEST_F(RsaCryptTest, DecryptReducesLargerData) {
  LoadSmallKey();
  EXPECT_EQ(Run(&IRSACrypt::Decrypt, HexText("ca1")), "");
  EXPECT_EQ(Run(&IRSACrypt::DecryptPQ, HexText("ca1")), "");
  EXPECT_EQ(Run(&IRSACrypt::Decrypt, HexText("ca2")), "01");
  EXPECT_EQ(Run(&IRSACrypt::DecryptPQ, HexText("ca2")), "01");
  ExpectNoError();
}

TEST_F(RsaCryptTest, ZeroTransformsToZero) {
  LoadSmallKey();
  for (const TransformRow& row : kTransforms) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(Run(row.transform, NumberValue(0)), "");
    EXPECT_EQ(Run(row.transform, TestValue()), "");
    EXPECT_EQ(Run(row.transform, BytesValue({})), "");
    EXPECT_EQ(Run(row.transform, HexText("")), "");
  }
}

TEST_F(RsaCryptTest, ANumberThatHoldsZeroIsZero) {
  const auto zero = module.Create<IPexBigNumber>(CLSID_PexBigNumber, IID_IPexBigNumber);
  ASSERT_TRUE(zero);
  for (const TestValue& value : {ObjectValue(zero.Get()), UnknownValue(zero.Get())}) {
    LoadSmallKey();
    for (const TransformRow& row : kTransforms)
      EXPECT_EQ(Run(row.transform, value), "") << row.name;
    for (const Field& field : kFields) {
      EXPECT_EQ(PutInto(field, value), S_OK) << field.name;
      EXPECT_EQ(FieldOf(field.get), "") << field.name;
    }
    EXPECT_EQ(rsa->CreateKeys(value, NumberValue(5000)), S_OK);
    EXPECT_EQ(FieldOf(&IRSACrypt::get_P), "04cd");
  }
  ExpectNoError();
}

TEST_F(RsaCryptTest, SecretExponentZeroDecryptsToOne) {
  LoadSmallKey();
  ASSERT_EQ(rsa->put_SecretExp(NumberValue(0)), S_OK);
  EXPECT_EQ(Run(&IRSACrypt::Decrypt, NumberValue(5)), "01");
  EXPECT_EQ(Run(&IRSACrypt::DecryptPQ, NumberValue(5)), "80042779");
}

TEST_F(RsaCryptTest, PrimesOfOneAreRefusedWithoutADescription) {
  LoadSmallKey();
  for (const Put put : {&IRSACrypt::put_P, &IRSACrypt::put_Q}) {
    LoadSmallKey();
    ASSERT_EQ((rsa.Get()->*put)(NumberValue(1)), S_OK);
    const std::string key = KeyText();
    EXPECT_EQ(Run(&IRSACrypt::DecryptPQ, NumberValue(5)), "80070057");
    ExpectNoError();
    EXPECT_EQ(KeyText(), key);
  }
}

TEST_F(RsaCryptTest, DataThatDoesNotConvertIsRefusedWithoutADescription) {
  LoadSmallKey();
  const std::string key = KeyText();
  for (const TransformRow& row : kTransforms) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(Run(row.transform, TestValue(VT_BOOL)), "80020005");
    EXPECT_EQ(Run(row.transform, NumberValue(-5)), "8002000A");
    EXPECT_EQ(Run(row.transform, ObjectValue(nullptr)), "80004005");
  }
  ExpectNoError();
  EXPECT_EQ(KeyText(), key);
}

TEST_F(RsaCryptTest, ObjectsAreTheirDefaultValues) {
  LoadSmallKey();
  FakeObject text(HexText("41"));
  EXPECT_EQ(Run(&IRSACrypt::Encrypt, ObjectValue(&text)), "0ae6");  // 65^17 mod 3233 = 2790
  // A number's default member is decimal text, here read as hexadecimal.
  const OwnedReference<IPexBigNumber> number =
      module.Create<IPexBigNumber>(CLSID_PexBigNumber, IID_IPexBigNumber);
  ASSERT_EQ(number->put_Value(NumberValue(41)), S_OK);
  EXPECT_EQ(Run(&IRSACrypt::Encrypt, ObjectValue(number.Get())), "0ae6");
  ASSERT_EQ(rsa->put_Modulus(ObjectValue(number.Get())), S_OK);
  EXPECT_EQ(FieldOf(&IRSACrypt::get_Modulus), "41");
}

TEST_F(RsaCryptTest, ACallFromInsideMayDropTheKey) {
  CallingObject resets([&] { EXPECT_EQ(rsa->Reset(), S_OK); }, OLESTR("5"));
  LoadSmallKey();
  // Nothing is below a modulus of zero.
  EXPECT_EQ(Run(&IRSACrypt::Encrypt, ObjectValue(&resets)), "8004277A");
  SetErrorInfo(0, nullptr);
  LoadSmallKey();
  EXPECT_EQ(Run(&IRSACrypt::Decrypt, ObjectValue(&resets)), "80070057");
  LoadSmallKey();
  EXPECT_EQ(Run(&IRSACrypt::DecryptPQ, ObjectValue(&resets)), "80070057");
  LoadSmallKey();
  ASSERT_EQ(rsa->put_P(ObjectValue(&resets)), S_OK);
  EXPECT_EQ(KeyText(), "   05  ");
  LoadSmallKey();
  CallingObject puts([&] { EXPECT_EQ(rsa->put_Q(NumberValue(7)), S_OK); }, OLESTR("5"));
  ASSERT_EQ(rsa->put_Q(ObjectValue(&puts)), S_OK);
  EXPECT_EQ(FieldOf(&IRSACrypt::get_Q), "05");
}

}  // namespace
}  // namespace mirolta::test
