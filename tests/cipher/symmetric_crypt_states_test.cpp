// SymmetricCryptObject: its states, what each member does in them, and what it reports.
#include <algorithm>
#include <functional>
#include <vector>

#include "symmetric_crypt_fixture.h"

namespace mirolta::test {
namespace {

using SymmetricCryptStatesTest = SymmetricCryptTest;

// Every member that needs an engine, by name.
struct Call {
  const char* name;
  std::function<HRESULT(ISymmetricCryptObject*)> run;
};
const std::vector<Call>& CallsThatNeedAnEngine() {
  static const std::vector<Call> calls = {
      {"get_Key",
       [](ISymmetricCryptObject* crypt) {
         TestValue key = NumberValue(77);
         const HRESULT status = crypt->get_Key(&key);
         EXPECT_EQ(key->lVal, 77);
         return status;
       }},
      {"put_Key",
       [](ISymmetricCryptObject* crypt) {
         return crypt->put_Key(BytesValue(BytesOfHex(kAesKey)));
       }},
      {"put_Key, not convertible",
       [](ISymmetricCryptObject* crypt) { return crypt->put_Key(TestValue(VT_NULL)); }},
      {"get_BlockSize",
       [](ISymmetricCryptObject* crypt) {
         LONG size = 77;
         const HRESULT status = crypt->get_BlockSize(&size);
         EXPECT_EQ(size, 77);
         return status;
       }},
      {"Encrypt",
       [](ISymmetricCryptObject* crypt) {
         TestValue result = NumberValue(77);
         const HRESULT status = crypt->Encrypt(TextValue(OLESTR("abc")), VARIANT_TRUE, &result);
         EXPECT_EQ(result->lVal, 77);
         return status;
       }},
      {"Decrypt, not convertible",
       [](ISymmetricCryptObject* crypt) {
         TestValue result = NumberValue(77);
         const HRESULT status = crypt->Decrypt(TestValue(VT_NULL), VARIANT_TRUE, &result);
         EXPECT_EQ(result->lVal, 77);
         return status;
       }},
      {"Reset", [](ISymmetricCryptObject* crypt) { return crypt->Reset(0); }},
      {"ResetKey", [](ISymmetricCryptObject* crypt) { return crypt->ResetKey(); }},
      {"get_PadType",
       [](ISymmetricCryptObject* crypt) {
         LONG pad_type = 77;
         const HRESULT status = crypt->get_PadType(&pad_type);
         EXPECT_EQ(pad_type, 77);
         return status;
       }},
      {"put_PadType", [](ISymmetricCryptObject* crypt) { return crypt->put_PadType(4); }},
  };
  return calls;
}

TEST_F(SymmetricCryptStatesTest, WithoutAnEngineAllMembersButInitAndCodePageReportNotInitialized) {
  SetClassDescription(CLSID_SymmetricCryptObject, OLESTR("A description"));
  for (const Call& call : CallsThatNeedAnEngine()) {
    EXPECT_EQ(call.run(crypt.Get()), kNotInitialized) << call.name;
    SCOPED_TRACE(call.name);
    ExpectError(OLESTR("Not initialized."), OLESTR("A description"));
  }
  LONG code_page = 77;
  EXPECT_EQ(crypt->get_codePage(&code_page), S_OK);
  EXPECT_EQ(code_page, 0);
  EXPECT_EQ(crypt->put_codePage(65001), S_OK);
  ExpectNoError();
}

TEST_F(SymmetricCryptStatesTest, TheFreeThreadedClassReportsAsTheSameClass) {
  SetClassDescription(CLSID_SymmetricCryptObject, OLESTR("A description"));
  SetClassDescription(CLSID_SymmetricCryptObjectFree, OLESTR("Another"));
  const auto free = module.Create<ISymmetricCryptObject>(CLSID_SymmetricCryptObjectFree,
                                                         IID_ISymmetricCryptObject);
  ASSERT_TRUE(free);
  EXPECT_EQ(free->ResetKey(), kNotInitialized);
  ExpectError(OLESTR("Not initialized."), OLESTR("A description"));
}

TEST_F(SymmetricCryptStatesTest, NullOutPointersAreReportedFirst) {
  for (const bool has_engine : {false, true}) {
    if (has_engine) StartAes();
    EXPECT_EQ(crypt->get_Key(nullptr), E_POINTER);
    EXPECT_EQ(crypt->get_BlockSize(nullptr), E_POINTER);
    EXPECT_EQ(crypt->get_codePage(nullptr), E_POINTER);
    EXPECT_EQ(crypt->get_PadType(nullptr), E_POINTER);
    EXPECT_EQ(crypt->Encrypt(TextValue(OLESTR("abc")), VARIANT_TRUE, nullptr), E_POINTER);
    EXPECT_EQ(crypt->Decrypt(TestValue(VT_NULL), VARIANT_TRUE, nullptr), E_POINTER);
    ExpectNoError();
  }
  // Nothing of the refused call was taken.
  EXPECT_EQ(Encrypted(BytesOfHex(kAesPlain)), BytesOfHex(kAesCipher));
}

TEST_F(SymmetricCryptStatesTest, WithoutAKeyOnlyTheTransformsReportNotInitialized) {
  ASSERT_EQ(Init(OLESTR("AES")), S_OK);
  EXPECT_EQ(Encrypt(TextValue(OLESTR("abc"))).status, kNotInitialized);
  ExpectError(OLESTR("Not initialized."));
  EXPECT_EQ(Decrypt(TextValue(OLESTR("abc"))).status, kNotInitialized);
  ExpectError(OLESTR("Not initialized."));
  // Seen before the data.
  EXPECT_EQ(Encrypt(TestValue(VT_NULL)).status, kNotInitialized);
  ExpectError(OLESTR("Not initialized."));
  EXPECT_EQ(Key(), BytesOf("(none)"));
  EXPECT_EQ(crypt->Reset(0), S_OK);
  EXPECT_EQ(crypt->ResetKey(), S_OK);
  EXPECT_EQ(PadType(), 0);
  EXPECT_EQ(crypt->put_PadType(4), S_OK);
  ExpectNoError();
}

TEST_F(SymmetricCryptStatesTest, InitTakesExactNamesOnly) {
  SetClassDescription(CLSID_SymmetricCryptObject, OLESTR("A description"));
  const struct {
    const char* name;
    TestValue value;
  } rows[] = {{"lower case", TextValue(OLESTR("aes"))},
              {"mixed case", TextValue(OLESTR("Aes"))},
              {"too short", TextValue(OLESTR("AE"))},
              {"too long", TextValue(OLESTR("AESX"))},
              {"space before", TextValue(OLESTR(" AES"))},
              {"space behind", TextValue(OLESTR("AES "))},
              {"lower case of DES", TextValue(OLESTR("des"))},
              {"prefix", TextValue(OLESTR("3DES"))},
              {"zero inside", TextValue(OLESTR("AES\0X"))},
              {"empty text", TextValue(OLESTR(""))},
              {"empty", TestValue(VT_EMPTY)},
              {"zero", NumberValue(0)}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    StartAes();
    EXPECT_EQ(crypt->Init(row.value), kNotFound);
    ExpectError(OLESTR("Algorithm not found."), OLESTR("A description"));
    EXPECT_FALSE(HasEngine());
    SetErrorInfo(0, nullptr);
  }
}

TEST_F(SymmetricCryptStatesTest, ANameThatDoesNotConvertLeavesNoEngine) {
  StartAes();
  EXPECT_EQ(crypt->Init(TestValue(VT_NULL)), DISP_E_TYPEMISMATCH);
  ExpectNoError();
  EXPECT_FALSE(HasEngine());
  StartAes();
  EXPECT_EQ(crypt->Init(ArrayValue(VT_UI4, 3, {})), DISP_E_TYPEMISMATCH);
  EXPECT_FALSE(HasEngine());
}

TEST_F(SymmetricCryptStatesTest, InitTakesValuesWhoseTextIsTheName) {
  TestValue name = TextValue(OLESTR("DES"));
  ASSERT_EQ(crypt->Init(ReferenceTo(VT_BSTR, &name->bstrVal)), S_OK);
  EXPECT_TRUE(HasEngine());
  ASSERT_EQ(crypt->Init(ReferenceTo(VT_VARIANT, &name)), S_OK);
  EXPECT_TRUE(HasEngine());
  FakeObject object(TextValue(OLESTR("AES")));
  ASSERT_EQ(crypt->Init(ObjectValue(&object)), S_OK);
  LONG size = 0;
  EXPECT_EQ(crypt->get_BlockSize(&size), S_OK);
  EXPECT_EQ(size, 16);
  EXPECT_EQ(object.references, 1u);
}

TEST_F(SymmetricCryptStatesTest, ANewEngineHasNoKeyNoPadTypeAndNothingQueued) {
  StartAes();
  ASSERT_EQ(crypt->put_PadType(4), S_OK);
  EXPECT_EQ(Encrypted(BytesOf("12345"), VARIANT_FALSE), Bytes());
  ASSERT_EQ(Init(OLESTR("AES")), S_OK);
  EXPECT_EQ(PadType(), 0);
  EXPECT_EQ(Key(), BytesOf("(none)"));
  ASSERT_EQ(PutKey(kAesKey), S_OK);
  EXPECT_EQ(Encrypted({}), Bytes());
}

TEST_F(SymmetricCryptStatesTest, BlockSizeIsThatOfTheAlgorithm) {
  LONG size = 0;
  ASSERT_EQ(Init(OLESTR("AES")), S_OK);
  EXPECT_EQ(crypt->get_BlockSize(&size), S_OK);
  EXPECT_EQ(size, 16);
  ASSERT_EQ(Init(OLESTR("DES")), S_OK);
  EXPECT_EQ(crypt->get_BlockSize(&size), S_OK);
  EXPECT_EQ(size, 8);
}

TEST_F(SymmetricCryptStatesTest, CodePageIsKeptAsGiven) {
  for (const LONG code_page : {65001, -1, -2, 0x7FFFFFFF, -0x7FFFFFFF - 1, 99999, 0}) {
    EXPECT_EQ(crypt->put_codePage(code_page), S_OK);
    LONG read = 77;
    EXPECT_EQ(crypt->get_codePage(&read), S_OK);
    EXPECT_EQ(read, code_page);
  }
  // It belongs to the object, not to the engine.
  ASSERT_EQ(crypt->put_codePage(-2), S_OK);
  StartAes();
  ASSERT_EQ(crypt->ResetKey(), S_OK);
  LONG read = 77;
  EXPECT_EQ(crypt->get_codePage(&read), S_OK);
  EXPECT_EQ(read, -2);
}

TEST_F(SymmetricCryptStatesTest, OnlyKeyLengthsOfTheAlgorithmAreTaken) {
  const struct {
    const OLECHAR* name;
    std::vector<size_t> lengths;
  } rows[] = {{OLESTR("AES"), {16, 24, 32}}, {OLESTR("DES"), {8, 16, 24}}};
  for (const auto& row : rows) {
    TestValue name(VT_BSTR);
    name->bstrVal = SysAllocString(row.name);
    ASSERT_EQ(crypt->Init(name), S_OK);
    for (size_t length = 0; length <= 40; ++length) {
      const bool accepted =
          std::find(row.lengths.begin(), row.lengths.end(), length) != row.lengths.end();
      ASSERT_EQ(crypt->put_Key(BytesValue(Bytes(row.lengths[0], 1))), S_OK);
      const Bytes key(length, 2);
      EXPECT_EQ(crypt->put_Key(BytesValue(key)), accepted ? S_OK : E_INVALIDARG) << length;
      ExpectNoError();
      EXPECT_EQ(Key(), accepted ? key : BytesOf("(none)")) << length;
      EXPECT_EQ(Encrypt(BytesValue({})).status, accepted ? S_OK : kNotInitialized) << length;
      SetErrorInfo(0, nullptr);
    }
  }
}

TEST_F(SymmetricCryptStatesTest, AKeyIsTakenAsACopyAndGivenAsACopy) {
  ASSERT_EQ(Init(OLESTR("AES")), S_OK);
  TestValue key = BytesValue(BytesOfHex(kAesKey), 5);
  ASSERT_EQ(crypt->put_Key(key), S_OK);
  LONG index = 5;
  uint8_t changed = 0xFF;
  ASSERT_EQ(SafeArrayPutElement(key->parray, &index, &changed), S_OK);
  EXPECT_EQ(Key(), BytesOfHex(kAesKey));
  TestValue read;
  ASSERT_EQ(crypt->get_Key(&read), S_OK);
  index = 0;
  ASSERT_EQ(SafeArrayPutElement(read->parray, &index, &changed), S_OK);
  EXPECT_EQ(Key(), BytesOfHex(kAesKey));
  EXPECT_EQ(Encrypted(BytesOfHex(kAesPlain)), BytesOfHex(kAesCipher));
}

TEST_F(SymmetricCryptStatesTest, SettingAKeyDropsWhatIsQueued) {
  StartAes();
  EXPECT_EQ(Encrypted(BytesOf("12345"), VARIANT_FALSE), Bytes());
  EXPECT_EQ(Decrypted(BytesOf("123"), VARIANT_FALSE), Bytes());
  ASSERT_EQ(crypt->put_PadType(4), S_OK);
  ASSERT_EQ(PutKey(kAesKey), S_OK);
  EXPECT_EQ(PadType(), 4);
  EXPECT_EQ(Encrypted({}), Bytes());
  EXPECT_EQ(Decrypted(BytesOfHex(kAesCipher)), BytesOfHex(kAesPlain));
}

TEST_F(SymmetricCryptStatesTest, ARefusedKeyLeavesNone) {
  StartAes();
  EXPECT_EQ(crypt->put_Key(TestValue(VT_NULL)), DISP_E_TYPEMISMATCH);
  ExpectNoError();
  EXPECT_EQ(Key(), BytesOf("(none)"));
  EXPECT_EQ(Encrypt(BytesValue({})).status, kNotInitialized);
}

TEST_F(SymmetricCryptStatesTest, ResetDropsWhatIsQueuedWhateverItsArgument) {
  for (const LONG what : {0, 12345, 1, 2, -1}) {
    StartAes();
    ASSERT_EQ(crypt->put_PadType(4), S_OK);
    EXPECT_EQ(Encrypted(BytesOf("12345"), VARIANT_FALSE), Bytes());
    EXPECT_EQ(Decrypted(BytesOf("123"), VARIANT_FALSE), Bytes());
    ASSERT_EQ(crypt->Reset(what), S_OK);
    EXPECT_EQ(Encrypted({}), Bytes()) << what;
    EXPECT_EQ(Decrypted(BytesOfHex(kAesCipher)), BytesOfHex(kAesPlain)) << what;
    EXPECT_EQ(Key(), BytesOfHex(kAesKey));
    EXPECT_EQ(PadType(), 4);
  }
}

TEST_F(SymmetricCryptStatesTest, ResetKeyDropsTheKeyAndWhatIsQueued) {
  StartAes();
  ASSERT_EQ(crypt->put_PadType(4), S_OK);
  EXPECT_EQ(Encrypted(BytesOf("12345"), VARIANT_FALSE), Bytes());
  ASSERT_EQ(crypt->ResetKey(), S_OK);
  EXPECT_EQ(Key(), BytesOf("(none)"));
  EXPECT_EQ(Encrypt(BytesValue({})).status, kNotInitialized);
  ExpectError(OLESTR("Not initialized."));
  EXPECT_EQ(Decrypt(BytesValue({})).status, kNotInitialized);
  ASSERT_EQ(PutKey(kAesKey), S_OK);
  EXPECT_EQ(PadType(), 4);
  EXPECT_EQ(Encrypted({}), Bytes());
}

TEST_F(SymmetricCryptStatesTest, PadTypeIsKeptAsGiven) {
  ASSERT_EQ(Init(OLESTR("DES")), S_OK);
  for (const LONG pad_type : {4, -1, -2, 0x7FFFFFFF, -0x7FFFFFFF - 1, 0x141, 0}) {
    EXPECT_EQ(crypt->put_PadType(pad_type), S_OK);
    EXPECT_EQ(PadType(), pad_type);
  }
}

TEST_F(SymmetricCryptStatesTest, SupportsErrorInformationForItsInterfaceOnly) {
  OwnedReference<ISupportErrorInfo> support;
  ASSERT_EQ(support.Query(crypt.Get(), IID_ISupportErrorInfo), S_OK);
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_ISymmetricCryptObject), S_OK);
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IHashObject), S_FALSE);
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IDispatch), S_FALSE);
}

}  // namespace
}  // namespace mirolta::test
