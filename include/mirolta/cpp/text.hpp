// SPDX-License-Identifier: MIT
// Automation texts (BSTR) and their conversions from and to UTF-8 and UTF-16.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "error.hpp"

namespace mirolta {

namespace detail {

inline constexpr char32_t kReplacement = 0xFFFD;

// Reads one character of UTF-8 at *position and moves there behind it. A malformed sequence is one
// replacement character for each maximal part of a valid one.
// Source: Unicode Standard, 3.9, table 3-7
inline char32_t NextUtf8(std::string_view text, std::size_t* position) noexcept {
  const auto byte_at = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte_at((*position)++);
  if (first < 0x80) return first;
  if (first < 0xC2 || first > 0xF4) return kReplacement;
  const int more = first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
  char32_t character = first & (0x3Fu >> more);
  for (int i = 0; i < more; ++i) {
    if (*position == text.size()) return kReplacement;
    const unsigned char next = byte_at(*position);
    unsigned char least = 0x80;
    unsigned char most = 0xBF;
    if (i == 0 && first == 0xE0) least = 0xA0;
    if (i == 0 && first == 0xED) most = 0x9F;
    if (i == 0 && first == 0xF0) least = 0x90;
    if (i == 0 && first == 0xF4) most = 0x8F;
    if (next < least || next > most) return kReplacement;
    character = (character << 6) | (next & 0x3Fu);
    ++*position;
  }
  return character;
}

template <typename Unit>
void AppendUtf16(char32_t character, std::basic_string<Unit>* out) {
  if (character < 0x10000) {
    out->push_back(static_cast<Unit>(character));
    return;
  }
  const char32_t above = character - 0x10000;
  out->push_back(static_cast<Unit>(0xD800 + (above >> 10)));
  out->push_back(static_cast<Unit>(0xDC00 + (above & 0x3FF)));
}

inline void AppendUtf8(char32_t character, std::string* out) {
  const auto append = [&](char32_t bits) { out->push_back(static_cast<char>(bits)); };
  if (character < 0x80) {
    append(character);
  } else if (character < 0x800) {
    append(0xC0 | (character >> 6));
    append(0x80 | (character & 0x3F));
  } else if (character < 0x10000) {
    append(0xE0 | (character >> 12));
    append(0x80 | ((character >> 6) & 0x3F));
    append(0x80 | (character & 0x3F));
  } else {
    append(0xF0 | (character >> 18));
    append(0x80 | ((character >> 12) & 0x3F));
    append(0x80 | ((character >> 6) & 0x3F));
    append(0x80 | (character & 0x3F));
  }
}

template <typename Unit>
std::basic_string<Unit> Utf16OfUtf8(std::string_view text) {
  std::basic_string<Unit> units;
  units.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) AppendUtf16(NextUtf8(text, &i), &units);
  return units;
}

// Surrogates without their other half become replacement characters.
template <typename Unit>
std::string Utf8OfUtf16(std::basic_string_view<Unit> units) {
  std::string text;
  text.reserve(units.size());
  const auto is_high = [](char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; };
  const auto is_low = [](char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; };
  for (std::size_t i = 0; i < units.size(); ++i) {
    const auto unit = static_cast<char32_t>(static_cast<char16_t>(units[i]));
    if (is_high(unit) && i + 1 < units.size()) {
      const auto next = static_cast<char32_t>(static_cast<char16_t>(units[i + 1]));
      if (is_low(next)) {
        AppendUtf8(0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00), &text);
        ++i;
        continue;
      }
    }
    AppendUtf8(is_high(unit) || is_low(unit) ? kReplacement : unit, &text);
  }
  return text;
}

}  // namespace detail

// Text owns a BSTR: 16-bit code units, which may include zeros. A null BSTR is the empty text. Texts
// that are made of std::string_view are UTF-8; what is not valid there becomes U+FFFD.
class Text {
 public:
  // wchar_t units on Windows, char16_t elsewhere; Utf16 and Utf8 are the same everywhere.
  using View = std::basic_string_view<OLECHAR>;

  Text() noexcept = default;
  Text(std::string_view utf8) : Text(Allocate(detail::Utf16OfUtf8<OLECHAR>(utf8))) {}
  Text(const char* utf8) : Text(std::string_view(utf8)) {}
  Text(const std::string& utf8) : Text(std::string_view(utf8)) {}
  Text(std::u16string_view utf16) : Text(Allocate(Units(utf16))) {}
  Text(const char16_t* utf16) : Text(std::u16string_view(utf16)) {}
  Text(const std::u16string& utf16) : Text(std::u16string_view(utf16)) {}
#ifdef _WIN32
  Text(std::wstring_view utf16) : Text(Allocate(utf16)) {}
  Text(const wchar_t* utf16) : Text(std::wstring_view(utf16)) {}
  Text(const std::wstring& utf16) : Text(std::wstring_view(utf16)) {}
#endif
  Text(const Text& other) : Text(Allocate(other.Units())) {}
  Text(Text&& other) noexcept : text_(other.Detach()) {}
  Text& operator=(Text other) noexcept {
    std::swap(text_, other.text_);
    return *this;
  }
  ~Text() {
    SysFreeString(text_);
  }

  // Text takes over a BSTR, or gives it up; the caller of Detach frees it.
  static Text Attach(BSTR text) noexcept {
    return Text(text, Owned());
  }
  BSTR Detach() noexcept {
    return std::exchange(text_, nullptr);
  }

  // The BSTR, which stays the text's; for a function that returns one, a place that is empty.
  BSTR Get() const noexcept {
    return text_;
  }
  BSTR* Put() noexcept {
    SysFreeString(Detach());
    return &text_;
  }

  std::size_t Size() const noexcept {
    return SysStringLen(text_);
  }
  bool IsEmpty() const noexcept {
    return Size() == 0;
  }
  View Units() const noexcept {
    return text_ == nullptr ? View() : View(text_, Size());
  }
  std::u16string Utf16() const {
    const View units = Units();
    return std::u16string(units.begin(), units.end());
  }
  std::string Utf8() const {
    return detail::Utf8OfUtf16(Units());
  }

  friend bool operator==(const Text& a, const Text& b) noexcept {
    return a.Units() == b.Units();
  }
  friend bool operator!=(const Text& a, const Text& b) noexcept {
    return !(a == b);
  }

 private:
  struct Owned {};
  Text(BSTR text, Owned) noexcept : text_(text) {}

  static std::basic_string<OLECHAR> Units(std::u16string_view utf16) {
    return std::basic_string<OLECHAR>(utf16.begin(), utf16.end());
  }
  static Text Allocate(View units) {
    Text text;
    if (units.empty()) return text;
    if (units.size() > 0x3FFFFFFF) detail::Raise(Error(E_OUTOFMEMORY));
    text.text_ = SysAllocStringLen(units.data(), static_cast<UINT>(units.size()));
    if (text.text_ == nullptr) detail::Raise(Error(E_OUTOFMEMORY));
    return text;
  }

  BSTR text_ = nullptr;
};

}  // namespace mirolta
