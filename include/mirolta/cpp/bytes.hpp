// SPDX-License-Identifier: MIT
// Byte arrays that own their memory, and their hexadecimal text.
#pragma once

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "byte_span.hpp"
#include "error.hpp"

namespace mirolta {

// Bytes owns an automation byte array (a SAFEARRAY of VT_UI1 with one dimension) and is a container
// of its bytes, which are read without copying. They are wiped when they are replaced or destroyed.
class Bytes {
 public:
  using value_type = std::uint8_t;

  Bytes() noexcept = default;
  // A copy of the bytes.
  explicit Bytes(ByteSpan bytes) : Bytes(TryCreate(bytes.size()).Value()) {
    if (!bytes.empty()) std::memcpy(data(), bytes.data(), bytes.size());
  }
  Bytes(const Bytes& other) : Bytes(ByteSpan(other)) {}
  Bytes(Bytes&& other) noexcept : array_(other.Detach()) {}
  Bytes& operator=(Bytes other) noexcept {
    std::swap(array_, other.array_);
    return *this;
  }
  ~Bytes() { Clear(); }

  // An array of `size` zeros.
  // Errors: E_OUTOFMEMORY
  static Result<Bytes> TryCreate(std::size_t size) {
    Bytes bytes;
    if (size == 0) return bytes;
    if (size <= 0x7FFFFFFF) {
      bytes.array_ = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(size));
    }
    if (bytes.array_ == nullptr) return Error(E_OUTOFMEMORY);
    return bytes;
  }

  // Takes over an array.
  // Errors: DISP_E_TYPEMISMATCH for an array of other elements or dimensions, which is destroyed.
  static Result<Bytes> TryAttach(SAFEARRAY* array) {
    Bytes bytes;
    bytes.array_ = array;
    if (array == nullptr || (array->cDims == 1 && array->cbElements == 1)) return bytes;
    SafeArrayDestroy(bytes.Detach());
    return Error(DISP_E_TYPEMISMATCH);
  }
  // Gives up the array; null if it is empty. The caller destroys it.
  SAFEARRAY* Detach() noexcept { return std::exchange(array_, nullptr); }
  SAFEARRAY* Get() const noexcept { return array_; }

  std::uint8_t* data() noexcept { return Data(); }
  const std::uint8_t* data() const noexcept { return Data(); }
  std::size_t size() const noexcept {
    return array_ == nullptr ? 0 : array_->rgsabound[0].cElements;
  }
  bool empty() const noexcept { return size() == 0; }
  std::uint8_t* begin() noexcept { return data(); }
  std::uint8_t* end() noexcept { return data() + size(); }
  const std::uint8_t* begin() const noexcept { return data(); }
  const std::uint8_t* end() const noexcept { return data() + size(); }
  std::uint8_t& operator[](std::size_t index) noexcept { return data()[index]; }
  const std::uint8_t& operator[](std::size_t index) const noexcept { return data()[index]; }

  std::vector<std::uint8_t> ToVector() const { return {begin(), end()}; }

  // A copy in an array of the same size.
  // Errors: DISP_E_BADINDEX for another size
  template <std::size_t kSize>
  Result<std::array<std::uint8_t, kSize>> TryToArray() const {
    std::array<std::uint8_t, kSize> copy{};
    if (size() != kSize) {
      return detail::OwnError(DISP_E_BADINDEX, "There are " + std::to_string(size()) +
                                                   " bytes, not " + std::to_string(kSize) + ".");
    }
    std::copy(begin(), end(), copy.begin());
    return copy;
  }
  template <std::size_t kSize>
  std::array<std::uint8_t, kSize> ToArray() const {
    return TryToArray<kSize>().Value();
  }
  template <std::size_t kSize>
  operator std::array<std::uint8_t, kSize>() const {
    return ToArray<kSize>();
  }

  // Wipes the bytes and leaves none.
  void Clear() noexcept {
    if (array_ == nullptr) return;
    detail::WipeBytes(data(), size());
    SafeArrayDestroy(Detach());
  }

 private:
  std::uint8_t* Data() const noexcept {
    return array_ == nullptr ? nullptr : static_cast<std::uint8_t*>(array_->pvData);
  }

  SAFEARRAY* array_ = nullptr;
};

// Comparison stops at the first difference; EqualInConstantTime does not.
inline bool operator==(const Bytes& a, const Bytes& b) noexcept {
  return std::equal(a.begin(), a.end(), b.begin(), b.end());
}
inline bool operator!=(const Bytes& a, const Bytes& b) noexcept {
  return !(a == b);
}

// Lowercase hexadecimal digits, two for each byte.
inline std::string ToHex(ByteSpan bytes) {
  std::string text;
  text.reserve(2 * bytes.size());
  for (const unsigned value : bytes) {
    text += "0123456789abcdef"[value >> 4];
    text += "0123456789abcdef"[value & 15u];
  }
  return text;
}

namespace detail {

inline int HexDigit(char digit) noexcept {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return -1;
}

}  // namespace detail

// The bytes of hexadecimal digits in either case.
// Errors: E_INVALIDARG for another character or an odd number of digits; E_OUTOFMEMORY
inline Result<Bytes> TryFromHex(std::string_view text) {
  const auto refused = [] {
    return detail::OwnError(E_INVALIDARG, "The text is not pairs of hexadecimal digits.");
  };
  if (text.size() % 2 != 0) return refused();
  Result<Bytes> bytes = Bytes::TryCreate(text.size() / 2);
  if (!bytes) return bytes;
  for (std::size_t i = 0; i < bytes->size(); ++i) {
    const int high = detail::HexDigit(text[2 * i]);
    const int low = detail::HexDigit(text[2 * i + 1]);
    if (high < 0 || low < 0) return refused();
    (*bytes)[i] = static_cast<std::uint8_t>(16 * high + low);
  }
  return bytes;
}
inline Bytes FromHex(std::string_view text) {
  return TryFromHex(text).Value();
}

}  // namespace mirolta
