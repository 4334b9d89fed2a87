// SPDX-License-Identifier: MIT
// Integers of arbitrary size (PexBigNumber).
#pragma once

#include <cstdint>
#include <limits>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "arguments.hpp"
#include "create.hpp"

namespace mirolta {

// Number is a signed integer with the operators of the language: / truncates towards zero and % has
// the sign of the dividend. Each number has an object of its own, which holds its magnitude; zero
// needs none. Copies are independent. Only one thread at a time may use a number, as with the class.
class Number {
 public:
  Number() noexcept = default;
  template <
      typename Integer,
      std::enable_if_t<std::is_integral_v<Integer> && !std::is_same_v<Integer, bool>, int> = 0>
  Number(Integer value) : Number(TryFrom(value).Value()) {}
  // The number of a decimal text, as Parse.
  explicit Number(std::string_view decimal) : Number(TryParse(decimal).Value()) {}
  explicit Number(const char* decimal) : Number(std::string_view(decimal)) {}
  explicit Number(const std::string& decimal) : Number(std::string_view(decimal)) {}

  Number(const Number& other) : Number(other.TryCopy().Value()) {}
  Number(Number&& other) noexcept
      : magnitude_(std::move(other.magnitude_)), negative_(std::exchange(other.negative_, false)) {}
  Number& operator=(Number other) noexcept {
    std::swap(magnitude_, other.magnitude_);
    std::swap(negative_, other.negative_);
    return *this;
  }
  ~Number() = default;

  template <typename Integer>
  static Result<Number> TryFrom(Integer value) {
    const bool negative = std::is_signed_v<Integer> && value < Integer{};
    auto rest = static_cast<std::uint64_t>(value);
    if (negative) rest = 0 - rest;
    std::uint8_t bytes[8];
    for (int i = 7; i >= 0; --i, rest >>= 8) bytes[i] = static_cast<std::uint8_t>(rest);
    return TryFromBytes(bytes, negative);
  }

  // The number of decimal digits, with a minus sign before those of a negative one.
  // Errors: E_INVALIDARG for any other text; E_OUTOFMEMORY
  // Time:   about that of multiplications of the number's size
  static Result<Number> TryParse(std::string_view text) {
    const bool negative = TakeSign(&text);
    if (text.empty() || text.find_first_not_of("0123456789") != text.npos) {
      return detail::OwnError(E_INVALIDARG, "The text is not a decimal number.");
    }
    Result<Number> number = ParseDigits(text);
    if (number) number->SetSign(negative);
    return number;
  }
  static Number Parse(std::string_view text) { return TryParse(text).Value(); }
  // The same of hexadecimal digits, without a prefix.
  static Result<Number> TryParseHex(std::string_view text) {
    const bool negative = TakeSign(&text);
    std::string digits(text.size() % 2, '0');
    digits += text;
    Result<Bytes> bytes = TryFromHex(digits);
    if (text.empty() || (!bytes && bytes.Failure().Number() == E_INVALIDARG)) {
      return detail::OwnError(E_INVALIDARG, "The text is not a hexadecimal number.");
    }
    if (!bytes) return bytes.Failure();
    return TryFromBytes(*bytes, negative);
  }
  static Number ParseHex(std::string_view text) { return TryParseHex(text).Value(); }

  // The number of bytes, most significant first.
  static Result<Number> TryFromBytes(ByteSpan bytes, bool negative = false) {
    while (!bytes.empty() && bytes[0] == 0) bytes = bytes.From(1);
    Number number;
    if (bytes.empty()) return number;
    Result<Object<IPexBigNumber>> object = TryCreateObject<IPexBigNumber>(CLSID_PexBigNumber);
    if (!object) return object.Failure();
    number.magnitude_ = *std::move(object);
    const Result<void> set =
        detail::CallWithBytes(number.magnitude_, &IPexBigNumber::put_Binary, bytes);
    if (!set) return set.Failure();
    number.negative_ = negative;
    return number;
  }
  static Number FromBytes(ByteSpan bytes) { return TryFromBytes(bytes).Value(); }

