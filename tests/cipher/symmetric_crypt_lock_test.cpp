// The lock of SymmetricCryptObject: who waits for whom, and calls from within a call.
#include <atomic>
#include <functional>
#include <thread>

#include "calling_object.h"
#include "other_thread.h"
#include "symmetric_crypt_fixture.h"

namespace mirolta::test {
namespace {

using SymmetricCryptLockTest = SymmetricCryptTest;

TEST_F(SymmetricCryptLockTest, OtherThreadsWaitExceptForPadType) {
  StartAes();
  OtherThread waiting;
  std::atomic<LONG> pad_type{-9};
  CallingObject data([&] {
    OtherThread setting;
    setting.Begin([&] {
      EXPECT_EQ(crypt->put_PadType(7), S_OK);
      LONG read = 0;
      EXPECT_EQ(crypt->get_PadType(&read), S_OK);
      pad_type = read;
    });
    setting.Join();
    waiting.Begin([&] {
      LONG number = 0;
      EXPECT_EQ(crypt->get_codePage(&number), S_OK);
    });
    EXPECT_TRUE(waiting.IsHeldUp());
  });
  const Bytes cipher = Good(Encrypt(ObjectValue(&data)));
  waiting.Join();
  EXPECT_EQ(pad_type, 7);
  // The setting that came during the call was in force when the call padded.
  EXPECT_EQ(Decrypted(cipher), BytesOf("abc") + Bytes(13, 7));
}

TEST_F(SymmetricCryptLockTest, ACallFromInsideMayDropEngineOrKeyUnderData) {
  using Ending = std::function<void()>;
  const Ending endings[] = {[&] { EXPECT_EQ(Init(OLESTR("none")), kNotFound); },
                            [&] { EXPECT_EQ(Init(OLESTR("AES")), S_OK); },
                            [&] { EXPECT_EQ(crypt->ResetKey(), S_OK); }};
  for (const Ending& ending : endings) {
    CallingObject data(ending);
    StartAes();
    EXPECT_EQ(Encrypt(ObjectValue(&data)).status, kNotInitialized);
    ExpectError(OLESTR("Not initialized."));
    StartAes();
    EXPECT_EQ(Decrypt(ObjectValue(&data)).status, kNotInitialized);
    ExpectError(OLESTR("Not initialized."));
  }
}

TEST_F(SymmetricCryptLockTest, ACallFromInsideMayChangeTheEngineUnderData) {
  StartAes();
  CallingObject data([&] { StartDes(); }, OLESTR("Now is t"));
  EXPECT_EQ(Good(Encrypt(ObjectValue(&data))), BytesOfHex(kDesCipher));
}

TEST_F(SymmetricCryptLockTest, ACallFromInsideMayDropOrChangeTheEngineUnderAKey) {
  for (const OLECHAR* text : {OLESTR("0123456789abcdef"), static_cast<const OLECHAR*>(nullptr)}) {
    StartAes();
    CallingObject key([&] { EXPECT_EQ(Init(OLESTR("none")), kNotFound); }, text);
    EXPECT_EQ(crypt->put_Key(ObjectValue(&key)), kNotInitialized);
    EXPECT_FALSE(HasEngine());
  }
  // Another engine gets the key.
  StartAes();
  CallingObject changes([&] { StartDes(); }, OLESTR("01234567"));
  EXPECT_EQ(crypt->put_Key(ObjectValue(&changes)), S_OK);
  EXPECT_EQ(Key(), BytesOf("01234567"));
  // A key set from inside is replaced.
  CallingObject sets([&] { EXPECT_EQ(PutKey(kDesKey), S_OK); }, OLESTR("76543210"));
  EXPECT_EQ(crypt->put_Key(ObjectValue(&sets)), S_OK);
  EXPECT_EQ(Key(), BytesOf("76543210"));
}

TEST_F(SymmetricCryptLockTest, TheOldKeyIsDroppedBeforeTheNewOneIsReadByTheCodePageOfTheCall) {
  StartDes();
  Bytes seen;
  const auto look = [&] {
    seen = Key();
    EXPECT_EQ(Encrypt(BytesValue(Bytes(8))).status, kNotInitialized);
    EXPECT_EQ(crypt->put_codePage(-1), S_OK);
  };
  CallingObject key(look, OLESTR("01234567"));
  EXPECT_EQ(crypt->put_Key(ObjectValue(&key)), S_OK);
  EXPECT_EQ(seen, BytesOf("(none)"));
  EXPECT_EQ(Key(), BytesOf("01234567"));
  // One rule for keys and data.
  StartDes();
  EXPECT_EQ(crypt->put_codePage(0), S_OK);
  CallingObject data([&] { EXPECT_EQ(crypt->put_codePage(-1), S_OK); }, OLESTR("Now is t"));
  EXPECT_EQ(Good(Encrypt(ObjectValue(&data))), BytesOfHex(kDesCipher));
}

TEST_F(SymmetricCryptLockTest, ACallFromInsideMayInitUnderInit) {
  StartAes();
  const auto start = [&] {
    EXPECT_FALSE(HasEngine());  // the old one is gone before the name is read
    StartAes();
  };
  CallingObject unknown(start, OLESTR("none"));
  EXPECT_EQ(crypt->Init(ObjectValue(&unknown)), kNotFound);
  EXPECT_FALSE(HasEngine());
  CallingObject nameless(start, nullptr);
  EXPECT_EQ(crypt->Init(ObjectValue(&nameless)), DISP_E_TYPEMISMATCH);
  EXPECT_FALSE(HasEngine());
  LONG pad_type = 0;
  EXPECT_EQ(crypt->get_PadType(&pad_type), kNotInitialized);
}

TEST_F(SymmetricCryptLockTest, CallsOfTwoThreadsOnOneObjectAlternate) {
  StartAes();
  const Bytes plain = BytesOfHex(kAesPlain), cipher = BytesOfHex(kAesCipher);
  const auto work = [&](bool encrypts) {
    for (int i = 0; i < 300; ++i) {
      const Bytes got = encrypts ? Encrypted(plain) : Decrypted(cipher);
      EXPECT_EQ(got, encrypts ? cipher : plain);
      LONG pad_type = 0;
      EXPECT_EQ(crypt->put_PadType(i), S_OK);
      EXPECT_EQ(crypt->get_PadType(&pad_type), S_OK);
    }
  };
  std::thread other(work, true);
  work(false);
  other.join();
}

TEST_F(SymmetricCryptLockTest, PadTypeIsSafeWhileAnotherThreadReplacesTheEngine) {
  StartAes();
  std::atomic<bool> stop{false};
  std::thread other([&] {
    while (!stop) {
      LONG pad_type = 0;
      const HRESULT put = crypt->put_PadType(5);
      const HRESULT get = crypt->get_PadType(&pad_type);
      EXPECT_TRUE(put == S_OK || put == kNotInitialized);
      EXPECT_TRUE(get == S_OK || get == kNotInitialized);
      EXPECT_TRUE(pad_type == 0 || pad_type == 5);
    }
  });
  for (int i = 0; i < 200; ++i) {
    StartAes();
    EXPECT_EQ(Encrypted(BytesOf("abc")).size(), 16u);
  }
  stop = true;
  other.join();
}

}  // namespace
}  // namespace mirolta::test
