// HashObject with a key: HMACs, and what sets, keeps and drops a key.
#include "calling_object.h"
#include "hash_object_fixture.h"
#include "memory_watch.h"

namespace mirolta::test {
namespace {

class HashObjectKeyTest : public Md5ObjectTest {
 protected:
  HRESULT PutKey(std::string_view bytes) { return hash->put_Key(BytesValue(BytesOf(bytes))); }
  HRESULT PutKey(const OLECHAR* text) { return hash->put_Key(TextValue(text)); }
  // The key as bytes; a mark if there is none.
  Bytes Key() {
    TestValue key = NumberValue(77);
    EXPECT_EQ(hash->get_Key(&key), S_OK);
    return V_VT(&key) == VT_EMPTY ? BytesOf("(none)") : BytesOfArray(key);
  }
};

// RFC 2202 and RFC 4231, test case 2: the key is "Jefe".
constexpr std::string_view kQuestion = "what do ya want for nothing?";
constexpr OLECHAR kAnswerMd5[] = OLESTR("750C783E6AB0B503EAA86E310A5DB738");

TEST_F(HashObjectKeyTest, WithAKeyDigestsAreHmacs) {
  const struct {
    const OLECHAR* algorithm;
    Text hmac;
  } rows[] = {
      {OLESTR("MD5"), kAnswerMd5},
      {OLESTR("SHA1"), OLESTR("EFFCDF6AE5EB2FA2D27416D5F184DF9C259A7C79")},
      {OLESTR("SHA256"),
       OLESTR("5BDCC146BF60754E6A042426089575C75A003F089D2739839DEC58B964EC3843")},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.hmac.size());
    ASSERT_EQ(Init(row.algorithm), S_OK);
    ASSERT_EQ(PutKey("Jefe"), S_OK);
    EXPECT_EQ(Key(), BytesOf("Jefe"));
    EXPECT_EQ(DigestOf(kQuestion), row.hmac);
    EXPECT_EQ(DigestOf(kQuestion), row.hmac);
  }
}

TEST_F(HashObjectKeyTest, ReadingAnOpenHmacEndsIt) {
  ASSERT_EQ(PutKey("Jefe"), S_OK);
  EXPECT_EQ(hash->HashUpdate(BytesValue(BytesOf(kQuestion)), -1), S_OK);
  EXPECT_EQ(Value(), kAnswerMd5);
  EXPECT_EQ(Value(), kAnswerMd5);
  EXPECT_EQ(hash->Reset(), S_OK);  // keeps the key
  EXPECT_EQ(hash->HashUpdate(BytesValue(BytesOf(kQuestion)), -1), S_OK);
  EXPECT_EQ(hash->HashFinalize(), S_OK);
  EXPECT_EQ(Value(), kAnswerMd5);
}

TEST_F(HashObjectKeyTest, SettingAKeyDropsWhatWasAbsorbed) {
  EXPECT_EQ(Update(OLESTR("dropped")), S_OK);
  ASSERT_EQ(PutKey("Jefe"), S_OK);
  EXPECT_EQ(hash->HashUpdate(BytesValue(BytesOf(kQuestion)), -1), S_OK);
  EXPECT_EQ(Value(), kAnswerMd5);
}

TEST_F(HashObjectKeyTest, ResetKeyMakesDigestsPlainAgain) {
  EXPECT_EQ(Key(), BytesOf("(none)"));
  ASSERT_EQ(PutKey("Jefe"), S_OK);
  EXPECT_EQ(Update(OLESTR("dropped")), S_OK);
  EXPECT_EQ(hash->ResetKey(), S_OK);
  EXPECT_EQ(Key(), BytesOf("(none)"));
  EXPECT_EQ(Value(), kEmptyMd5);
  EXPECT_EQ(DigestOf("abc"), kAbcMd5);
}

TEST_F(HashObjectKeyTest, EmptyDataHasAnHmac) {
  ASSERT_EQ(PutKey("Jefe"), S_OK);
  const Text of_nothing = Value();
  EXPECT_NE(of_nothing, kEmptyMd5);
  EXPECT_EQ(Data(BytesValue({})), S_FALSE);
  EXPECT_EQ(Value(), of_nothing);
  EXPECT_EQ(Hashed(OLESTR("")), of_nothing);
}

TEST_F(HashObjectKeyTest, AKeyLongerThanABlockCountsAsItsDigest) {
  const std::string block(64, 'k');
  const std::string longer(65, 'k');
  ASSERT_EQ(PutKey(block), S_OK);
  const Text of_block = DigestOf("abc");
  ASSERT_EQ(PutKey(longer), S_OK);
  EXPECT_EQ(Key(), BytesOf(longer));
  const Text of_longer = DigestOf("abc");
  EXPECT_NE(of_block, of_longer);
  // The digest of the long key as key gives the same.
  ASSERT_EQ(hash->ResetKey(), S_OK);
  ASSERT_EQ(Data(BytesValue(BytesOf(longer))), S_OK);
  TestValue digest;
  ASSERT_EQ(hash->get_BinaryValue(&digest), S_OK);
  ASSERT_EQ(hash->put_Key(digest), S_OK);
  EXPECT_EQ(DigestOf("abc"), of_longer);
}

TEST_F(HashObjectKeyTest, TextKeysAreConvertedByTheCodePageProperty) {
  const struct {
    LONG code_page;
    Bytes key;
  } rows[] = {
      {65001, {0xC3, 0xA9, 0x78}},
      {1252, {0xE9, 0x78}},
      {-1, {0xE9, 0x00, 0x78, 0x00}},
      // Low byte first for every negative number, other than data.
      {-2, {0xE9, 0x00, 0x78, 0x00}},
      {-99, {0xE9, 0x00, 0x78, 0x00}},
  };
  for (const auto& expected : rows) {
    ASSERT_EQ(hash->put_codePage(expected.code_page), S_OK);
    ASSERT_EQ(PutKey(OLESTR("\u00E9x")), S_OK);
    EXPECT_EQ(Key(), expected.key) << expected.code_page;
  }
}

TEST_F(HashObjectKeyTest, NumbersAndReferencesAreKeysToo) {
  ASSERT_EQ(hash->put_Key(NumberValue(42)), S_OK);
  EXPECT_EQ(Key(), BytesOf("42"));
  TestValue text = TextValue(OLESTR("key"));
  TestValue bytes = BytesValue(BytesOf("bytes"), 3);
  ASSERT_EQ(hash->put_Key(ReferenceTo(VT_VARIANT, &text)), S_OK);
  EXPECT_EQ(Key(), BytesOf("key"));
  ASSERT_EQ(hash->put_Key(ReferenceTo(VT_BSTR, &text->bstrVal)), S_OK);
  EXPECT_EQ(Key(), BytesOf("key"));
  ASSERT_EQ(hash->put_Key(ReferenceTo(VT_ARRAY | VT_UI1, &bytes->parray)), S_OK);
  EXPECT_EQ(Key(), BytesOf("bytes"));
}

TEST_F(HashObjectKeyTest, AKeyThatDoesNotConvertLeavesNone) {
  ASSERT_EQ(PutKey("Jefe"), S_OK);
  EXPECT_EQ(hash->put_Key(TestValue(VT_NULL)), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Key(), BytesOf("(none)"));
  ASSERT_EQ(PutKey("Jefe"), S_OK);
  ASSERT_EQ(hash->put_codePage(77777), S_OK);
  EXPECT_EQ(PutKey(OLESTR("text")), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Key(), BytesOf("(none)"));
  ASSERT_EQ(PutKey("Jefe"), S_OK);  // bytes need no code page
  EXPECT_EQ(PutKey(""), E_UNEXPECTED);
  EXPECT_EQ(Key(), BytesOf("(none)"));
  ExpectNoError();
}

TEST_F(HashObjectKeyTest, AByteArrayOfTwoDimensionsIsNoKey) {
  SAFEARRAYBOUND bounds[] = {{4, 0}, {4, 0}};
  TestValue key(VT_ARRAY | VT_UI1);
  key->parray = SafeArrayCreate(VT_UI1, 2, bounds);
  ASSERT_EQ(PutKey("Jefe"), S_OK);
  EXPECT_EQ(hash->put_Key(key), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Key(), BytesOf("(none)"));
}

// The old key goes before the new one is read, and the code page is the one at the call.
TEST_F(HashObjectKeyTest, AKeyObjectSeesNoKeyAndChangesTheCodePageForLaterCallsOnly) {
  ASSERT_EQ(PutKey("Jefe"), S_OK);
  ASSERT_EQ(hash->put_codePage(1252), S_OK);
  Bytes seen;
  CallingObject object([&] {
    seen = Key();
    EXPECT_EQ(hash->put_codePage(-1), S_OK);
  });
  TestValue key = ObjectValue(&object);
  ASSERT_EQ(hash->put_Key(key), S_OK);
  EXPECT_EQ(seen, BytesOf("(none)"));
  EXPECT_EQ(Key(), BytesOf("abc"));
  // The same for data.
  ASSERT_EQ(hash->ResetKey(), S_OK);
  ASSERT_EQ(hash->put_codePage(1252), S_OK);
  ASSERT_EQ(Data(key), S_OK);
  EXPECT_EQ(Value(), kAbcMd5);
  // A key that is set from inside is replaced, one that then cannot be read leaves none.
  CallingObject sets([&] { EXPECT_EQ(PutKey("inner"), S_OK); });
  key = ObjectValue(&sets);
  ASSERT_EQ(hash->put_codePage(0), S_OK);
  ASSERT_EQ(hash->put_Key(key), S_OK);
  EXPECT_EQ(Key(), BytesOf("abc"));
  sets.status = E_ACCESSDENIED;
  EXPECT_EQ(hash->put_Key(key), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Key(), BytesOf("(none)"));
}

TEST_F(HashObjectKeyTest, KeysAreWipedBeforeTheirMemoryIsFreed) {
  constexpr std::string_view kSecret = "a secret of twenty-nine bytes";
  const TestValue key = BytesValue(BytesOf(kSecret));
  const WatchFreedMemory watch(kSecret.data(), kSecret.size());
  ASSERT_EQ(hash->put_Key(key), S_OK);
  ASSERT_EQ(hash->ResetKey(), S_OK);
  ASSERT_EQ(hash->put_Key(key), S_OK);
  ASSERT_EQ(hash->put_Key(NumberValue(1)), S_OK);
  ASSERT_EQ(hash->put_Key(key), S_OK);
  ASSERT_EQ(Init(OLESTR("SHA1")), S_OK);
  ASSERT_EQ(hash->put_Key(key), S_OK);
  hash.Reset();
  EXPECT_GT(watch.Freed(), 0);
  EXPECT_EQ(watch.FreedWithSecret(), 0);
}

}  // namespace
}  // namespace mirolta::test
