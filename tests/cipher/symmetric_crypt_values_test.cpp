// SymmetricCryptObject: which automation values are data and keys, and which bytes they are.
#include "symmetric_crypt_fixture.h"

namespace mirolta::test {
namespace {

class SymmetricCryptValuesTest : public SymmetricCryptTest {
 protected:
  void SetUp() override {
    SymmetricCryptTest::SetUp();
    StartAes();
  }
  // The data bytes of a value: its decrypted ciphertext without the pad of 0xEE.
  Bytes DataOf(const VARIANT& value) {
    EXPECT_EQ(crypt->put_PadType(0xEE), S_OK);
    Bytes bytes = Decrypted(Good(Encrypt(value)));
    while (!bytes.empty() && bytes.back() == 0xEE) bytes.pop_back();
    return bytes;
  }
  HRESULT EncryptStatus(const VARIANT& value) { return Encrypt(value).status; }
};

TEST_F(SymmetricCryptValuesTest, TextIsConvertedByTheCodePage) {
  EXPECT_EQ(DataOf(TextValue(OLESTR("abc"))), BytesOf("abc"));
  ASSERT_EQ(crypt->put_codePage(65001), S_OK);
  EXPECT_EQ(DataOf(TextValue(OLESTR("\u00E9"))), BytesOfHex("c3a9"));
  ASSERT_EQ(crypt->put_codePage(1252), S_OK);
  EXPECT_EQ(DataOf(TextValue(OLESTR("\u00E9"))), BytesOfHex("e9"));
  ASSERT_EQ(crypt->put_codePage(-1), S_OK);
  EXPECT_EQ(DataOf(TextValue(OLESTR("AB"))), BytesOfHex("41004200"));
  ASSERT_EQ(crypt->put_codePage(-2), S_OK);
  EXPECT_EQ(DataOf(TextValue(OLESTR("AB"))), BytesOfHex("00410042"));
  // Up to its first zero character; no bytes through a character set that nobody knows.
  EXPECT_EQ(DataOf(TextValue(OLESTR("A\0B"))), BytesOfHex("0041"));
  ASSERT_EQ(crypt->put_codePage(99999), S_OK);
  EXPECT_EQ(DataOf(TextValue(OLESTR("AB"))), Bytes());
}

TEST_F(SymmetricCryptValuesTest, OtherPlainValuesAreTheirText) {
  EXPECT_EQ(DataOf(NumberValue(255)), BytesOf("255"));
  EXPECT_EQ(DataOf(NumberValue(-7)), BytesOf("-7"));
  TestValue half(VT_R8);
  half->dblVal = 0.5;
  EXPECT_EQ(DataOf(half), BytesOf("0.5"));
  EXPECT_EQ(DataOf(TestValue(VT_EMPTY)), Bytes());
  EXPECT_EQ(DataOf(TestValue(VT_BSTR)), Bytes());
}

TEST_F(SymmetricCryptValuesTest, ByteArraysAreTheirBytes) {
  EXPECT_EQ(DataOf(BytesValue(BytesOf("abc"))), BytesOf("abc"));
  EXPECT_EQ(DataOf(BytesValue(BytesOf("abc"), -3)), BytesOf("abc"));
  EXPECT_EQ(DataOf(BytesValue({})), Bytes());
}

TEST_F(SymmetricCryptValuesTest, ReferencesAreWhatTheyReferTo) {
  TestValue bytes = BytesValue(BytesOf("abc"));
  EXPECT_EQ(DataOf(ReferenceTo(VT_ARRAY | VT_UI1, &bytes->parray)), BytesOf("abc"));
  EXPECT_EQ(DataOf(ReferenceTo(VT_VARIANT, &bytes)), BytesOf("abc"));
  TestValue text = TextValue(OLESTR("abc"));
  EXPECT_EQ(DataOf(ReferenceTo(VT_BSTR, &text->bstrVal)), BytesOf("abc"));
  EXPECT_EQ(DataOf(ReferenceTo(VT_VARIANT, &text)), BytesOf("abc"));
  LONG number = 12;
  EXPECT_EQ(DataOf(ReferenceTo(VT_I4, &number)), BytesOf("12"));
  // Nothing of the caller's was changed.
  EXPECT_EQ(BytesOfArray(bytes), BytesOf("abc"));
}

TEST_F(SymmetricCryptValuesTest, ValuesWithoutATextFail) {
  EXPECT_EQ(EncryptStatus(TestValue(VT_NULL)), DISP_E_TYPEMISMATCH);
  // An array of another type is no byte array here, whatever its size.
  for (const VARTYPE type : {VT_UI4, VT_I2, VT_I1, VT_BSTR, VT_VARIANT}) {
    EXPECT_EQ(EncryptStatus(ArrayValue(type, 2, {})), DISP_E_TYPEMISMATCH) << type;
    EXPECT_EQ(Decrypt(ArrayValue(type, 2, {})).status, DISP_E_TYPEMISMATCH) << type;
  }
  TestValue null_array(static_cast<VARTYPE>(VT_ARRAY | VT_UI1));
  EXPECT_TRUE(FAILED(EncryptStatus(null_array)));
  ExpectNoError();
}

TEST_F(SymmetricCryptValuesTest, AnObjectIsTheTextOfItsDefaultValue) {
  FakeObject text(TextValue(OLESTR("abc")));
  EXPECT_EQ(DataOf(ObjectValue(&text)), BytesOf("abc"));
  EXPECT_EQ(DataOf(UnknownValue(&text)), BytesOf("abc"));
  FakeObject number(NumberValue(255));
  EXPECT_EQ(DataOf(ObjectValue(&number)), BytesOf("255"));
  FakeObject outer(ObjectValue(&number));
  EXPECT_EQ(DataOf(ObjectValue(&outer)), BytesOf("255"));
  outer.value = TestValue();
  EXPECT_EQ(text.references, 1u);
  EXPECT_EQ(number.references, 1u);
}

TEST_F(SymmetricCryptValuesTest, AnObjectWithBytesAsItsDefaultValueFails) {
  FakeObject object(BytesValue(BytesOf("abc")));
  EXPECT_EQ(EncryptStatus(ObjectValue(&object)), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Decrypt(ObjectValue(&object)).status, DISP_E_TYPEMISMATCH);
  TestValue value = ObjectValue(&object);
  EXPECT_EQ(EncryptStatus(ReferenceTo(VT_VARIANT, &value)), DISP_E_TYPEMISMATCH);
  // As a key it has a text, made of the bytes in pairs: here one character, too short.
  EXPECT_EQ(crypt->put_Key(ObjectValue(&object)), E_INVALIDARG);
}

TEST_F(SymmetricCryptValuesTest, ObjectsWithoutADefaultValueFail) {
  FakeObject object(TextValue(OLESTR("abc")));
  object.has_dispatch = false;
  EXPECT_EQ(EncryptStatus(UnknownValue(&object)), E_FAIL);
  EXPECT_EQ(EncryptStatus(UnknownValue(nullptr)), E_FAIL);
  EXPECT_EQ(EncryptStatus(ObjectValue(nullptr)), E_FAIL);
  EXPECT_EQ(object.references, 1u);
}

TEST_F(SymmetricCryptValuesTest, AResultCanBeTheNextData) {
  TestValue value = BytesValue(BytesOfHex(kAesPlain));
  TestValue cipher;
  ASSERT_EQ(crypt->Encrypt(value, VARIANT_TRUE, &cipher), S_OK);
  EXPECT_EQ(Decrypt(cipher).bytes, BytesOfHex(kAesPlain));
  EXPECT_EQ(Decrypt(ReferenceTo(VT_VARIANT, &cipher)).bytes, BytesOfHex(kAesPlain));
}

TEST_F(SymmetricCryptValuesTest, TextKeysAreConvertedByTheCodePage) {
  const TestValue text = TextValue(OLESTR("0123456789abcdef"));
  ASSERT_EQ(crypt->put_Key(text), S_OK);
  EXPECT_EQ(Key(), BytesOf("0123456789abcdef"));
  // Below 0 the text's own 16-bit units, low byte first, for every negative value.
  for (const LONG code_page : {-1, -2}) {
    ASSERT_EQ(crypt->put_codePage(code_page), S_OK);
    ASSERT_EQ(crypt->put_Key(TextValue(OLESTR("01234567"))), S_OK);
    EXPECT_EQ(Key(), BytesOfHex("30003100320033003400350036003700"));
    EXPECT_EQ(crypt->put_Key(TextValue(OLESTR("abc"))), E_INVALIDARG);
  }
  ASSERT_EQ(crypt->put_codePage(99999), S_OK);
  EXPECT_EQ(crypt->put_Key(text), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Key(), BytesOf("(none)"));
}

TEST_F(SymmetricCryptValuesTest, NumbersReferencesAndObjectsAreKeysIfTheirLengthFits) {
  ASSERT_EQ(Init(OLESTR("DES")), S_OK);
  ASSERT_EQ(crypt->put_Key(NumberValue(12345678)), S_OK);
  EXPECT_EQ(Key(), BytesOf("12345678"));
  EXPECT_EQ(crypt->put_Key(TestValue(VT_EMPTY)), E_INVALIDARG);
  EXPECT_EQ(crypt->put_Key(TextValue(OLESTR(""))), E_INVALIDARG);
  EXPECT_EQ(crypt->put_Key(BytesValue({})), E_INVALIDARG);
  EXPECT_EQ(crypt->put_Key(ArrayValue(VT_UI4, 8, {})), DISP_E_TYPEMISMATCH);
  TestValue key = BytesValue(BytesOf("abcdefgh"));
  ASSERT_EQ(crypt->put_Key(ReferenceTo(VT_ARRAY | VT_UI1, &key->parray)), S_OK);
  EXPECT_EQ(Key(), BytesOf("abcdefgh"));
  ASSERT_EQ(crypt->put_Key(ReferenceTo(VT_VARIANT, &key)), S_OK);
  EXPECT_EQ(Key(), BytesOf("abcdefgh"));
  FakeObject object(TextValue(OLESTR("87654321")));
  ASSERT_EQ(crypt->put_Key(ObjectValue(&object)), S_OK);
  EXPECT_EQ(Key(), BytesOf("87654321"));
  EXPECT_EQ(object.references, 1u);
}

}  // namespace
}  // namespace mirolta::test
