// Who waits for whom in RSACrypt, and what a Q put without the lock does.
#include <atomic>
#include <functional>
#include <random>
#include <thread>
#include <vector>

#include "instance_creators.h"
#include "portable/test_hooks.h"
#include "test_module.h"
#include "test_values.h"

namespace mirolta::test {
namespace {

std::atomic<int> entered{0};
std::atomic<int> left{0};
constexpr MiroltaLockProbe kProbe = {[](CRITICAL_SECTION*) { ++entered; },
                                     [](CRITICAL_SECTION*) { ++left; }};

// A source of random numbers that waits until it may go on.
std::atomic<bool> drawing{false};
std::atomic<bool> may_draw{true};
std::mt19937 generator;
bool Seed(uint32_t) {
  drawing = true;
  while (!may_draw) std::this_thread::yield();
  return true;
}
uint32_t Next() {
  return generator() & 0x7FFFFFFF;
}
constexpr RandomSource kWaitingSource = {Seed, Next};

class RsaCryptLockTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(CreateRSACrypt(nullptr, IID_IRSACrypt, reinterpret_cast<void**>(rsa.Put())), S_OK);
    drawing = false;
    may_draw = true;
    generator.seed(7);
    SetRandomSource(&kWaitingSource);
  }
  void TearDown() override {
    MiroltaSetLockProbe(nullptr);
    SetRandomSource(nullptr);
  }

  int LocksOf(const std::function<void()>& call) {
    entered = 0;
    left = 0;
    MiroltaSetLockProbe(&kProbe);
    call();
    MiroltaSetLockProbe(nullptr);
    EXPECT_EQ(entered, left);
    return entered;
  }
  Bytes Q() {
    TestValue value;
    EXPECT_EQ(rsa->get_Q(&value), S_OK);
    return BytesOfArray(value);
  }
  void LoadSmallKey() {
    EXPECT_EQ(rsa->put_Modulus(NumberValue(3233)), S_OK);
    EXPECT_EQ(rsa->put_PublicExp(NumberValue(17)), S_OK);
    EXPECT_EQ(rsa->put_SecretExp(NumberValue(2753)), S_OK);
    EXPECT_EQ(rsa->put_P(NumberValue(53)), S_OK);
    EXPECT_EQ(rsa->put_Q(NumberValue(61)), S_OK);
  }

  TestModule module;
  OwnedReference<IRSACrypt> rsa;
};

TEST_F(RsaCryptLockTest, EveryMemberButThePutOfQTakesTheLockOnce) {
  const TestValue data = NumberValue(5);
  const TestValue bad(VT_BOOL);
  for (const bool has_key : {false, true}) {
    if (has_key) LoadSmallKey();
    const auto get = [&](HRESULT (STDMETHODCALLTYPE IRSACrypt::*member)(VARIANT*)) {
      return [this, member] {
        TestValue value;
        (rsa.Get()->*member)(&value);
      };
    };
    const auto transform = [&](HRESULT (STDMETHODCALLTYPE IRSACrypt::*member)(VARIANT, VARIANT*),
                               const VARIANT& input) {
      return [this, member, input] {
        TestValue value;
        (rsa.Get()->*member)(input, &value);
      };
    };
    const std::vector<std::function<void()>> calls = {
        [&] { rsa->CreateKeys(bad, bad); },
        [&] { rsa->CreateRandKeys(0, 0); },
        get(&IRSACrypt::get_Modulus),
        get(&IRSACrypt::get_PublicExp),
        get(&IRSACrypt::get_SecretExp),
        get(&IRSACrypt::get_P),
        get(&IRSACrypt::get_Q),
        transform(&IRSACrypt::Encrypt, data),
        transform(&IRSACrypt::Decrypt, data),
        transform(&IRSACrypt::DecryptPQ, data),
        transform(&IRSACrypt::Encrypt, bad),
        transform(&IRSACrypt::Decrypt, bad),
        transform(&IRSACrypt::DecryptPQ, bad),
        transform(&IRSACrypt::Encrypt, NumberValue(3233)),
        [&] {
          LONG size = 0;
          rsa->get_BlockSize(&size);
        },
        [&] { rsa->put_Modulus(bad); },
        [&] { rsa->put_PublicExp(bad); },
        [&] { rsa->put_SecretExp(bad); },
        [&] { rsa->put_P(bad); },
        [&] { rsa->put_Modulus(data); },
        [&] { rsa->put_PublicExp(data); },
        [&] { rsa->put_SecretExp(data); },
        [&] { rsa->put_P(data); },
        [&] { rsa->CreateKeys(data, data); },
        [&] { rsa->CreateRandKeys(4, 0); },
        [&] { rsa->Reset(); },
    };
    for (size_t i = 0; i < calls.size(); ++i) EXPECT_EQ(LocksOf(calls[i]), 1) << "call " << i;
    EXPECT_EQ(LocksOf([&] { EXPECT_EQ(rsa->put_Q(data), S_OK); }), 0);
    EXPECT_EQ(LocksOf([&] { EXPECT_EQ(rsa->put_Q(bad), DISP_E_TYPEMISMATCH); }), 0);
  }
}