  // A random number of that many bytes, of the system's cryptographic random source. With `full` the
  // two highest bits are set, so that it has exactly 8 * byte_count bits; with `odd` the lowest one.
  // Errors: E_INVALIDARG for no bytes; E_FAIL if the system supplies none
  // Time:   waits for the next tick of the system's clock
  static Result<Number> TryRandom(std::size_t byte_count, bool full = false, bool odd = false) {
    if (byte_count > kMostRandomBytes) return Error(E_OUTOFMEMORY);
    Result<Object<IPexBigNumber>> object = TryCreateObject<IPexBigNumber>(CLSID_PexBigNumber);
    if (!object) return object.Failure();
    const Result<void> filled =
        detail::Call(object->Get(), &IPexBigNumber::Random, static_cast<LONG>(byte_count),
                     detail::ToBoolean(full), detail::ToBoolean(odd));
    if (!filled) return filled.Failure();
    return FromMagnitude(*std::move(object), false);
  }
  static Number Random(std::size_t byte_count, bool full = false, bool odd = false) {
    return TryRandom(byte_count, full, odd).Value();
  }

  // Decimal and lowercase hexadecimal digits, after a minus sign if the number is negative.
  Result<std::string> TryToText() const { return DigitsOf(&IPexBigNumber::get_Value); }
  std::string ToText() const { return TryToText().Value(); }
  Result<std::string> TryToHex() const { return DigitsOf(&IPexBigNumber::get_Hex); }
  std::string ToHex() const { return TryToHex().Value(); }

  // The magnitude's bytes, most significant first, without leading zero bytes: none for zero.
  Result<Bytes> TryToBytes() const {
    if (IsZero()) return Bytes();
    return detail::GetBytes(magnitude_, &IPexBigNumber::get_Binary);
  }
  Bytes ToBytes() const { return TryToBytes().Value(); }
  // The same with leading zero bytes, `size` bytes in all.
  // Errors: DISP_E_OVERFLOW if the magnitude has more
  Result<Bytes> TryToBytes(std::size_t size) const {
    Result<Bytes> bytes = TryToBytes();
    if (!bytes) return bytes;
    if (bytes->size() > size) {
      return detail::OwnError(DISP_E_OVERFLOW, "The number has " + std::to_string(bytes->size()) +
                                                   " bytes, more than " + std::to_string(size) +
                                                   ".");
    }
    Result<Bytes> padded = Bytes::TryCreate(size);
    if (padded) std::copy(bytes->begin(), bytes->end(), padded->end() - bytes->size());
    return padded;
  }
  Bytes ToBytes(std::size_t size) const { return TryToBytes(size).Value(); }

  // The number as an integer of the language.
  // Errors: DISP_E_OVERFLOW if it does not fit
  template <typename Integer>
  Result<Integer> TryTo() const {
    static_assert(std::is_integral_v<Integer> && !std::is_same_v<Integer, bool>);
    const Result<Bytes> bytes = TryToBytes();
    if (!bytes) return bytes.Failure();
    std::uint64_t magnitude = 0;
    for (const std::uint8_t next : *bytes) magnitude = (magnitude << 8) | next;
    const auto most = static_cast<std::uint64_t>((std::numeric_limits<Integer>::max)());
    // The least negative number has a magnitude that is larger by one.
    const std::uint64_t limit = !negative_ ? most : std::is_signed_v<Integer> ? most + 1 : 0;
    if (bytes->size() > 8 || magnitude > limit) {
      return detail::OwnError(DISP_E_OVERFLOW, "The number does not fit the integer.");
    }
    return static_cast<Integer>(negative_ ? 0 - magnitude : magnitude);
  }
  template <typename Integer>
  Integer To() const {
    return TryTo<Integer>().Value();
  }

  bool IsZero() const noexcept { return !magnitude_; }
  bool IsNegative() const noexcept { return negative_; }
  // -1, 0 or 1.
  int Sign() const noexcept { return IsZero() ? 0 : negative_ ? -1 : 1; }
  // The number of bits in the magnitude; 0 for zero.
  Result<std::size_t> TryBitLength() const {
    const Result<Bytes> bytes = TryToBytes();
    if (!bytes) return bytes.Failure();
    std::size_t bits = 8 * bytes->size();
    if (bits == 0) return bits;
    for (unsigned first = (*bytes)[0]; first < 0x80; first <<= 1) --bits;
    return bits;
  }
  std::size_t BitLength() const { return TryBitLength().Value(); }

  // A copy, with the other sign, without sign.
  Result<Number> TryCopy() const {
    const Result<Bytes> bytes = TryToBytes();
    if (!bytes) return bytes.Failure();
    return TryFromBytes(*bytes, negative_);
  }
  Number Abs() const {
    Number copy(*this);
    copy.negative_ = false;
    return copy;
  }

