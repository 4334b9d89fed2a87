#include "rsa_crypt_object.h"

#include "array_bytes.h"
#include "big_variant.h"
#include "messages.h"

namespace mirolta {

namespace {

TypeInfoHolder type_info(IID_IRSACrypt);

// Numbers are read with text as hexadecimal and returned as byte arrays.
HRESULT Read(BigInt& n, const VARIANT& value) {
  return NumberFromVariant(n, value, NumberBase::kHexadecimal);
}
HRESULT Write(const BigInt& n, VARIANT* out) {
  return NumberToVariant(n, kByteArrayType, NumberBase::kHexadecimal, out);
}

// Runs one RSA primitive.
template <typename Key>
HRESULT Transform(HRESULT (*operation)(BigInt&, Key&, const BigInt&), Key& key, const BigInt& input,
                  VARIANT* out) {
  BigInt output;
  const HRESULT status = operation(output, key, input);
  return FAILED(status) ? status : Write(output, out);
}

}  // namespace

constexpr ClassDescription kRsaCryptClass = {&CLSID_RSACrypt, &type_info};

HRESULT CreateRSACrypt(IUnknown* outer, REFIID iid, void** out) {
  return CreateObject<RsaCryptObject>(outer, iid, out);
}

RsaKey& RsaCryptObject::Key() {
  BigInt* const fresh = new_q_.exchange(nullptr);
  if (fresh != nullptr) {
    key_.q.Swap(*fresh);
    delete fresh;
    key_.DropValues();
  }
  return key_;
}

void RsaCryptObject::DropNewQ() {
  delete new_q_.exchange(nullptr);
}

HRESULT STDMETHODCALLTYPE RsaCryptObject::CreateKeys(VARIANT v1, VARIANT v2) {
  return DeepFrame([&] {
    BigInt first;
    BigInt second;
    HRESULT status = Read(first, v1);
    if (SUCCEEDED(status)) status = Read(second, v2);
    if (FAILED(status)) return status;
    // A failure to generate the key is not reported; the old key is kept then.
    if (SUCCEEDED(BuildKey(Key(), first, second))) DropNewQ();
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE RsaCryptObject::CreateRandKeys(LONG lByteSize, VARIANT_BOOL bExactSize) {
  return DeepFrame([&] {
    const HRESULT status = BuildRandomKey(Key(), lByteSize, bExactSize != 0);
    // A Q that was put during the generation belongs to the old key.
    if (SUCCEEDED(status)) DropNewQ();
    return status;
  });
}

HRESULT RsaCryptObject::GetNumber(BigInt RsaKey::*field, VARIANT* value) {
  return Frame(value, [&] { return Write(Key().*field, value); });
}

HRESULT RsaCryptObject::PutNumber(BigInt RsaKey::*field, const VARIANT& value) {
  return DeepFrame([&] {
    RsaKey& now = Key();
    const HRESULT status = Read(now.*field, value);
    if (SUCCEEDED(status)) now.DropValues();
    return status;
  });
}

HRESULT STDMETHODCALLTYPE RsaCryptObject::get_Modulus(VARIANT* value) {
  return GetNumber(&RsaKey::n, value);
}
HRESULT STDMETHODCALLTYPE RsaCryptObject::put_Modulus(VARIANT value) {
  return PutNumber(&RsaKey::n, value);
}
HRESULT STDMETHODCALLTYPE RsaCryptObject::get_PublicExp(VARIANT* value) {
  return GetNumber(&RsaKey::e, value);
}
HRESULT STDMETHODCALLTYPE RsaCryptObject::put_PublicExp(VARIANT value) {
  return PutNumber(&RsaKey::e, value);
}
HRESULT STDMETHODCALLTYPE RsaCryptObject::get_SecretExp(VARIANT* value) {
  return GetNumber(&RsaKey::d, value);
}
HRESULT STDMETHODCALLTYPE RsaCryptObject::put_SecretExp(VARIANT value) {
  return PutNumber(&RsaKey::d, value);
}
HRESULT STDMETHODCALLTYPE RsaCryptObject::get_P(VARIANT* value) {
  return GetNumber(&RsaKey::p, value);
}
HRESULT STDMETHODCALLTYPE RsaCryptObject::put_P(VARIANT value) {
  return PutNumber(&RsaKey::p, value);
}
HRESULT STDMETHODCALLTYPE RsaCryptObject::get_Q(VARIANT* value) {
  return GetNumber(&RsaKey::q, value);
}

HRESULT STDMETHODCALLTYPE RsaCryptObject::put_Q(VARIANT value) {
  auto put = [&]() -> HRESULT {
    BigInt* const number = new (std::nothrow) BigInt();
    if (number == nullptr) return E_OUTOFMEMORY;
    const HRESULT status = Read(*number, value);
    if (FAILED(status)) {
      delete number;
      return status;
    }
    delete new_q_.exchange(number);
    return S_OK;
  };
  return RunWiped(put, StackUse::kDeep);
}

HRESULT STDMETHODCALLTYPE RsaCryptObject::Encrypt(VARIANT vData, VARIANT* pvOut) {
  return DeepFrame(pvOut, [&] {
    const RsaKey& now = Key();
    if (now.e.IsZero() || now.n.IsZero()) return Raise(kMessageKeyNotSet);
    BigInt message;
    const HRESULT status = Read(message, vData);
    if (FAILED(status)) return status;
    if (message >= now.n) return Raise(kMessageTooMuchData);
    return Transform(RsaEncrypt, now, message, pvOut);
  });
}

HRESULT STDMETHODCALLTYPE RsaCryptObject::Decrypt(VARIANT vData, VARIANT* pvOut) {
  return DeepFrame(pvOut, [&] {
    const RsaKey& now = Key();
    if (now.e.IsZero() || now.n.IsZero()) return Raise(kMessageKeyNotSet);
    BigInt ciphertext;
    const HRESULT status = Read(ciphertext, vData);
    return FAILED(status) ? status : Transform(RsaDecrypt, now, ciphertext, pvOut);
  });
}

HRESULT STDMETHODCALLTYPE RsaCryptObject::DecryptPQ(VARIANT vData, VARIANT* pvOut) {
  return DeepFrame(pvOut, [&] {
    RsaKey& now = Key();
    if (now.e.IsZero() || now.d.IsZero() || now.p.IsZero() || now.q.IsZero()) {
      return Raise(kMessageKeyNotSet);
    }
    BigInt ciphertext;
    const HRESULT status = Read(ciphertext, vData);
    if (FAILED(status)) return status;
    const bool had_values = !now.values.q.IsZero();
    const HRESULT result = Transform(RsaDecryptWithPrimes, now, ciphertext, pvOut);
    // A failed call keeps no values.
    if (FAILED(result) && !had_values) now.DropValues();
    return result;
  });
}

HRESULT STDMETHODCALLTYPE RsaCryptObject::Reset() {
  return Frame([&] {
    Key().Reset();
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE RsaCryptObject::get_BlockSize(LONG* size) {
  return PlainFrame(size, [&] {
    *size = BlockSize(Key().n);
    return S_OK;
  });
}

}  // namespace mirolta
