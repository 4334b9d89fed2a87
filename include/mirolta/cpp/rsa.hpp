// SPDX-License-Identifier: MIT
// RSA keys and raw RSA (RSACrypt).
#pragma once

#include <utility>

#include "arguments.hpp"
#include "create.hpp"
#include "number.hpp"

namespace mirolta {

// The numbers of an RSA key. A public key has the modulus and the public exponent; those that are not
// known are zero.
struct RsaKey {
  Number modulus;
  Number public_exponent;
  Number secret_exponent;
  Number p;
  Number q;
};

// Rsa transforms one number below the modulus at a time, without padding: equal data gives equal
// results, and a modified ciphertext is not detected. Encrypt random keys with it, and the data with
// those.
class Rsa {
 public:
  // The key of five numbers. Nothing checks that they belong together.
  explicit Rsa(const RsaKey& key) : Rsa(TryCreate(key).Value()) {}

  Rsa(Rsa&&) noexcept = default;
  Rsa& operator=(Rsa&&) noexcept = default;

  // Errors: E_INVALIDARG for a negative number
  static Result<Rsa> TryCreate(const RsaKey& key) {
    Result<Rsa> rsa = TryCreate();
    Result<void> done = rsa ? Result<void>() : Result<void>(rsa.Failure());
    if (done) done = rsa->Put(&IRSACrypt::put_Modulus, key.modulus);
    if (done) done = rsa->Put(&IRSACrypt::put_PublicExp, key.public_exponent);
    if (done) done = rsa->Put(&IRSACrypt::put_SecretExp, key.secret_exponent);
    if (done) done = rsa->Put(&IRSACrypt::put_P, key.p);
    if (done) done = rsa->Put(&IRSACrypt::put_Q, key.q);
    if (!done) return done.Failure();
    return rsa;
  }

  // A random key whose modulus has exactly 16 * (byte_count / 2) bits, for byte_count 4 or more: 256
  // for one of 2048 bits. The public exponent is the given one, or the next that is odd and coprime
  // to (p - 1)(q - 1).
  // Errors: E_INVALIDARG for less than 2 bytes; E_FAIL if the system supplies no random bytes
  static Result<Rsa> TryGenerate(std::size_t byte_count, const Number& public_exponent = 65537) {
    if (byte_count > kMostBytes) return Error(E_OUTOFMEMORY);
    Result<Rsa> rsa = TryCreate();
    Result<void> done = rsa ? Result<void>() : Result<void>(rsa.Failure());
    if (done) done = rsa->Put(&IRSACrypt::put_PublicExp, public_exponent);
    if (done) {
      done = detail::Call(rsa->object_.Get(), &IRSACrypt::CreateRandKeys,
                          static_cast<LONG>(byte_count), VARIANT_TRUE);
    }
    if (!done) return done.Failure();
    return rsa;
  }
  static Rsa Generate(std::size_t byte_count, const Number& public_exponent = 65537) {
    return TryGenerate(byte_count, public_exponent).Value();
  }

  // The key of two primes above 1223. Of other numbers the next probable prime is taken; the smaller
  // one becomes p.
  static Result<Rsa> TryFromPrimes(const Number& p, const Number& q,
                                   const Number& public_exponent = 65537) {
    Result<Rsa> rsa = TryCreate();
    Result<void> done = rsa ? Result<void>() : Result<void>(rsa.Failure());
    if (done) done = rsa->Put(&IRSACrypt::put_PublicExp, public_exponent);
    if (!done) return done.Failure();
    const Result<Bytes> first = BytesOf(p);
    if (!first) return first.Failure();
    const Result<Bytes> second = BytesOf(q);
    if (!second) return second.Failure();
    done = detail::Call(rsa->object_.Get(), &IRSACrypt::CreateKeys,
                        detail::BorrowedBytes(*first).Get(), detail::BorrowedBytes(*second).Get());
    if (!done) return done.Failure();
    return rsa;
  }
  static Rsa FromPrimes(const Number& p, const Number& q, const Number& public_exponent = 65537) {
    return TryFromPrimes(p, q, public_exponent).Value();
  }

