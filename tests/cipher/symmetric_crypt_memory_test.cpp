// SymmetricCryptObject: short memory, and what freed memory still holds.
#include "memory_watch.h"
#include "portable/test_hooks.h"
#include "symmetric_crypt_fixture.h"

namespace mirolta::test {
namespace {

using SymmetricCryptMemoryTest = SymmetricCryptTest;

constexpr OLECHAR kAes[] = OLESTR("AES");

// A text as plaintext and a key, each unlike anything else in memory.
const Bytes kSecret = BytesOf("Zq7#pL1!vM9@xT4$");
const Bytes kOtherKey = BytesOf("bN6&wR2*kJ8(hF5)");

TEST_F(SymmetricCryptMemoryTest, WithoutMemoryInitLeavesNoEngineAndDoesNotFail) {
  StartAes();
  const TestValue name = TextValue(kAes);
  HRESULT status = E_FAIL;
  {
    const FailAllocationsAfter failing(0);
    status = crypt->Init(name);
  }
  EXPECT_EQ(status, S_OK);
  EXPECT_FALSE(HasEngine());
  EXPECT_EQ(crypt->put_PadType(1), kNotInitialized);
  EXPECT_EQ(PutKey(kAesKey), kNotInitialized);
  StartAes();
  EXPECT_EQ(Encrypted(BytesOfHex(kAesPlain)), BytesOfHex(kAesCipher));
}

TEST_F(SymmetricCryptMemoryTest, AnEngineWithoutQueuesFailsUntilMemoryIsBack) {
  const TestValue name = TextValue(kAes);
  {
    const FailAllocationsAfter failing(1);
    EXPECT_EQ(crypt->Init(name), S_OK);
  }
  ASSERT_TRUE(HasEngine());
  ASSERT_EQ(PutKey(kAesKey), S_OK);
  EXPECT_EQ(Encrypted(BytesOfHex(kAesPlain)), BytesOfHex(kAesCipher));
}

TEST_F(SymmetricCryptMemoryTest, WithoutMemoryAKeyIsNotTaken) {
  StartAes();
  const TestValue key = BytesValue(kOtherKey);
  {
    const FailAllocationsAfter failing(0);
    EXPECT_EQ(crypt->put_Key(key), E_OUTOFMEMORY);
  }
  EXPECT_EQ(Key(), BytesOf("(none)"));
  EXPECT_EQ(Encrypt(BytesValue({})).status, kNotInitialized);
  ASSERT_EQ(crypt->put_Key(key), S_OK);
  EXPECT_EQ(Key(), kOtherKey);
}

TEST_F(SymmetricCryptMemoryTest, WithoutMemoryAReadKeyIsEmpty) {
  StartAes();
  TestValue key = NumberValue(77);
  MiroltaFailAllocationAfter(0);
  const HRESULT status = crypt->get_Key(&key);
  MiroltaFailAllocationAfter(-1);
  EXPECT_EQ(status, E_OUTOFMEMORY);
  EXPECT_EQ(V_VT(&key), VT_EMPTY);
  EXPECT_EQ(Key(), BytesOfHex(kAesKey));
}

TEST_F(SymmetricCryptMemoryTest, WithoutMemoryDataIsNotTaken) {
  StartAes();
  Bytes plain(100001, 'p');
  const TestValue data = BytesValue(plain);
  TestValue result;
  HRESULT status = S_OK;
  {
    const FailAllocationsAfter failing(0);
    status = crypt->Encrypt(data, VARIANT_FALSE, &result);
  }
  EXPECT_EQ(status, E_OUTOFMEMORY);
  ExpectNoError();
  EXPECT_EQ(Encrypted({}), Bytes());
  const Bytes decrypted = Decrypted(Encrypted(plain));
  plain.resize(100016);
  EXPECT_TRUE(decrypted == plain);
}

TEST_F(SymmetricCryptMemoryTest, WithoutMemoryForAnArrayOutputIsGivenByTheNextCall) {
  StartAes();
  const TestValue data = BytesValue(BytesOfHex(kAesPlain));
  for (LONG allowed = 0; allowed < 2; ++allowed) {
    TestValue result = NumberValue(77);
    MiroltaFailAllocationAfter(allowed);
    const HRESULT status = crypt->Encrypt(data, VARIANT_TRUE, &result);
    const bool failed = MiroltaAllocationHasFailed();
    MiroltaFailAllocationAfter(-1);
    ASSERT_TRUE(failed) << allowed;
    EXPECT_EQ(status, E_OUTOFMEMORY) << allowed;
    EXPECT_EQ(Encrypted({}), BytesOfHex(kAesCipher)) << allowed;
  }
}

// The bytes are read without copying, and whole blocks go to the result without a queue.
TEST_F(SymmetricCryptMemoryTest, WholeBlocksNeedMemoryForTheResultOnly) {
  constexpr LONG kAllocationsOfAnArray = 2;  // what describes it, and its elements
  const Bytes plain(1 << 20, 'p');
  const TestValue array = BytesValue(plain);
  SAFEARRAY* place = V_ARRAY(&array.operator const VARIANT&());
  const VARIANT values[] = {array, ReferenceTo(VT_ARRAY | VT_UI1, &place)};
  for (const bool is_aes : {true, false}) {
    ASSERT_NO_FATAL_FAILURE(Start(is_aes));
    const Bytes cipher = Encrypted(plain);
    for (const VARIANT& value : values) {
      // The first time too: with a new key the queues are as small as they get.
      ASSERT_NO_FATAL_FAILURE(Start(is_aes));
      TestValue result;
      HRESULT status = E_FAIL;
      {
        const FailAllocationsAfter none(0);
        MiroltaFailAllocationAfter(kAllocationsOfAnArray);
        status = crypt->Encrypt(value, VARIANT_FALSE, &result);
        MiroltaFailAllocationAfter(-1);
      }
      EXPECT_EQ(status, S_OK) << is_aes << V_VT(&value);
      EXPECT_TRUE(BytesOfArray(result) == cipher) << is_aes << V_VT(&value);
    }
  }
}

TEST_F(SymmetricCryptMemoryTest, WithoutMemoryForTheReportTheStatusIsTheSame) {
  TestValue key;
  MiroltaFailAllocationAfter(0);
  const HRESULT status = crypt->get_Key(&key);
  MiroltaFailAllocationAfter(-1);
  EXPECT_EQ(status, kNotInitialized);
  ExpectNoError();
}

// Runs `ends` on an engine that holds key and pending plaintext; freed memory must hold neither.
template <typename Ends>
void ExpectWiped(const std::vector<Bytes>& secrets, Ends ends) {
  const WatchFreedMemory watch(secrets);
  ends();
  EXPECT_GT(watch.Freed(), 0);
  EXPECT_EQ(watch.FreedWithSecret(), 0);
}

struct Ending {
  const char* name;
  void (*end)(OwnedReference<ISymmetricCryptObject>& crypt);
};

const Ending kEndings[] = {
    {"ResetKey", [](auto& crypt) { EXPECT_EQ(crypt->ResetKey(), S_OK); }},
    {"Init", [](auto& crypt) { EXPECT_EQ(crypt->Init(TextValue(kAes)), S_OK); }},
    {"UnknownAlgorithm",
     [](auto& crypt) { EXPECT_EQ(crypt->Init(TextValue(OLESTR("no such"))), kNotFound); }},
    {"LastRelease", [](auto& crypt) { crypt.Reset(); }},
    {"AnotherKey",
     [](auto& crypt) { EXPECT_EQ(crypt->put_Key(BytesValue(BytesOfHex(kAesKey))), S_OK); }},
};

class SymmetricCryptWipeTest : public SymmetricCryptTest,
                               public testing::WithParamInterface<Ending> {
 protected:
  // 15 bytes wait for encryption.
  void Fill() {
    ASSERT_EQ(Init(kAes), S_OK);
    ASSERT_EQ(crypt->put_Key(BytesValue(kOtherKey)), S_OK);
    ASSERT_EQ(Encrypted(Pending(), VARIANT_FALSE), Bytes());
  }
  Bytes Pending() const { return Head(kSecret, kSecret.size() - 1); }
};

TEST_P(SymmetricCryptWipeTest, WipesKeyAndPlaintext) {
  const std::vector<Bytes> secrets = {kOtherKey, Pending()};
  Fill();
  ExpectWiped(secrets, [&] { GetParam().end(crypt); });
}

INSTANTIATE_TEST_SUITE_P(Endings, SymmetricCryptWipeTest, testing::ValuesIn(kEndings),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(SymmetricCryptMemoryTest, ResetWipesPlaintext) {
  const std::vector<Bytes> secrets = {Head(kSecret, 15)};
  ASSERT_EQ(Init(kAes), S_OK);
  ASSERT_EQ(crypt->put_Key(BytesValue(kOtherKey)), S_OK);
  ASSERT_EQ(Encrypted(secrets[0], VARIANT_FALSE), Bytes());
  ExpectWiped(secrets, [&] { EXPECT_EQ(crypt->Reset(0), S_OK); });
}

TEST_F(SymmetricCryptMemoryTest, ResetKeyFreesTheStorageOfTheQueues) {
  StartAes();
  const char nothing[] = "not in memory";
  const WatchFreedMemory watch(nothing, sizeof nothing);
  EXPECT_EQ(crypt->ResetKey(), S_OK);
  EXPECT_EQ(watch.Freed(), 5);  // the key and four queues
}

// On both sides of the module's border.
TEST_F(SymmetricCryptMemoryTest, TheWatchSeesMemoryOfModuleAndTest) {
  const long before = LiveAllocations();
  ASSERT_EQ(Init(kAes), S_OK);
  EXPECT_GT(LiveAllocations(), before);
  const WatchFreedMemory watch(kSecret.data(), kSecret.size());
  { const Bytes copy = kSecret; }
  EXPECT_EQ(watch.FreedWithSecret(), 1);
}

}  // namespace
}  // namespace mirolta::test
