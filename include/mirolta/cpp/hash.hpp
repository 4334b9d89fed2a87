// SPDX-License-Identifier: MIT
// Digests and HMACs (HashObject).
#pragma once

#include <array>
#include <cstring>
#include <string>
#include <utility>

#include "arguments.hpp"
#include "create.hpp"

namespace mirolta {

// The code pages that texts are converted with; others have the platform's numbers.
inline constexpr LONG kSystemCodePage = 0;
inline constexpr LONG kUtf8CodePage = 65001;

namespace detail {

// A digest whose size is known when the program runs.
inline constexpr std::size_t kAnySize = 0;

// The size of the digest with a name of that many characters: MD5, SHA1, SHA256.
constexpr std::size_t DigestSizeOfName(std::size_t length) noexcept {
  return length == 3 ? 16 : length == 4 ? 20 : length == 6 ? 32 : kAnySize;
}

}  // namespace detail

// Hash computes the digest of the data that Update passes, in any number of pieces, or with a key
// their HMAC. The algorithm is "MD5", "SHA1" or "SHA256".
//
// kDigestSize is the number of bytes in the digest, for a digest in a std::array; Hash("SHA256")
// finds it from the literal. It is 0 for names that are not known before the program runs: the digest
// is Bytes then.
template <std::size_t kDigestSize = detail::kAnySize>
class Hash {
 public:
  using Digest = std::conditional_t<kDigestSize == detail::kAnySize, Bytes,
                                    std::array<std::uint8_t, kDigestSize>>;

  explicit Hash(std::string_view algorithm) : Hash(TryCreate(algorithm).Value()) {}
  // With the key of an HMAC.
  Hash(std::string_view algorithm, ByteSpan key) : Hash(TryCreate(algorithm, key).Value()) {}

  Hash(Hash&&) noexcept = default;
  Hash& operator=(Hash&&) noexcept = default;

  // Errors: 0x80042777 "Algorithm not found."; E_UNEXPECTED for an empty key; DISP_E_BADINDEX if the
  //         digest does not have kDigestSize bytes; those of TryCreateObject
  static Result<Hash> TryCreate(std::string_view algorithm) {
    Result<Object<IHashObject>> object = TryCreateObject<IHashObject>(CLSID_HashObject);
    if (!object) return object.Failure();
    Hash hash(*std::move(object));
    const Text name(algorithm);
    const Result<void> chosen =
        detail::Call(hash.object_.Get(), &IHashObject::InitHash, name.Get());
    if (!chosen) return chosen.Failure();
    const Result<std::size_t> size = detail::GetSize(hash.object_, &IHashObject::get_HashSize);
    if (!size) return size.Failure();
    if (kDigestSize != detail::kAnySize && *size != kDigestSize) {
      return detail::OwnError(DISP_E_BADINDEX, "The digest has " + std::to_string(*size) +
                                                   " bytes, not " + std::to_string(kDigestSize) +
                                                   ".");
    }
    hash.size_ = *size;
    return hash;
  }
  static Result<Hash> TryCreate(std::string_view algorithm, ByteSpan key) {
    Result<Hash> hash = TryCreate(algorithm);
    if (!hash) return hash;
    const Result<void> set = hash->TrySetKey(key);
    if (!set) return set.Failure();
    return hash;
  }

  // Adds data.
  Result<void> TryUpdate(ByteSpan data) {
    do {
      const std::size_t count = (std::min)(data.size(), detail::kLargestPiece);
      const detail::BorrowedBytes piece(data.First(count));
      const Result<void> added =
          detail::Call(object_.Get(), &IHashObject::HashUpdate, piece.Get(), kSystemCodePage);
      if (!added) return added;
      data = data.From(count);
    } while (!data.empty());
    return {};
  }
  Hash& Update(ByteSpan data) {
    TryUpdate(data).Value();
    return *this;
  }

  // Adds a text as the class converts it: by the code page, up to the first zero character.
  Result<void> TryUpdateText(const Text& text, LONG code_page = kUtf8CodePage) {
    const Value value(text);
    // As an argument -1 stands for the property.
    Result<void> done = detail::Call(object_.Get(), &IHashObject::put_codePage, code_page);
    if (done) done = detail::Call(object_.Get(), &IHashObject::HashUpdate, value.Get(), -1);
    return done;
  }
  Hash& UpdateText(const Text& text, LONG code_page = kUtf8CodePage) {
    TryUpdateText(text, code_page).Value();
    return *this;
  }

