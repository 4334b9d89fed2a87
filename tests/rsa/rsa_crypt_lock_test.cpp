// The lock of RSACrypt, and puts of Q, which do not take it.
#include <atomic>
#include <random>
#include <thread>
#include <vector>

#include "other_thread.h"
#include "rsa_crypt_object.h"
#include "test_module.h"
#include "test_values.h"

namespace mirolta::test {
namespace {

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
  void TearDown() override { SetRandomSource(nullptr); }

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

TEST_F(RsaCryptLockTest, OtherMembersWaitWhileAKeyIsMadeAndPutOfQDoesNot) {
  LoadSmallKey();
  may_draw = false;
  std::thread maker([&] { EXPECT_EQ(rsa->CreateRandKeys(16, VARIANT_TRUE), S_OK); });
  while (!drawing) std::this_thread::yield();

  OtherThread waiting;
  LONG size = 0;
  waiting.Begin([&] { EXPECT_EQ(rsa->get_BlockSize(&size), S_OK); });
  // Returns although the maker is still inside.
  EXPECT_EQ(rsa->put_Q(NumberValue(7)), S_OK);
  EXPECT_TRUE(waiting.IsHeldUp());

  may_draw = true;
  maker.join();
  waiting.Join();
  EXPECT_EQ(size, 15);
  // The put belonged to the old key: the new one is whole.
  EXPECT_EQ(Q().size(), 8u);
  TestValue encrypted;
  ASSERT_EQ(rsa->Encrypt(NumberValue(1234), &encrypted), S_OK);
  TestValue decrypted;
  ASSERT_EQ(rsa->DecryptPQ(encrypted, &decrypted), S_OK);
  EXPECT_EQ(BytesOfArray(decrypted), (Bytes{0x04, 0xD2}));
}

TEST_F(RsaCryptLockTest, AQThatWasPutStaysIfNoKeyIsMade) {
  LoadSmallKey();
  EXPECT_EQ(rsa->put_Q(NumberValue(7)), S_OK);
  EXPECT_EQ(rsa->put_Q(NumberValue(9)), S_OK);
  EXPECT_EQ(rsa->CreateRandKeys(0, 0), E_INVALIDARG);
  EXPECT_EQ(Q(), Bytes{9});
}

TEST_F(RsaCryptLockTest, PutsOfQAreSafeBesideEveryOtherMember) {
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
