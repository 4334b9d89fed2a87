// SPDX-License-Identifier: MIT
// How arguments are passed to members, and results fetched.
#pragma once

#include <algorithm>

#include "call.hpp"
#include "value.hpp"

namespace mirolta {
namespace detail {

// A piece of data for one call; an array has at most 2^31 - 1 elements.
inline constexpr std::size_t kLargestPiece = std::size_t{1} << 30;

// CallWithBytes passes bytes as an argument.
// Errors: the member's; E_INVALIDARG for bytes that no array holds
template <typename Interface, typename Member>
Result<void> CallWithBytes(const Object<Interface>& object, Member member, ByteSpan bytes) {
  if (bytes.size() > kLargestPiece) return Error(E_INVALIDARG);
  const BorrowedBytes borrowed(bytes);
  return Call(object.Get(), member, borrowed.Get());
}

template <typename Interface, typename Member>
Result<Bytes> GetBytes(const Object<Interface>& object, Member member) {
  Value value;
  const Result<void> called = Call(object.Get(), member, value.Put());
  if (!called) return called.Failure();
  return value.TryTakeBytes();
}

template <typename Interface, typename Member>
Result<std::size_t> GetSize(const Object<Interface>& object, Member member) {
  LONG value = 0;
  const Result<void> called = Call(object.Get(), member, &value);
  if (!called) return called.Failure();
  return static_cast<std::size_t>(value);
}

template <typename Interface, typename Member>
Result<Text> GetText(const Object<Interface>& object, Member member) {
  Text text;
  const Result<void> called = Call(object.Get(), member, text.Put());
  if (!called) return called.Failure();
  return text;
}

template <typename Interface, typename Member>
Result<bool> GetBoolean(const Object<Interface>& object, Member member) {
  VARIANT_BOOL value = VARIANT_FALSE;
  const Result<void> called = Call(object.Get(), member, &value);
  if (!called) return called.Failure();
  return value != VARIANT_FALSE;
}

inline VARIANT_BOOL ToBoolean(bool value) noexcept {
  return value ? VARIANT_TRUE : VARIANT_FALSE;
}

}  // namespace detail
}  // namespace mirolta
