// Sizes for allocation, checked for overflow.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>

namespace mirolta {

// A compile-time constant as a term or factor of a size.
struct SizeConstant {
  consteval SizeConstant(size_t count) : value(count) {}  // NOLINT(google-explicit-constructor)
  size_t value;
};

// BasicCheckedSize computes a size from untrusted counts: a sum or product that overflows Word
// becomes kTooLarge, which no allocator can provide. It is made from variables only, so that an
// unchecked sum or product does not compile.
template <typename Word>
class BasicCheckedSize {
 public:
  static constexpr Word kTooLarge = static_cast<Word>(~Word{0});

  constexpr BasicCheckedSize(SizeConstant count)  // NOLINT(google-explicit-constructor)
      : value_(Narrow(count.value)) {}
  template <typename Count>
  explicit constexpr BasicCheckedSize(Count& count) : value_(Narrow(count)) {
    static_assert(std::is_unsigned_v<Count>);
  }

  constexpr Word Value() const { return value_; }

  friend constexpr BasicCheckedSize operator+(BasicCheckedSize a, BasicCheckedSize b) {
    if (__builtin_add_overflow(a.value_, b.value_, &a.value_)) a.value_ = kTooLarge;
    return a;
  }
  friend constexpr BasicCheckedSize operator*(BasicCheckedSize a, BasicCheckedSize b) {
    if (__builtin_mul_overflow(a.value_, b.value_, &a.value_)) a.value_ = kTooLarge;
    return a;
  }
  friend constexpr BasicCheckedSize operator+(BasicCheckedSize a, SizeConstant b) {
    return a + BasicCheckedSize(b);
  }
  friend constexpr BasicCheckedSize operator*(BasicCheckedSize a, SizeConstant b) {
    return a * BasicCheckedSize(b);
  }
  friend constexpr BasicCheckedSize operator*(SizeConstant a, BasicCheckedSize b) {
    return BasicCheckedSize(a) * b;
  }
  friend constexpr BasicCheckedSize LargerOf(BasicCheckedSize a, BasicCheckedSize b) {
    return a.value_ > b.value_ ? a : b;
  }

 private:
  template <typename Count>
  static constexpr Word Narrow(Count count) {
    if constexpr (sizeof(Count) > sizeof(Word)) {
      if (count > kTooLarge) return kTooLarge;
    }
    return static_cast<Word>(count);
  }

  Word value_;
};

using CheckedSize = BasicCheckedSize<size_t>;

// Compilers throw for array sizes near PTRDIFF_MAX, even from the nothrow form.
inline constexpr size_t kMostArrayBytes = size_t{PTRDIFF_MAX} / 8 * 7;

// NewArray allocates `count` uninitialised elements.
// Errors: null if memory is short or the array is larger than kMostArrayBytes.
template <typename T>
[[nodiscard]] T* NewArray(CheckedSize count) noexcept {
  static_assert(std::is_trivially_destructible_v<T>);
  if (count.Value() > kMostArrayBytes / sizeof(T)) return nullptr;
  return new (std::nothrow) T[count.Value()];
}

}  // namespace mirolta
