// RSACrypt when memory is short, and what freed memory keeps of secrets.
#include <algorithm>
#include <functional>
#include <vector>

#include "memory_watch.h"
#include "rsa_crypt_object.h"
#include "rsa_testing.h"
#include "test_module.h"
#include "test_values.h"

namespace mirolta::test {
namespace {

using Put = HRESULT (STDMETHODCALLTYPE IRSACrypt::*)(VARIANT);
using Get = HRESULT (STDMETHODCALLTYPE IRSACrypt::*)(VARIANT*);
constexpr Get kGets[] = {&IRSACrypt::get_Modulus, &IRSACrypt::get_PublicExp,
                         &IRSACrypt::get_SecretExp, &IRSACrypt::get_P, &IRSACrypt::get_Q};

class RsaCryptMemoryTest : public PlannedTest {
 protected:
  void SetUp() override {
    PlannedTest::SetUp();
    SetErrorInfo(0, nullptr);
    Create();
    RsaKey key;
    ASSERT_EQ(BuildRandomKey(key, 64, true), S_OK);
    const BigInt* const numbers[] = {&key.n, &key.e, &key.d, &key.p, &key.q};
    for (size_t i = 0; i < 5; ++i) {
      key_bytes[i] = BytesOf(*numbers[i]);
      key_values.push_back(BytesValue(key_bytes[i]));
    }
  }
  void Create() {
    ASSERT_EQ(CreateRSACrypt(nullptr, IID_IRSACrypt, reinterpret_cast<void**>(rsa.Put())), S_OK);
  }
  void Load() {
    constexpr Put kPuts[] = {&IRSACrypt::put_Modulus, &IRSACrypt::put_PublicExp,
                             &IRSACrypt::put_SecretExp, &IRSACrypt::put_P, &IRSACrypt::put_Q};
    for (size_t i = 0; i < 5; ++i) {
      const Put put = kPuts[i];
      if ((rsa.Get()->*put)(key_values[i]) != S_OK) ADD_FAILURE();
    }
  }
  bool KeyIsAsLoaded() {
    for (size_t i = 0; i < 5; ++i) {
      const Get get = kGets[i];
      TestValue value;
      if ((rsa.Get()->*get)(&value) != S_OK || BytesOfArray(value) != key_bytes[i]) {
        return false;
      }
    }
    return true;
  }

  // Runs a call with ever more allocations granted until it succeeds; every failure before leaves
  // the key. Returns the number of failures.
  int FailAtEach(const std::function<HRESULT(VARIANT*)>& call) {
    for (int allowed = 0;; ++allowed) {
      VARIANT out;
      VariantInit(&out);
      const long live = LiveAllocations();
      HRESULT status = S_OK;
      {
        const FailAllocationsAfter fail(allowed);
        status = call(&out);
      }
      if (status == S_OK) {
        VariantClear(&out);
        return allowed;
      }
      EXPECT_EQ(status, E_OUTOFMEMORY);
      EXPECT_EQ(V_VT(&out), VT_EMPTY);
      EXPECT_EQ(LiveAllocations(), live) << allowed;
      EXPECT_TRUE(KeyIsAsLoaded()) << allowed;
      if (status != E_OUTOFMEMORY || HasFailure()) return -1;
    }
  }