  // Errors: E_OUTOFMEMORY; of a division by zero DISP_E_DIVBYZERO
  Result<Number> TryAdd(const Number& other) const { return Sum(*this, other, other.negative_); }
  Result<Number> TrySubtract(const Number& other) const {
    return Sum(*this, other, !other.negative_);
  }
  Result<Number> TryMultiply(const Number& other) const {
    return Combine(&IPexBigNumber::Mul, other, negative_ != other.negative_);
  }
  Result<Number> TryDivide(const Number& other) const {
    if (other.IsZero()) return Error(DISP_E_DIVBYZERO);
    return Combine(&IPexBigNumber::Div, other, negative_ != other.negative_);
  }
  Result<Number> TryRemainder(const Number& other) const {
    if (other.IsZero()) return Error(DISP_E_DIVBYZERO);
    return Combine(&IPexBigNumber::Mod, other, negative_);
  }

  // -1, 0 or 1: this is less than, equal to or greater than the other.
  Result<int> TryCompare(const Number& other) const {
    if (Sign() != other.Sign()) return Sign() < other.Sign() ? -1 : 1;
    const Result<int> order = CompareMagnitudes(*this, other);
    if (!order) return order;
    return negative_ ? -*order : *order;
  }
  int Compare(const Number& other) const { return TryCompare(other).Value(); }

  // The greatest common divisor, which is not negative.
  Result<Number> TryGcd(const Number& other) const {
    if (IsZero() || other.IsZero()) {
      Result<Number> copy = IsZero() ? other.TryCopy() : TryCopy();
      if (copy) copy->negative_ = false;
      return copy;
    }
    return Combine(&IPexBigNumber::GCD, other, false);
  }
  Number Gcd(const Number& other) const { return TryGcd(other).Value(); }

  // This number to a power.
  Result<Number> TryPower(unsigned exponent) const {
    Result<Number> power = TryFrom(1);
    Result<Number> square = TryCopy();
    for (; power && square && exponent != 0; exponent >>= 1) {
      if (exponent & 1u) power = power->TryMultiply(*square);
      if (exponent > 1) square = square->TryMultiply(*square);
    }
    if (!square) return square;
    return power;
  }
  Number Power(unsigned exponent) const { return TryPower(exponent).Value(); }

  // This number to a power modulo a positive number: from 0 to modulus - 1. A negative exponent is
  // that of the inverse.
  // Errors: DISP_E_DIVBYZERO for modulus 0; E_INVALIDARG for a negative one, and for a negative
  //         exponent if there is no inverse
  Result<Number> TryPowerMod(const Number& exponent, const Number& modulus) const {
    if (exponent.negative_) {
      const Result<Number> inverse = TryInverse(modulus);
      if (!inverse) return inverse;
      Result<Number> positive = exponent.TryCopy();
      if (!positive) return positive;
      positive->negative_ = false;
      return inverse->TryPowerMod(*positive, modulus);
    }
    const Result<Number> base = Residue(modulus);
    if (!base) return base;
    if (exponent.IsZero()) return Number(1).Residue(modulus);
    if (base->IsZero()) return Number();
    const Result<Bytes> power = exponent.TryToBytes();
    if (!power) return power.Failure();
    const Result<Bytes> divisor = modulus.TryToBytes();
    if (!divisor) return divisor.Failure();
    Object<IPexBigNumber> result;
    const detail::BorrowedBytes first(*power);
    const detail::BorrowedBytes second(*divisor);
    const Result<void> done = detail::Call(base->magnitude_.Get(), &IPexBigNumber::ModExp,
                                           first.Get(), second.Get(), result.Put());
    if (!done) return done.Failure();
    return FromMagnitude(std::move(result), false);
  }
  Number PowerMod(const Number& exponent, const Number& modulus) const {
    return TryPowerMod(exponent, modulus).Value();
  }

