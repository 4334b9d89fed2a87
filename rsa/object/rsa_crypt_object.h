// RSACrypt: RSA keys and raw RSA for scripts.
#pragma once

#include <atomic>

#include "dispatch_object.h"
#include "mirolta.h"
#include "rsa_key.h"

namespace mirolta {

extern const ClassDescription kRsaCryptClass;

// RsaCryptObject holds one key, initially all zero. Every member except put_Q holds the object's
// lock for the whole call, key generation included. A call that fails leaves the key unchanged.
class RsaCryptObject final : public DispatchObject<kRsaCryptClass, IRSACrypt> {
 public:
  explicit RsaCryptObject(IUnknown* outer) : DispatchObject(outer) {}
  ~RsaCryptObject() override { DropNewQ(); }

  HRESULT STDMETHODCALLTYPE CreateKeys(VARIANT v1, VARIANT v2) override;
  HRESULT STDMETHODCALLTYPE CreateRandKeys(LONG lByteSize, VARIANT_BOOL bExactSize) override;
  HRESULT STDMETHODCALLTYPE get_Modulus(VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE put_Modulus(VARIANT value) override;
  HRESULT STDMETHODCALLTYPE get_PublicExp(VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE put_PublicExp(VARIANT value) override;
  HRESULT STDMETHODCALLTYPE get_SecretExp(VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE put_SecretExp(VARIANT value) override;
  HRESULT STDMETHODCALLTYPE get_P(VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE put_P(VARIANT value) override;
  HRESULT STDMETHODCALLTYPE get_Q(VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE put_Q(VARIANT value) override;
  HRESULT STDMETHODCALLTYPE Encrypt(VARIANT vData, VARIANT* pvOut) override;
  HRESULT STDMETHODCALLTYPE Decrypt(VARIANT vData, VARIANT* pvOut) override;
  HRESULT STDMETHODCALLTYPE DecryptPQ(VARIANT vData, VARIANT* pvOut) override;
  HRESULT STDMETHODCALLTYPE Reset() override;
  HRESULT STDMETHODCALLTYPE get_BlockSize(LONG* size) override;

 private:
  // Frame for exponentiation, prime search and conversion from text, which use much stack.
  template <typename... Arguments>
  HRESULT DeepFrame(Arguments... arguments) {
    return Frame(arguments..., StackUse::kDeep);
  }

  HRESULT GetNumber(BigInt RsaKey::*field, VARIANT* value);
  HRESULT PutNumber(BigInt RsaKey::*field, const VARIANT& value);

  // The key with a Q that was put since. The lock is held.
  RsaKey& Key();
  void DropNewQ();

  RsaKey key_;
  // The Q that was put since the last locked member: put_Q neither waits for the lock nor changes a
  // key that another thread uses. Only exchanged, in the default order: each number has one taker, who
  // sees all of it.
  std::atomic<BigInt*> new_q_{nullptr};
};

// The class's instance creator; outer is the object that aggregates the new one, or null.
HRESULT CreateRSACrypt(IUnknown* outer, REFIID iid, void** out);

}  // namespace mirolta