  TestModule module;
  OwnedReference<IRSACrypt> rsa;
  Bytes key_bytes[5];  // n, e, d, p, q
  std::vector<TestValue> key_values;
};

TEST_F(RsaCryptMemoryTest, WithoutMemoryEveryMemberLeavesTheKey) {
  Load();
  ASSERT_TRUE(KeyIsAsLoaded());
  const TestValue data = BytesValue(Bytes(63, 0x35));
  EXPECT_GE(FailAtEach([&](VARIANT* out) { return rsa->Encrypt(data, out); }), 3);
  EXPECT_GE(FailAtEach([&](VARIANT* out) { return rsa->Decrypt(data, out); }), 3);
  EXPECT_GE(FailAtEach([&](VARIANT* out) { return rsa->DecryptPQ(data, out); }), 10);
  for (const Get get : kGets) {
    EXPECT_GE(FailAtEach([&](VARIANT* out) { return (rsa.Get()->*get)(out); }), 1);
  }
  const TestValue longer = BytesValue(Bytes(200, 0x77));
  EXPECT_GE(FailAtEach([&](VARIANT*) { return rsa->put_P(longer); }), 1);
  Load();
  EXPECT_GE(FailAtEach([&](VARIANT*) { return rsa->put_Q(longer); }), 2);
}

// Primes of one limb have a path of their own, whose memory is short for long data only.
TEST_F(RsaCryptMemoryTest, WithoutMemoryLongDataIsNotDecryptedByShortPrimes) {
  RsaKey key;
  ASSERT_EQ(BuildRandomKey(key, 6, true), S_OK);
  const BigInt* const numbers[] = {&key.n, &key.e, &key.d, &key.p, &key.q};
  for (size_t i = 0; i < 5; ++i) {
    key_bytes[i] = BytesOf(*numbers[i]);
    key_values[i] = BytesValue(key_bytes[i]);
  }
  Load();
  const TestValue data = BytesValue(Bytes(4000, 0x35));
  TestValue plain;
  ASSERT_EQ(rsa->DecryptPQ(data, &plain), S_OK);
  EXPECT_GE(FailAtEach([&](VARIANT* out) { return rsa->DecryptPQ(data, out); }), 3);
}

// What a decryption by the primes keeps goes when any number of the key is put, and with Reset.
TEST_F(RsaCryptMemoryTest, AnyPutDropsWhatADecryptionKept) {
  constexpr Put kPuts[] = {&IRSACrypt::put_Modulus, &IRSACrypt::put_PublicExp,
                           &IRSACrypt::put_SecretExp, &IRSACrypt::put_P, &IRSACrypt::put_Q};
  const TestValue data = BytesValue(Bytes(63, 0x35));
  for (size_t i = 0; i < 5; ++i) {
    Load();
    ASSERT_TRUE(KeyIsAsLoaded());
    const long loaded = LiveAllocations();
    VARIANT out;
    VariantInit(&out);
    ASSERT_EQ(rsa->DecryptPQ(data, &out), S_OK);
    VariantClear(&out);
    EXPECT_GT(LiveAllocations(), loaded);
    const Put put = kPuts[i];
    ASSERT_EQ((rsa.Get()->*put)(key_values[i]), S_OK);
    ASSERT_TRUE(KeyIsAsLoaded());
    EXPECT_EQ(LiveAllocations(), loaded) << i;
  }
}

// A Q that is put while a key is in the making, at each moment that the making allocates memory,
// belongs to the old key: the new one is whole.
TEST_F(RsaCryptMemoryTest, AQPutWhileAKeyIsMadeIsDroppedWithTheOldKey) {
  const TestValue first = BytesValue(Bytes(24, 0x61));
  const TestValue second = BytesValue(Bytes(24, 0x71));
  Load();
  ASSERT_EQ(rsa->CreateKeys(first, second), S_OK);
  TestValue whole;
  ASSERT_EQ(rsa->get_Q(&whole), S_OK);
  int moments = 0;
  for (long count = 0;; ++count) {
    Load();
    bool called = false;
    {
      const CallAtAllocation putting(
          count,
          [](void* context) {
            EXPECT_EQ(static_cast<IRSACrypt*>(context)->put_Q(NumberValue(7)), S_OK);
          },
          rsa.Get());
      ASSERT_EQ(rsa->CreateKeys(first, second), S_OK);
      called = putting.HasCalled();
    }
    TestValue q;
    ASSERT_EQ(rsa->get_Q(&q), S_OK);
    EXPECT_EQ(BytesOfArray(q), BytesOfArray(whole)) << count;
    if (!called) break;
    ++moments;
  }
  EXPECT_GT(moments, 20);
}

TEST_F(RsaCryptMemoryTest, WithoutMemoryCreateRandKeysLeavesTheKey) {
  Load();
  ASSERT_TRUE(KeyIsAsLoaded());
  EXPECT_GE(FailAtEach([&](VARIANT*) { return rsa->CreateRandKeys(16, VARIANT_TRUE); }), 10);
  TestValue modulus;
  ASSERT_EQ(rsa->get_Modulus(&modulus), S_OK);
  EXPECT_EQ(BytesOfArray(modulus).size(), 16u);
}

// Not reported to callers: the old key stays in place.
TEST_F(RsaCryptMemoryTest, WithoutMemoryCreateKeysLeavesTheKeyAndReportsNothing) {
  Load();
  const TestValue first = NumberValue(1000000);
  const TestValue second = NumberValue(2000000);
  int silent = 0;
  for (int allowed = 0; allowed < 1000; ++allowed) {
    HRESULT status = S_OK;
    {
      const FailAllocationsAfter fail(allowed);
      status = rsa->CreateKeys(first, second);
    }
    const bool kept = KeyIsAsLoaded();
    if (status == S_OK && !kept) break;
    EXPECT_TRUE(kept);
    EXPECT_TRUE(status == S_OK || status == E_OUTOFMEMORY);
    silent += status == S_OK ? 1 : 0;
  }
  EXPECT_GE(silent, 10);
  TestValue p;
  ASSERT_EQ(rsa->get_P(&p), S_OK);
  EXPECT_EQ(BytesOfArray(p), (Bytes{0x0F, 0x42, 0x43}));
}

TEST_F(RsaCryptMemoryTest, WithoutMemoryThereIsNoObject) {
  IRSACrypt* object = nullptr;
  HRESULT status = S_OK;
  {
    const FailAllocationsAfter fail(0);
    status = CreateRSACrypt(nullptr, IID_IRSACrypt, reinterpret_cast<void**>(&object));
  }
  EXPECT_EQ(status, E_OUTOFMEMORY);
  EXPECT_EQ(object, nullptr);
}

TEST_F(RsaCryptMemoryTest, FreesEverythingWithItsLastReference) {
  rsa.Reset();
  const long live = LiveAllocations();
  Create();
  for (int i = 0; i < 3; ++i) {
    Load();
    EXPECT_TRUE(KeyIsAsLoaded());
    // The second one replaces a Q that no member has seen.
    EXPECT_EQ(rsa->put_Q(key_values[3]), S_OK);
    EXPECT_EQ(rsa->put_Q(key_values[3]), S_OK);
    EXPECT_EQ(rsa->put_Q(TestValue(VT_BOOL)), DISP_E_TYPEMISMATCH);
  }
  EXPECT_EQ(rsa->CreateKeys(NumberValue(1000000), NumberValue(2000000)), S_OK);
  EXPECT_EQ(rsa->put_Q(key_values[4]), S_OK);
  EXPECT_GT(LiveAllocations(), live);
  rsa.Reset();
  EXPECT_EQ(LiveAllocations(), live);
}

// The bytes of a number as they stand in its words and, reversed, in byte strings.
std::vector<Bytes> Patterns(const Bytes& number) {
  const Bytes high = Head(number, 12);
  return {high, Bytes(high.rbegin(), high.rend())};
}

TEST_F(RsaCryptMemoryTest, SecretsAreWipedBeforeTheirMemoryIsFreed) {
  Load();
  Bytes message(64, 0);
  for (size_t i = 1; i < 64; ++i) message[i] = static_cast<uint8_t>(i * 37 + 11);
  const TestValue plain = BytesValue(message);
  message.erase(message.begin());
  TestValue encrypted;
  ASSERT_EQ(rsa->Encrypt(plain, &encrypted), S_OK);

  std::vector<Bytes> secrets;
  for (const Bytes* number : {&key_bytes[2], &key_bytes[3], &key_bytes[4]}) {
    for (Bytes& pattern : Patterns(*number)) secrets.push_back(pattern);
  }
  for (Bytes& pattern : Patterns(message)) secrets.push_back(pattern);
  // The values that members give are the caller's: they are not in this heap.
  TestValue outputs[4];
  const WatchFreedMemory watch(secrets);
  Load();
  EXPECT_EQ(rsa->Encrypt(plain, &outputs[0]), S_OK);
  EXPECT_EQ(rsa->Decrypt(encrypted, &outputs[1]), S_OK);
  EXPECT_EQ(rsa->DecryptPQ(encrypted, &outputs[2]), S_OK);
  EXPECT_EQ(rsa->get_SecretExp(&outputs[3]), S_OK);
  EXPECT_EQ(rsa->put_P(key_values[4]), S_OK);
  EXPECT_EQ(rsa->put_Q(key_values[3]), S_OK);
  EXPECT_EQ(rsa->Reset(), S_OK);
  Load();
  // One Q that a member has seen, one that none has.
  EXPECT_EQ(rsa->put_Q(key_values[4]), S_OK);
  Create();
  EXPECT_GT(watch.Freed(), 0);
  EXPECT_EQ(watch.FreedWithSecret(), 0);
}

// The watch itself finds what is there to find.
TEST_F(RsaCryptMemoryTest, TheWatchSeesFreedSecrets) {
  const Bytes pattern = Patterns(key_bytes[2])[0];
  const WatchFreedMemory watch(pattern.data(), pattern.size());
  {
    const Bytes copy(key_bytes[2]);
    EXPECT_EQ(copy, key_bytes[2]);
  }
  EXPECT_EQ(watch.FreedWithSecret(), 1);
}

TEST_F(RsaCryptMemoryTest, SecretsOfAKeyInTheMakingAreWipedBeforeTheirMemoryIsFreed) {
  // The same numbers again make the same key, whose parts are known by then.
  const auto make = [&] {
    ticks = 0;
    PlannedSource::generator.seed(77);
    EXPECT_EQ(rsa->Reset(), S_OK);
    EXPECT_EQ(rsa->CreateRandKeys(64, VARIANT_TRUE), S_OK);
  };
  make();
  std::vector<Bytes> secrets;
  for (const Get get : {kGets[2], kGets[3], kGets[4]}) {
    TestValue value;
    ASSERT_EQ((rsa.Get()->*get)(&value), S_OK);
    for (Bytes& pattern : Patterns(BytesOfArray(value))) secrets.push_back(pattern);
  }
  PlannedSource::Restart({});
  const WatchFreedMemory watch(secrets);
  make();
  EXPECT_EQ(rsa->Reset(), S_OK);
  EXPECT_GT(watch.Freed(), 0);
  EXPECT_EQ(watch.FreedWithSecret(), 0);
}

}  // namespace
}  // namespace mirolta::test