  // The number from 0 to modulus - 1 whose product with this one is 1 modulo a positive number.
  // Errors: DISP_E_DIVBYZERO for modulus 0; E_INVALIDARG for a negative one, and if there is none
  Result<Number> TryInverse(const Number& modulus) const {
    const Result<Number> residue = Residue(modulus);
    if (!residue) return residue;
    // The class does not check that there is one.
    const Result<Number> divisor = residue->TryGcd(modulus);
    if (!divisor) return divisor;
    const Result<std::size_t> bits = divisor->TryBitLength();
    if (!bits) return bits.Failure();
    if (*bits != 1) return detail::OwnError(E_INVALIDARG, "The number has no inverse.");
    if (residue->IsZero()) return Number();  // modulo 1
    return residue->Combine(&IPexBigNumber::ModInv, modulus, false);
  }
  Number Inverse(const Number& modulus) const { return TryInverse(modulus).Value(); }

  Number operator-() const {
    Number copy(*this);
    copy.SetSign(!negative_);
    return copy;
  }
  Number operator+() const { return *this; }
  friend Number operator+(const Number& a, const Number& b) { return a.TryAdd(b).Value(); }
  friend Number operator-(const Number& a, const Number& b) { return a.TrySubtract(b).Value(); }
  friend Number operator*(const Number& a, const Number& b) { return a.TryMultiply(b).Value(); }
  friend Number operator/(const Number& a, const Number& b) { return a.TryDivide(b).Value(); }
  friend Number operator%(const Number& a, const Number& b) { return a.TryRemainder(b).Value(); }
  Number& operator+=(const Number& other) { return *this = *this + other; }
  Number& operator-=(const Number& other) { return *this = *this - other; }
  Number& operator*=(const Number& other) { return *this = *this * other; }
  Number& operator/=(const Number& other) { return *this = *this / other; }
  Number& operator%=(const Number& other) { return *this = *this % other; }
  Number& operator++() { return *this += 1; }
  Number& operator--() { return *this -= 1; }
  Number operator++(int) {
    Number before(*this);
    ++*this;
    return before;
  }
  Number operator--(int) {
    Number before(*this);
    --*this;
    return before;
  }

  friend bool operator==(const Number& a, const Number& b) { return a.Compare(b) == 0; }
  friend bool operator!=(const Number& a, const Number& b) { return a.Compare(b) != 0; }
  friend bool operator<(const Number& a, const Number& b) { return a.Compare(b) < 0; }
  friend bool operator<=(const Number& a, const Number& b) { return a.Compare(b) <= 0; }
  friend bool operator>(const Number& a, const Number& b) { return a.Compare(b) > 0; }
  friend bool operator>=(const Number& a, const Number& b) { return a.Compare(b) >= 0; }

  // Writes the decimal text.
  friend std::ostream& operator<<(std::ostream& out, const Number& number) {
    return out << number.ToText();
  }

  // The object that holds the magnitude, for callers of its interface; none for zero.
  const Object<IPexBigNumber>& Interface() const noexcept { return magnitude_; }

 private:
  using Operation = HRESULT (STDMETHODCALLTYPE IPexBigNumber::*)(VARIANT, IPexBigNumber**);
  using Property = HRESULT (STDMETHODCALLTYPE IPexBigNumber::*)(VARIANT*);

  static constexpr std::size_t kMostRandomBytes = 0x7FFFFFFF;
  // The class reads longer texts with a buffer that may be too short.
  static constexpr std::size_t kDigitsAtOnce = 1024;

  void SetSign(bool negative) noexcept { negative_ = negative && !IsZero(); }

  static bool TakeSign(std::string_view* text) noexcept {
    const bool negative = !text->empty() && text->front() == '-';
    if (negative) text->remove_prefix(1);
    return negative;
  }

  // A number that holds the object, or zero.
  static Result<Number> FromMagnitude(Object<IPexBigNumber> magnitude, bool negative) {
    const Value zero;
    LONG order = 0;
    const Result<void> compared =
        detail::Call(magnitude.Get(), &IPexBigNumber::Cmp, zero.Get(), &order);
    if (!compared) return compared.Failure();
    Number number;
    if (order == 0) return number;
    number.magnitude_ = std::move(magnitude);
    number.negative_ = negative;
    return number;
  }

  // An operation of the class on the magnitudes.
  Result<Number> Combine(Operation operation, const Number& other, bool negative) const {
    if (IsZero() || other.IsZero()) return Number();  // of products, quotients, remainders
    const Result<Bytes> bytes = other.TryToBytes();
    if (!bytes) return bytes.Failure();
    const detail::BorrowedBytes operand(*bytes);
    Object<IPexBigNumber> result;
    const Result<void> done =
        detail::Call(magnitude_.Get(), operation, operand.Get(), result.Put());
    if (!done) return done.Failure();
    return FromMagnitude(std::move(result), negative);
  }

