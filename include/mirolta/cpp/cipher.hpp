// SPDX-License-Identifier: MIT
// AES and DES, block by block (SymmetricCryptObject).
#pragma once

#include <cstring>
#include <utility>
#include <vector>

#include "arguments.hpp"
#include "create.hpp"

namespace mirolta {

// The bytes that fill an incomplete last block: one value, 0 unless chosen, or random ones.
class Pad {
 public:
  constexpr Pad() noexcept = default;
  constexpr explicit Pad(std::uint8_t value) noexcept : type_(value) {}
  static constexpr Pad Random() noexcept {
    Pad pad;
    pad.type_ = -1;
    return pad;
  }
  // The value of the property PadType.
  constexpr std::int32_t Type() const noexcept { return type_; }

 private:
  std::int32_t type_ = 0;
};

// Cipher encrypts and decrypts with "AES" (keys of 16, 24 or 32 bytes) or "DES" (8; triple DES 16 or
// 24). Each block is transformed independently (ECB mode): equal blocks of plaintext give equal blocks
// of ciphertext. Nothing is authenticated, and the pad is not removed: the receiver must know the
// length of the plaintext.
//
// Data may be passed in pieces, by EncryptPart for all but the last. Each call returns the blocks that
// it completed. Encryption and decryption may alternate: each has its own partial block.
class Cipher {
 public:
  Cipher(std::string_view algorithm, ByteSpan key, Pad pad = Pad())
      : Cipher(TryCreate(algorithm, key, pad).Value()) {}

  Cipher(Cipher&&) noexcept = default;
  Cipher& operator=(Cipher&&) noexcept = default;

  // Errors: 0x80042777 "Algorithm not found."; E_INVALIDARG for a key of another length; those of
  //         TryCreateObject
  static Result<Cipher> TryCreate(std::string_view algorithm, ByteSpan key, Pad pad = Pad()) {
    Result<Object<ISymmetricCryptObject>> object =
        TryCreateObject<ISymmetricCryptObject>(CLSID_SymmetricCryptObject);
    if (!object) return object.Failure();
    Cipher cipher(*std::move(object));
    const Value name{algorithm};
    Result<void> done =
        detail::Call(cipher.object_.Get(), &ISymmetricCryptObject::Init, name.Get());
    if (done) done = cipher.TrySetKey(key);
    if (done) done = cipher.TrySetPad(pad);
    if (!done) return done.Failure();
    return cipher;
  }

  // Encrypt and Decrypt take the last or only piece. Plaintext is padded to whole blocks; ciphertext
  // should have whole blocks, since a partial one stays queued for the next call.
  // Errors: E_OUTOFMEMORY
  Result<Bytes> TryEncrypt(ByteSpan data) {
    return Transform(&ISymmetricCryptObject::Encrypt, data, true);
  }
  Bytes Encrypt(ByteSpan data) { return TryEncrypt(data).Value(); }
  Result<Bytes> TryDecrypt(ByteSpan data) {
    return Transform(&ISymmetricCryptObject::Decrypt, data, true);
  }
  Bytes Decrypt(ByteSpan data) { return TryDecrypt(data).Value(); }

  Result<Bytes> TryEncryptPart(ByteSpan data) {
    return Transform(&ISymmetricCryptObject::Encrypt, data, false);
  }
  Bytes EncryptPart(ByteSpan data) { return TryEncryptPart(data).Value(); }
  Result<Bytes> TryDecryptPart(ByteSpan data) {
    return Transform(&ISymmetricCryptObject::Decrypt, data, false);
  }
  Bytes DecryptPart(ByteSpan data) { return TryDecryptPart(data).Value(); }

  // Discards the pending data of both operations.
  Result<void> TryReset() { return detail::Call(object_.Get(), &ISymmetricCryptObject::Reset, 0); }
  void Reset() { TryReset().Value(); }

  // Replaces or discards the key, and the pending data.
  // Errors: E_INVALIDARG for a key of another length, after which there is none
  Result<void> TrySetKey(ByteSpan key) {
    return detail::CallWithBytes(object_, &ISymmetricCryptObject::put_Key, key);
  }
  void SetKey(ByteSpan key) { TrySetKey(key).Value(); }
  Result<void> TryClearKey() {
    return detail::Call(object_.Get(), &ISymmetricCryptObject::ResetKey);
  }
  void ClearKey() { TryClearKey().Value(); }
  // The key; empty without one.
  Result<Bytes> TryKey() const {
    return detail::GetBytes(object_, &ISymmetricCryptObject::get_Key);
  }
  Bytes Key() const { return TryKey().Value(); }

  Result<void> TrySetPad(Pad pad) {
    return detail::Call(object_.Get(), &ISymmetricCryptObject::put_PadType, LONG{pad.Type()});
  }
  void SetPad(Pad pad) { TrySetPad(pad).Value(); }

  Result<std::size_t> TryBlockSize() const {
    return detail::GetSize(object_, &ISymmetricCryptObject::get_BlockSize);
  }
  std::size_t BlockSize() const { return TryBlockSize().Value(); }

  // The object itself, for callers of its interface.
  const Object<ISymmetricCryptObject>& Interface() const noexcept { return object_; }

 private:
  using Operation = HRESULT (STDMETHODCALLTYPE ISymmetricCryptObject::*)(VARIANT, VARIANT_BOOL,
                                                                         VARIANT*);

  // A call takes at most 1,048,832 bytes, its queue's size.
  static constexpr std::size_t kPiece = std::size_t{1} << 20;

  explicit Cipher(Object<ISymmetricCryptObject> object) noexcept : object_(std::move(object)) {}

  Result<Bytes> TransformPiece(Operation operation, ByteSpan piece, bool last) {
    const detail::BorrowedBytes borrowed(piece);
    Value result;
    const Result<void> done = detail::Call(object_.Get(), operation, borrowed.Get(),
                                           detail::ToBoolean(last), result.Put());
    if (!done) return done.Failure();
    return result.TryTakeBytes();
  }

  Result<Bytes> Transform(Operation operation, ByteSpan data, bool last) {
    if (data.size() <= kPiece) return TransformPiece(operation, data, last);
    // A partial block that is queued may complete one more block.
    Result<Bytes> whole = Bytes::TryCreate(data.size() + 64);
    std::size_t used = 0;
    while (whole && !data.empty()) {
      const std::size_t count = (std::min)(data.size(), kPiece);
      const Result<Bytes> piece =
          TransformPiece(operation, data.First(count), last && count == data.size());
      if (!piece) return piece.Failure();
      std::memcpy(whole->data() + used, piece->data(), piece->size());
      used += piece->size();
      data = data.From(count);
    }
    if (!whole) return whole;
    Result<Bytes> result = Bytes::TryCreate(used);
    if (result && used != 0) std::memcpy(result->data(), whole->data(), used);
    return result;
  }

  Object<ISymmetricCryptObject> object_;
};

// The algorithms as types.
class Aes : public Cipher {
 public:
  explicit Aes(ByteSpan key, Pad pad = Pad()) : Cipher("AES", key, pad) {}
};
class Des : public Cipher {
 public:
  explicit Des(ByteSpan key, Pad pad = Pad()) : Cipher("DES", key, pad) {}
};

}  // namespace mirolta
