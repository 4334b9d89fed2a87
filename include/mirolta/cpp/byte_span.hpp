// SPDX-License-Identifier: MIT
// Views of bytes that others own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <type_traits>
#include <utility>

namespace mirolta {

namespace detail {

template <typename Type>
struct IsByte : std::false_type {};
template <>
struct IsByte<std::uint8_t> : std::true_type {};
template <>
struct IsByte<signed char> : std::true_type {};
template <>
struct IsByte<char> : std::true_type {};
template <>
struct IsByte<std::byte> : std::true_type {};
#ifdef __cpp_char8_t
template <>
struct IsByte<char8_t> : std::true_type {};
#endif

// The element of what std::data and std::size accept; void for anything else, and for arrays.
template <typename Container, typename = void>
struct ElementOf {
  using Type = void;
};
template <typename Container>
struct ElementOf<Container, std::void_t<decltype(std::data(std::declval<Container&>())),
                                        decltype(std::size(std::declval<Container&>()))>> {
  using Type =
      std::conditional_t<std::is_array_v<Container>, void,
                         std::remove_pointer_t<decltype(std::data(std::declval<Container&>()))>>;
};

// Whether From's elements are bytes that a span of To may refer to.
template <typename From, typename To>
inline constexpr bool kIsByteSource = IsByte<std::remove_cv_t<From>>::value &&
                                      (std::is_const_v<To> || !std::is_const_v<From>);

}  // namespace detail

// BasicByteSpan refers to bytes that must outlive it. Contiguous containers of bytes convert to it:
// std::vector, std::array, std::string, std::span of std::uint8_t, std::byte and the kinds of char.
// A ByteSpan is made of texts too, as their bytes without a terminator.
template <typename Element>
class BasicByteSpan {
 public:
  using element_type = Element;
  using value_type = std::remove_cv_t<Element>;

  constexpr BasicByteSpan() noexcept = default;
  template <typename Byte, std::enable_if_t<detail::kIsByteSource<Byte, Element>, int> = 0>
  BasicByteSpan(Byte* data, std::size_t size) noexcept
      : data_(reinterpret_cast<Element*>(data)), size_(size) {}
  // An array of char is a text, which may be shorter than the array.
  template <typename Byte, std::size_t kSize,
            std::enable_if_t<detail::kIsByteSource<Byte, Element> &&
                                 !std::is_same_v<std::remove_cv_t<Byte>, char>,
                             int> = 0>
  BasicByteSpan(Byte (&array)[kSize]) noexcept : BasicByteSpan(array, kSize) {}
  template <
      typename Container,
      std::enable_if_t<
          detail::kIsByteSource<
              typename detail::ElementOf<std::remove_reference_t<Container>>::Type, Element> &&
              !std::is_same_v<std::remove_cv_t<std::remove_reference_t<Container>>, BasicByteSpan>,
          int> = 0>
  BasicByteSpan(Container&& container) noexcept
      : BasicByteSpan(std::data(container), std::size(container)) {}
  template <typename Char,
            std::enable_if_t<std::is_same_v<Char, const char> && std::is_const_v<Element>, int> = 0>
  BasicByteSpan(Char* text) noexcept : BasicByteSpan(std::string_view(text)) {}

  constexpr Element* data() const noexcept { return data_; }
  constexpr std::size_t size() const noexcept { return size_; }
  constexpr bool empty() const noexcept { return size_ == 0; }
  constexpr Element* begin() const noexcept { return data_; }
  constexpr Element* end() const noexcept { return data_ + size_; }
  constexpr Element& operator[](std::size_t index) const noexcept { return data_[index]; }

  // The first `count` bytes, and those from `start` on.
  // Shapes: count and start at most size()
  constexpr BasicByteSpan First(std::size_t count) const noexcept {
    return BasicByteSpan(data_, count, Inside());
  }
  constexpr BasicByteSpan From(std::size_t start) const noexcept {
    return BasicByteSpan(data_ + start, size_ - start, Inside());
  }

 private:
  struct Inside {};
  constexpr BasicByteSpan(Element* data, std::size_t size, Inside) noexcept
      : data_(data), size_(size) {}

  Element* data_ = nullptr;
  std::size_t size_ = 0;
};

using ByteSpan = BasicByteSpan<const std::uint8_t>;
using WritableByteSpan = BasicByteSpan<std::uint8_t>;

// Whether two spans hold the same bytes.
// Time:   depends on the sizes only, so that it suits authentication codes.
inline bool EqualInConstantTime(ByteSpan a, ByteSpan b) noexcept {
  if (a.size() != b.size()) return false;
  // Volatile, so that no compiler ends the loop at the first difference.
  volatile std::uint8_t difference = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    difference = static_cast<std::uint8_t>(difference | (a[i] ^ b[i]));
  }
  return difference == 0;
}

namespace detail {

// WipeBytes overwrites memory with zeros; the compiler does not remove it before a deallocation.
inline void WipeBytes(void* memory, std::size_t size) noexcept {
  volatile std::uint8_t* const bytes = static_cast<std::uint8_t*>(memory);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = 0;
}

}  // namespace detail

}  // namespace mirolta