  static Result<int> CompareMagnitudes(const Number& a, const Number& b) {
    if (a.IsZero() || b.IsZero()) return a.IsZero() == b.IsZero() ? 0 : a.IsZero() ? -1 : 1;
    const Result<Bytes> bytes = b.TryToBytes();
    if (!bytes) return bytes.Failure();
    const detail::BorrowedBytes operand(*bytes);
    LONG order = 0;
    const Result<void> compared =
        detail::Call(a.magnitude_.Get(), &IPexBigNumber::Cmp, operand.Get(), &order);
    if (!compared) return compared.Failure();
    return order < 0 ? -1 : order > 0 ? 1 : 0;
  }

  // a plus b with another sign.
  static Result<Number> Sum(const Number& a, const Number& b, bool negative) {
    if (a.IsZero() || b.IsZero()) {
      Result<Number> copy = b.IsZero() ? a.TryCopy() : b.TryCopy();
      if (copy && !b.IsZero()) copy->negative_ = negative;
      return copy;
    }
    if (a.negative_ == negative) return a.Combine(&IPexBigNumber::Add, b, negative);
    const Result<int> order = CompareMagnitudes(a, b);
    if (!order) return order.Failure();
    return *order < 0 ? b.Combine(&IPexBigNumber::Sub, a, negative)
                      : a.Combine(&IPexBigNumber::Sub, b, a.negative_);
  }

  // This number modulo a positive one: from 0 to modulus - 1.
  Result<Number> Residue(const Number& modulus) const {
    if (modulus.negative_) {
      return detail::OwnError(E_INVALIDARG, "The modulus is negative.");
    }
    const Result<Number> remainder = TryRemainder(modulus);
    return remainder && remainder->negative_ ? remainder->TryAdd(modulus) : remainder;
  }

  static Result<Number> ParseDigits(std::string_view digits) {
    // powers[k] is 10 to the power kDigitsAtOnce * 2^k.
    std::vector<Number> powers;
    if (digits.size() > kDigitsAtOnce) {
      Result<Number> power = Number(10).TryPower(kDigitsAtOnce);
      std::size_t size = kDigitsAtOnce;
      while (power) {
        powers.push_back(*std::move(power));
        size *= 2;
        if (size >= digits.size()) break;
        power = powers.back().TryMultiply(powers.back());
      }
      if (!power) return power;
    }
    return ParseDigits(digits, powers, powers.size());
  }

  // Digits, of which there are at most kDigitsAtOnce * 2^count.
  static Result<Number> ParseDigits(std::string_view digits, const std::vector<Number>& powers,
                                    std::size_t count) {
    if (count == 0) return ParseShort(digits);
    const std::size_t low_size = kDigitsAtOnce << (count - 1);
    if (digits.size() <= low_size) return ParseDigits(digits, powers, count - 1);
    const std::size_t high_size = digits.size() - low_size;
    const Result<Number> high = ParseDigits(digits.substr(0, high_size), powers, count - 1);
    if (!high) return high;
    const Result<Number> low = ParseDigits(digits.substr(high_size), powers, count - 1);
    if (!low) return low;
    const Result<Number> shifted = high->TryMultiply(powers[count - 1]);
    return shifted ? shifted->TryAdd(*low) : shifted;
  }

  static Result<Number> ParseShort(std::string_view digits) {
    Result<Object<IPexBigNumber>> object = TryCreateObject<IPexBigNumber>(CLSID_PexBigNumber);
    if (!object) return object.Failure();
    const Value text{digits};
    const Result<void> set = detail::Call(object->Get(), &IPexBigNumber::put_Value, text.Get());
    if (!set) return set.Failure();
    return FromMagnitude(*std::move(object), false);
  }

  Result<std::string> DigitsOf(Property property) const {
    if (IsZero()) return std::string("0");  // for which the class has no text
    Value value;
    const Result<void> got = detail::Call(magnitude_.Get(), property, value.Put());
    if (!got) return got.Failure();
    const Result<Text> text = value.TryToText();
    if (!text) return text.Failure();
    return (negative_ ? "-" : "") + text->Utf8();
  }

  Object<IPexBigNumber> magnitude_;
  bool negative_ = false;
};

}  // namespace mirolta