  // The key's numbers.
  Result<RsaKey> TryKey() const {
    RsaKey key;
    Result<void> done = Get(&IRSACrypt::get_Modulus, &key.modulus);
    if (done) done = Get(&IRSACrypt::get_PublicExp, &key.public_exponent);
    if (done) done = Get(&IRSACrypt::get_SecretExp, &key.secret_exponent);
    if (done) done = Get(&IRSACrypt::get_P, &key.p);
    if (done) done = Get(&IRSACrypt::get_Q, &key.q);
    if (!done) return done.Failure();
    return key;
  }
  RsaKey Key() const { return TryKey().Value(); }
  // The part that may be published.
  Result<RsaKey> TryPublicKey() const {
    RsaKey key;
    Result<void> done = Get(&IRSACrypt::get_Modulus, &key.modulus);
    if (done) done = Get(&IRSACrypt::get_PublicExp, &key.public_exponent);
    if (!done) return done.Failure();
    return key;
  }
  RsaKey PublicKey() const { return TryPublicKey().Value(); }

  // Data to the power of the public exponent.
  // Errors: 0x80042779 "Key not set."; 0x8004277A "Too much data." if it is not below the modulus;
  //         E_INVALIDARG for a negative number
  Result<Number> TryEncrypt(const Number& data) const {
    return Transform(&IRSACrypt::Encrypt, data);
  }
  Number Encrypt(const Number& data) const { return TryEncrypt(data).Value(); }
  // Data to the power of the secret exponent.
  // Errors: 0x80042779 "Key not set."
  // Time:   not constant
  Result<Number> TryDecrypt(const Number& data) const {
    return Transform(&IRSACrypt::Decrypt, data);
  }
  Number Decrypt(const Number& data) const { return TryDecrypt(data).Value(); }
  // The same from the public exponent and the primes, by the Chinese remainder theorem, which is
  // faster.
  Result<Number> TryDecryptByPrimes(const Number& data) const {
    return Transform(&IRSACrypt::DecryptPQ, data);
  }
  Number DecryptByPrimes(const Number& data) const { return TryDecryptByPrimes(data).Value(); }

  // The largest count of bytes whose every value is below the modulus.
  Result<std::size_t> TryBlockSize() const {
    return detail::GetSize(object_, &IRSACrypt::get_BlockSize);
  }
  std::size_t BlockSize() const { return TryBlockSize().Value(); }

  // The object itself, for callers of its interface.
  const Object<IRSACrypt>& Interface() const noexcept { return object_; }

 private:
  using Putter = HRESULT (STDMETHODCALLTYPE IRSACrypt::*)(VARIANT);
  using Getter = HRESULT (STDMETHODCALLTYPE IRSACrypt::*)(VARIANT*);
  using Operation = HRESULT (STDMETHODCALLTYPE IRSACrypt::*)(VARIANT, VARIANT*);

  static constexpr std::size_t kMostBytes = 0x7FFFFFFF;

  explicit Rsa(Object<IRSACrypt> object) noexcept : object_(std::move(object)) {}

  static Result<Rsa> TryCreate() {
    Result<Object<IRSACrypt>> object = TryCreateObject<IRSACrypt>(CLSID_RSACrypt);
    if (!object) return object.Failure();
    return Rsa(*std::move(object));
  }

  static Result<Bytes> BytesOf(const Number& number) {
    if (number.IsNegative()) return detail::OwnError(E_INVALIDARG, "The number is negative.");
    return number.TryToBytes();
  }

  Result<void> Put(Putter put, const Number& number) const {
    const Result<Bytes> bytes = BytesOf(number);
    if (!bytes) return bytes.Failure();
    return detail::CallWithBytes(object_, put, *bytes);
  }

  Result<void> Get(Getter get, Number* number) const {
    const Result<Bytes> bytes = detail::GetBytes(object_, get);
    if (!bytes) return bytes.Failure();
    Result<Number> made = Number::TryFromBytes(*bytes);
    if (!made) return made.Failure();
    *number = *std::move(made);
    return {};
  }

  Result<Number> Transform(Operation operation, const Number& data) const {
    const Result<Bytes> bytes = BytesOf(data);
    if (!bytes) return bytes.Failure();
    const detail::BorrowedBytes argument(*bytes);
    Value result;
    const Result<void> done = detail::Call(object_.Get(), operation, argument.Get(), result.Put());
    if (!done) return done.Failure();
    const Result<Bytes> taken = result.TryTakeBytes();
    if (!taken) return taken.Failure();
    return Number::TryFromBytes(*taken);
  }

  Object<IRSACrypt> object_;
};

}  // namespace mirolta
