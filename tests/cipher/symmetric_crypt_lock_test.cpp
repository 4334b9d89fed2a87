// SymmetricCryptObject: who waits for whom, and calls from within a call.
#include <atomic>
#include <functional>
#include <thread>

#include "symmetric_crypt_fixture.h"

namespace mirolta::test {
namespace {

class SymmetricCryptLockTest : public SymmetricCryptTest {};

// An object whose default value is read by code of the test.
class CallingObject final : public IDispatch {
 public:
  CallingObject(const OLECHAR* text, std::function<void()> call)
      : text_(text), call_(std::move(call)) {}
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = iid == IID_IUnknown || iid == IID_IDispatch ? this : nullptr;
    return *out != nullptr ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result,
                                   EXCEPINFO*, UINT*) override {
    call_();
    V_VT(result) = text_ != nullptr ? VT_BSTR : VT_NULL;
    result->bstrVal = SysAllocString(text_);
    return S_OK;
  }

 private:
  const OLECHAR* text_;
  std::function<void()> call_;
};

TEST_F(SymmetricCryptLockTest, OtherThreadsWaitExceptForPadType) {
  StartAes();
  std::atomic<bool> second_started{false};
  std::atomic<bool> second_done{false};
  std::atomic<LONG> pad_type{-9};
  std::thread second;
  CallingObject data(OLESTR("abc"), [&] {
    std::thread third([&] {
      EXPECT_EQ(crypt->put_PadType(7), S_OK);
      LONG read = 0;
      EXPECT_EQ(crypt->get_PadType(&read), S_OK);
      pad_type = read;
    });
    third.join();
    second = std::thread([&] {
      second_started = true;
      LONG number = 0;
      EXPECT_EQ(crypt->get_codePage(&number), S_OK);
      second_done = true;
    });
    while (!second_started) std::this_thread::yield();
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();
    EXPECT_FALSE(second_done);
  });
  const Bytes cipher = Good(Encrypt(ObjectValue(&data)));
  second.join();
  EXPECT_TRUE(second_done);
  EXPECT_EQ(pad_type, 7);
  // The setting that came during the call was in force when the call padded.
  Bytes plain = BytesOf("abc");
  plain.resize(16, 7);
  EXPECT_EQ(Decrypted(cipher), plain);
}

TEST_F(SymmetricCryptLockTest, ACallFromInsideMayTakeEngineOrKeyAway) {
  using Ending = std::function<void()>;
  const Ending endings[] = {[&] { EXPECT_EQ(Init(OLESTR("none")), kNotFound); },
                            [&] { EXPECT_EQ(Init(OLESTR("AES")), S_OK); },
                            [&] { EXPECT_EQ(crypt->ResetKey(), S_OK); }};
  for (const Ending& ending : endings) {
    CallingObject data(OLESTR("abc"), ending);
    StartAes();
    EXPECT_EQ(Encrypt(ObjectValue(&data)).status, kNotInitialized);
    EXPECT_EQ(ErrorText(), OLESTR("Not initialized."));
    StartAes();
    EXPECT_EQ(Decrypt(ObjectValue(&data)).status, kNotInitialized);
    EXPECT_EQ(ErrorText(), OLESTR("Not initialized."));
  }
}

TEST_F(SymmetricCryptLockTest, ACallFromInsideMayChangeTheEngineUnderData) {
  StartAes();
  CallingObject data(OLESTR("Now is t"), [&] { StartDes(); });
  EXPECT_EQ(Good(Encrypt(ObjectValue(&data))), BytesOfHex(kDesCipher));
}

TEST_F(SymmetricCryptLockTest, ACallFromInsideMayTakeTheEngineAwayUnderAKey) {
  for (const OLECHAR* text : {OLESTR("0123456789abcdef"), static_cast<const OLECHAR*>(nullptr)}) {
    StartAes();
    CallingObject key(text, [&] { EXPECT_EQ(Init(OLESTR("none")), kNotFound); });
    EXPECT_EQ(crypt->put_Key(ObjectValue(&key)), kNotInitialized);
    EXPECT_FALSE(HasEngine());
  }
  // Another engine gets the key.
  StartAes();
  CallingObject changes(OLESTR("01234567"), [&] { StartDes(); });
  EXPECT_EQ(crypt->put_Key(ObjectValue(&changes)), S_OK);
  EXPECT_EQ(Key(), BytesOf("01234567"));
  // A key set from inside is replaced.
  CallingObject sets(OLESTR("76543210"), [&] { EXPECT_EQ(PutKey(kDesKey), S_OK); });
  EXPECT_EQ(crypt->put_Key(ObjectValue(&sets)), S_OK);
  EXPECT_EQ(Key(), BytesOf("76543210"));
}

TEST_F(SymmetricCryptLockTest, TheOldKeyGoesBeforeTheNewOneIsReadAndTheCodePageIsTheCalls) {
  StartDes();
  Bytes seen;
  CallingObject key(OLESTR("01234567"), [&] {
    seen = Key();
    EXPECT_EQ(Encrypt(BytesValue(Bytes(8))).status, kNotInitialized);
    EXPECT_EQ(crypt->put_codePage(-1), S_OK);
  });
  EXPECT_EQ(crypt->put_Key(ObjectValue(&key)), S_OK);
  EXPECT_EQ(seen, BytesOf("(none)"));
  EXPECT_EQ(Key(), BytesOf("01234567"));
  // One rule for keys and data.
  StartDes();
  EXPECT_EQ(crypt->put_codePage(0), S_OK);
  CallingObject data(OLESTR("Now is t"), [&] { EXPECT_EQ(crypt->put_codePage(-1), S_OK); });
  EXPECT_EQ(Good(Encrypt(ObjectValue(&data))), BytesOfHex(kDesCipher));
}

TEST_F(SymmetricCryptLockTest, ACallFromInsideMayInitUnderInit) {
  StartAes();
  CallingObject unknown(OLESTR("none"), [&] {
    EXPECT_FALSE(HasEngine());  // the old one is gone before the name is read
    StartAes();
  });
  EXPECT_EQ(crypt->Init(ObjectValue(&unknown)), kNotFound);
  EXPECT_FALSE(HasEngine());
  CallingObject nameless(nullptr, [&] { StartAes(); });
  EXPECT_EQ(crypt->Init(ObjectValue(&nameless)), DISP_E_TYPEMISMATCH);
  EXPECT_FALSE(HasEngine());
  LONG pad_type = 0;
  EXPECT_EQ(crypt->get_PadType(&pad_type), kNotInitialized);
}

// Whole calls of both threads alternate in any order; none sees half of another.
TEST_F(SymmetricCryptLockTest, TwoThreadsOnOneObject) {
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

TEST_F(SymmetricCryptLockTest, PadTypeWhileAnotherThreadReplacesTheEngine) {
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
