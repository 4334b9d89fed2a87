// RSACrypt through its interface: its numbers and how keys are made. What it does with data is in
// rsa_crypt_data_test.cpp.
#include <functional>

#include "rsa_crypt_fixture.h"

namespace mirolta::test {
namespace {

TEST_F(RsaCryptTest, ANewObjectHasNoKey) {
  EXPECT_EQ(KeyText(), "     ");
  EXPECT_EQ(BlockSize(), 0);
}

TEST_F(RsaCryptTest, NumbersAreKeptAsGiven) {
  Load("0102", "3", "00ff", "aaa", "123456789abcdef01");
  EXPECT_EQ(KeyText(), "0102 03 ff 0aaa 0123456789abcdef01 ");
  for (const Field& field : kFields) {
    EXPECT_EQ(PutInto(field, BytesValue({0, 9, 8})), S_OK);
    EXPECT_EQ(FieldOf(field.get), "0908") << field.name;
    EXPECT_EQ(PutInto(field, NumberValue(65537)), S_OK);
    EXPECT_EQ(FieldOf(field.get), "010001") << field.name;
    EXPECT_EQ(PutInto(field, HexText("x1-F z")), S_OK);
    EXPECT_EQ(FieldOf(field.get), "1f") << field.name;
    EXPECT_EQ(PutInto(field, TestValue(VT_NULL)), S_OK);
    EXPECT_EQ(FieldOf(field.get), "") << field.name;
  }
}

TEST_F(RsaCryptTest, NumbersThatDoNotConvertLeaveTheOldOnes) {
  Load("1", "2", "3", "4", "5");
  for (const Field& field : kFields) {
    EXPECT_EQ(PutInto(field, TestValue(VT_BOOL)), DISP_E_TYPEMISMATCH) << field.name;
    EXPECT_EQ(PutInto(field, NumberValue(-1)), DISP_E_OVERFLOW) << field.name;
    LONG number = 1;
    EXPECT_EQ(PutInto(field, ReferenceTo(VT_I4, &number)), DISP_E_TYPEMISMATCH) << field.name;
    EXPECT_EQ(PutInto(field, ObjectValue(nullptr)), E_FAIL) << field.name;
  }
  EXPECT_EQ(KeyText(), "01 02 03 04 05 ");
  ExpectNoError();
}

TEST_F(RsaCryptTest, NullOutPointersAreReportedFirst) {
  for (const Field& field : kFields) EXPECT_EQ((rsa.Get()->*field.get)(nullptr), E_POINTER);
  for (const TransformRow& row : kTransforms) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ((rsa.Get()->*row.transform)(TestValue(VT_BOOL), nullptr), E_POINTER);
  }
  EXPECT_EQ(rsa->get_BlockSize(nullptr), E_POINTER);
  ExpectNoError();
}

TEST_F(RsaCryptTest, CreateKeysStartsFromGivenNumbers) {
  // 1000000 and 2000000 in hexadecimal; the larger one first.
  ASSERT_EQ(rsa->CreateKeys(HexText("1e8480"), NumberValue(1000000)), S_OK);
  EXPECT_EQ(FieldOf(&IRSACrypt::get_P), "0f4243");
  EXPECT_EQ(FieldOf(&IRSACrypt::get_Q), "1e8483");
  EXPECT_EQ(FieldOf(&IRSACrypt::get_PublicExp), "010001");
  EXPECT_EQ(FieldOf(&IRSACrypt::get_Modulus), "01d1a9d37449");  // 1000003 * 2000003
  ExpectRoundTrip("123456789a");
}

TEST_F(RsaCryptTest, CreateKeysKeepsAPublicExponent) {
  ASSERT_EQ(rsa->put_PublicExp(HexText("4")), S_OK);
  ASSERT_EQ(rsa->CreateKeys(NumberValue(1000000), NumberValue(2000000)), S_OK);
  EXPECT_EQ(FieldOf(&IRSACrypt::get_PublicExp), "05");
}

TEST_F(RsaCryptTest, CreateKeysRefusesNumbersThatDoNotConvertOnly) {
  Load("1", "2", "3", "4", "5");
  EXPECT_EQ(rsa->CreateKeys(TestValue(VT_BOOL), NumberValue(-1)), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(rsa->CreateKeys(NumberValue(-1), TestValue(VT_BOOL)), DISP_E_OVERFLOW);
  EXPECT_EQ(rsa->CreateKeys(NumberValue(1), TestValue(VT_BOOL)), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(KeyText(), "01 02 03 04 05 ");
  ExpectNoError();
  EXPECT_EQ(rsa->CreateKeys(TestValue(), TestValue(VT_NULL)), S_OK);
  EXPECT_EQ(FieldOf(&IRSACrypt::get_P), "04cd");
  EXPECT_EQ(FieldOf(&IRSACrypt::get_Q), "04cd");
}

TEST_F(RsaCryptTest, CreateRandKeysMakesNewKeysOfTheGivenSize) {
  ASSERT_EQ(rsa->CreateRandKeys(32, VARIANT_TRUE), S_OK);
  EXPECT_EQ(FieldOf(&IRSACrypt::get_Modulus).size(), 64u);
  EXPECT_EQ(BlockSize(), 31);
  const std::string old = KeyText();
  ASSERT_EQ(rsa->CreateRandKeys(32, 0), S_OK);
  EXPECT_NE(KeyText(), old);
  EXPECT_EQ(FieldOf(&IRSACrypt::get_Modulus).size(), 66u);
  EXPECT_EQ(BlockSize(), 32);
  ASSERT_EQ(rsa->CreateRandKeys(33, 1), S_OK);
  EXPECT_EQ(FieldOf(&IRSACrypt::get_Modulus).size(), 64u);
  ExpectRoundTrip(std::string(60, '7'));
}

TEST_F(RsaCryptTest, CreateRandKeysRefusesSizesWithoutAByte) {
  Load("1", "2", "3", "4", "5");
  for (const LONG size : {0, -1, -2147483647 - 1}) {
    EXPECT_EQ(rsa->CreateRandKeys(size, 0), E_INVALIDARG);
    EXPECT_EQ(rsa->CreateRandKeys(size, VARIANT_TRUE), E_INVALIDARG);
  }
  EXPECT_EQ(rsa->CreateRandKeys(1, VARIANT_TRUE), E_INVALIDARG);
  ExpectNoError();
  EXPECT_EQ(KeyText(), "01 02 03 04 05 ");
  EXPECT_EQ(rsa->CreateRandKeys(1, 0), S_OK);
  EXPECT_EQ(FieldOf(&IRSACrypt::get_P), "04cd");
}

TEST_F(RsaCryptTest, ResetClearsTheKey) {
  Load("1", "2", "3", "4", "5");
  EXPECT_EQ(rsa->Reset(), S_OK);
  EXPECT_EQ(KeyText(), "     ");
  // A Q that nobody has read yet goes as well.
  ASSERT_EQ(rsa->put_Q(NumberValue(5)), S_OK);
  EXPECT_EQ(rsa->Reset(), S_OK);
  EXPECT_EQ(KeyText(), "     ");
}

TEST_F(RsaCryptTest, AKeyReadFromOneObjectWorksInAnother) {
  ASSERT_EQ(rsa->CreateRandKeys(16, VARIANT_TRUE), S_OK);
  const std::string encrypted = Run(&IRSACrypt::Encrypt, HexText("1234"));
  const OwnedReference<IRSACrypt> other =
      module.Create<IRSACrypt>(CLSID_RSACryptFree, IID_IRSACrypt);
  for (const Field& field : kFields) {
    TestValue value;
    ASSERT_EQ((rsa.Get()->*field.get)(&value), S_OK);
    ASSERT_EQ((other.Get()->*field.put)(value), S_OK);
  }
  for (const Transform transform : {&IRSACrypt::Decrypt, &IRSACrypt::DecryptPQ}) {
    TestValue out;
    ASSERT_EQ((other.Get()->*transform)(HexText(encrypted), &out), S_OK);
    EXPECT_EQ(BytesOfArray(out), (Bytes{0x12, 0x34}));
  }
}

TEST_F(RsaCryptTest, WithoutMemoryThereIsNoResult) {
  LoadSmallKey();
  const std::string key = KeyText();
  const TestValue data = NumberValue(5);
  const auto fails = [&](const std::function<HRESULT(VARIANT*)>& call) {
    VARIANT out;
    VariantInit(&out);
    MiroltaFailAllocationAfter(0);
    EXPECT_EQ(call(&out), E_OUTOFMEMORY);
    EXPECT_TRUE(MiroltaAllocationHasFailed());
    MiroltaFailAllocationAfter(-1);
    EXPECT_EQ(V_VT(&out), VT_EMPTY);
  };
  for (const TransformRow& row : kTransforms) {
    SCOPED_TRACE(row.name);
    fails([&](VARIANT* out) { return (rsa.Get()->*row.transform)(data, out); });
  }
  for (const Field& field : kFields) {
    fails([&](VARIANT* out) { return (rsa.Get()->*field.get)(out); });
  }
  ExpectNoError();
  EXPECT_EQ(KeyText(), key);
}

TEST_F(RsaCryptTest, SupportsErrorInformationForItsInterfaceOnly) {
  OwnedReference<ISupportErrorInfo> support;
  ASSERT_EQ(support.Query(rsa.Get(), IID_ISupportErrorInfo), S_OK);
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IRSACrypt), S_OK);
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IPexBigNumber), S_FALSE);
}

}  // namespace
}  // namespace mirolta::test