TEST_F(RsaCryptLockTest, AMissingPlaceIsSeenBeforeTheLock) {
  EXPECT_EQ(LocksOf([&] {
              EXPECT_EQ(rsa->get_Modulus(nullptr), E_POINTER);
              EXPECT_EQ(rsa->get_PublicExp(nullptr), E_POINTER);
              EXPECT_EQ(rsa->get_SecretExp(nullptr), E_POINTER);
              EXPECT_EQ(rsa->get_P(nullptr), E_POINTER);
              EXPECT_EQ(rsa->get_Q(nullptr), E_POINTER);
              EXPECT_EQ(rsa->get_BlockSize(nullptr), E_POINTER);
              EXPECT_EQ(rsa->Encrypt(NumberValue(1), nullptr), E_POINTER);
              EXPECT_EQ(rsa->Decrypt(NumberValue(1), nullptr), E_POINTER);
              EXPECT_EQ(rsa->DecryptPQ(NumberValue(1), nullptr), E_POINTER);
            }),
            0);
}

TEST_F(RsaCryptLockTest, OthersWaitForAKeyInTheMakingButThePutOfQDoesNot) {
  LoadSmallKey();
  may_draw = false;
  std::thread maker([&] { EXPECT_EQ(rsa->CreateRandKeys(16, VARIANT_TRUE), S_OK); });
  while (!drawing) std::this_thread::yield();

  std::atomic<bool> started{false};
  std::atomic<bool> done{false};
  LONG size = 0;
  std::thread waiting([&] {
    started = true;
    EXPECT_EQ(rsa->get_BlockSize(&size), S_OK);
    done = true;
  });
  while (!started) std::this_thread::yield();
  for (int i = 0; i < 1000; ++i) std::this_thread::yield();
  // Returns although the maker is still inside.
  EXPECT_EQ(rsa->put_Q(NumberValue(7)), S_OK);
  EXPECT_FALSE(done);

  may_draw = true;
  maker.join();
  waiting.join();
  EXPECT_EQ(size, 15);
  // The put belonged to the old key: the new one is whole.
  EXPECT_EQ(Q().size(), 8u);
  TestValue encrypted;
  ASSERT_EQ(rsa->Encrypt(NumberValue(1234), &encrypted), S_OK);
  TestValue decrypted;
  ASSERT_EQ(rsa->DecryptPQ(encrypted, &decrypted), S_OK);
  EXPECT_EQ(BytesOfArray(decrypted), (Bytes{0x04, 0xD2}));
}

TEST_F(RsaCryptLockTest, AQPutMeanwhileCountsIfNoKeyIsMade) {
  LoadSmallKey();
  EXPECT_EQ(rsa->put_Q(NumberValue(7)), S_OK);
  EXPECT_EQ(rsa->put_Q(NumberValue(9)), S_OK);
  EXPECT_EQ(rsa->CreateRandKeys(0, 0), E_INVALIDARG);
  EXPECT_EQ(Q(), Bytes{9});
}

TEST_F(RsaCryptLockTest, PutsOfQRaceWithEverythingElse) {
  LoadSmallKey();
  std::atomic<bool> stop{false};
  std::vector<std::thread> putters;
  for (const LONG q : {61, 67}) {
    putters.emplace_back([&, q] {
      while (!stop) EXPECT_EQ(rsa->put_Q(NumberValue(q)), S_OK);
    });
  }
  const std::vector<Bytes> known = {{61}, {67}};
  for (int i = 0; i < 300; ++i) {
    const Bytes q = Q();
    EXPECT_TRUE(q == known[0] || q == known[1]);
    TestValue out;
    EXPECT_EQ(rsa->DecryptPQ(NumberValue(855), &out), S_OK);
  }
  EXPECT_EQ(rsa->CreateRandKeys(16, VARIANT_TRUE), S_OK);
  stop = true;
  for (std::thread& putter : putters) putter.join();
}

}  // namespace
}  // namespace mirolta::test