  // The digest of the data so far. The next Update begins a new message, with the same key.
  Result<Digest> TryFinish() {
    Result<Bytes> bytes = detail::GetBytes(object_, &IHashObject::get_BinaryValue);
    if (!bytes) return bytes.Failure();
    const Result<void> restarted = TryReset();
    if (!restarted) return restarted.Failure();
    if constexpr (kDigestSize == detail::kAnySize) {
      return bytes;
    } else {
      return bytes->template TryToArray<kDigestSize>();
    }
  }
  Digest Finish() { return TryFinish().Value(); }
  // The same in lowercase hexadecimal.
  Result<std::string> TryFinishHex() {
    const Result<Digest> digest = TryFinish();
    if (!digest) return digest.Failure();
    return ToHex(*digest);
  }
  std::string FinishHex() { return TryFinishHex().Value(); }
  // The same at the beginning of `out`; returns the size of the digest.
  // Errors: DISP_E_BADINDEX if out is shorter, which leaves the computation as it is
  Result<std::size_t> TryFinishInto(WritableByteSpan out) {
    if (out.size() < size_) {
      return detail::OwnError(DISP_E_BADINDEX, "The digest has " + std::to_string(size_) +
                                                   " bytes, and there is room for " +
                                                   std::to_string(out.size()) + ".");
    }
    const Result<Digest> digest = TryFinish();
    if (!digest) return digest.Failure();
    std::memcpy(out.data(), digest->data(), digest->size());
    return digest->size();
  }
  std::size_t FinishInto(WritableByteSpan out) { return TryFinishInto(out).Value(); }

  // Begins a new message, with the same key.
  Result<void> TryReset() { return detail::Call(object_.Get(), &IHashObject::Reset); }
  void Reset() { TryReset().Value(); }

  // Sets the key of an HMAC, or removes it; either begins a new message.
  // Errors: E_UNEXPECTED for an empty key, after which there is none
  Result<void> TrySetKey(ByteSpan key) {
    return detail::CallWithBytes(object_, &IHashObject::put_Key, key);
  }
  void SetKey(ByteSpan key) { TrySetKey(key).Value(); }
  Result<void> TryClearKey() { return detail::Call(object_.Get(), &IHashObject::ResetKey); }
  void ClearKey() { TryClearKey().Value(); }
  // The key; empty without one.
  Result<Bytes> TryKey() const { return detail::GetBytes(object_, &IHashObject::get_Key); }
  Bytes Key() const { return TryKey().Value(); }

  std::size_t DigestSize() const noexcept { return size_; }
  Result<std::size_t> TryBlockSize() const {
    return detail::GetSize(object_, &IHashObject::get_BlockSize);
  }
  std::size_t BlockSize() const { return TryBlockSize().Value(); }

  // The object itself, for callers of its interface.
  const Object<IHashObject>& Interface() const noexcept { return object_; }

 private:
  explicit Hash(Object<IHashObject> object) noexcept : object_(std::move(object)) {}

  Object<IHashObject> object_;
  std::size_t size_ = 0;
};

// By the length of the name, so that the type of the digest is known. A literal that names no
// algorithm is refused when the object is made.
template <std::size_t kSize>
Hash(const char (&)[kSize]) -> Hash<detail::DigestSizeOfName(kSize - 1)>;
template <std::size_t kSize, typename Key>
Hash(const char (&)[kSize], Key&&) -> Hash<detail::DigestSizeOfName(kSize - 1)>;
// Not a literal: a buffer, whose text may be shorter.
template <std::size_t kSize>
Hash(char (&)[kSize]) -> Hash<>;
template <std::size_t kSize, typename Key>
Hash(char (&)[kSize], Key&&) -> Hash<>;
Hash(std::string_view)->Hash<>;
Hash(std::string_view, ByteSpan)->Hash<>;

// The algorithms as types.
class Md5 : public Hash<16> {
 public:
  Md5() : Hash("MD5") {}
  explicit Md5(ByteSpan key) : Hash("MD5", key) {}
};
class Sha1 : public Hash<20> {
 public:
  Sha1() : Hash("SHA1") {}
  explicit Sha1(ByteSpan key) : Hash("SHA1", key) {}
};
class Sha256 : public Hash<32> {
 public:
  Sha256() : Hash("SHA256") {}
  explicit Sha256(ByteSpan key) : Hash("SHA256", key) {}
};

}  // namespace mirolta
