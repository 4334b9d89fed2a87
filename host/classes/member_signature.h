// What a row of a member table says of arguments and value, as the help shows it behind the name:
//
//   (path As String, [overwrite As Boolean]) As File
//   (text As Variant, ...)
//    As Long
//
// A type is Boolean, Byte() (an array of bytes), Date, Double, Long, Object, String, Variant,
// Variant() (an array) or the name of a class of the host. Arguments of a property without a list
// are those of its value's default member; a method has a list, if an empty one.
#pragma once

#include <cstddef>
#include <string_view>

namespace mirolta::host {

struct SignatureParameter {
  std::string_view name;
  std::string_view type;
  bool is_optional = false;
};

// Parameters and value of a signature, read from its start to its end.
class MemberSignature {
 public:
  // Shapes: `text` outlives the object.
  constexpr explicit MemberSignature(std::string_view text) : rest_(text) {
    has_list_ = Take("(");
    if (!has_list_ || Take(")")) ReadValue();
  }

  constexpr bool HasList() const { return has_list_; }
  // Next reads one parameter; false at the end of the list, where Value and IsRepeated are valid.
  constexpr bool Next(SignatureParameter* parameter) {
    if (is_read_ || is_malformed_) return false;
    if (Take("...)")) {
      is_repeated_ = true;
      ReadValue();
      return false;
    }
    parameter->is_optional = Take("[");
    parameter->name = Word();
    if (!Take(" As ")) is_malformed_ = true;
    parameter->type = Type();
    if (parameter->is_optional && !Take("]")) is_malformed_ = true;
    if (Take(")")) {
      ReadValue();
    } else if (!Take(", ")) {
      is_malformed_ = true;
    }
    return !is_malformed_;
  }

  // The type of the value; empty for none.
  constexpr std::string_view Value() const { return value_; }
  // Whether the last parameter may be repeated.
  constexpr bool IsRepeated() const { return is_repeated_; }
  constexpr bool IsMalformed() const { return is_malformed_; }

 private:
  constexpr bool Take(std::string_view text) {
    if (!rest_.starts_with(text)) return false;
    rest_.remove_prefix(text.size());
    return true;
  }

  constexpr std::string_view Word() {
    size_t size = 0;
    while (size < rest_.size() && IsOfWord(rest_[size])) ++size;
    if (size == 0) is_malformed_ = true;
    const std::string_view word = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return word;
  }
  static constexpr bool IsOfWord(char c) {
    return c == '.' || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  }

  constexpr std::string_view Type() {
    const std::string_view start = rest_;
    const std::string_view word = Word();
    return start.substr(0, word.size() + (Take("()") ? 2 : 0));
  }

  constexpr void ReadValue() {
    is_read_ = true;
    if (rest_.empty()) return;
    if (!Take(" As ")) is_malformed_ = true;
    value_ = Type();
    if (!rest_.empty()) is_malformed_ = true;
  }

  std::string_view rest_;
  std::string_view value_;
  bool has_list_ = false;
  bool is_read_ = false;
  bool is_repeated_ = false;
  bool is_malformed_ = false;
};

}  // namespace mirolta::host
