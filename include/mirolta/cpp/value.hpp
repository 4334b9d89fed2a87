// SPDX-License-Identifier: MIT
// Automation values (VARIANT).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "bytes.hpp"
#include "object.hpp"
#include "text.hpp"

namespace mirolta {

// Value owns a VARIANT. It is made of nothing (VT_EMPTY), booleans, integers, floating-point numbers,
// texts, bytes and objects. Bytes are wiped when they are replaced or destroyed, as by Bytes; texts are not.
class Value {
 public:
  Value() noexcept { VariantInit(&value_); }
  template <typename Number, std::enable_if_t<std::is_arithmetic_v<Number>, int> = 0>
  Value(Number number) noexcept : Value() {
    if constexpr (std::is_same_v<Number, bool>) {
      V_VT(&value_) = VT_BOOL;
      V_BOOL(&value_) = number ? VARIANT_TRUE : VARIANT_FALSE;
    } else if constexpr (std::is_floating_point_v<Number>) {
      V_VT(&value_) = VT_R8;
      V_R8(&value_) = static_cast<DOUBLE>(number);
    } else {
      SetInteger(number);
    }
  }
  Value(Text text) noexcept : Value() {
    V_VT(&value_) = VT_BSTR;
    V_BSTR(&value_) = text.Detach();
  }
  Value(const char* utf8) : Value(Text(utf8)) {}
  Value(std::string_view utf8) : Value(Text(utf8)) {}
  Value(const std::string& utf8) : Value(Text(utf8)) {}
  Value(std::u16string_view utf16) : Value(Text(utf16)) {}
  Value(const std::u16string& utf16) : Value(Text(utf16)) {}
  Value(const char16_t* utf16) : Value(Text(utf16)) {}
  // An array without elements if there are no bytes.
  Value(Bytes bytes) : Value() {
    if (bytes.Get() == nullptr) {
      V_ARRAY(&value_) = SafeArrayCreateVector(VT_UI1, 0, 0);
      if (V_ARRAY(&value_) == nullptr) detail::Raise(Error(E_OUTOFMEMORY));
    } else {
      V_ARRAY(&value_) = bytes.Detach();
    }
    V_VT(&value_) = VT_ARRAY | VT_UI1;
  }
  template <typename Interface, std::enable_if_t<std::is_base_of_v<IDispatch, Interface>, int> = 0>
  Value(Object<Interface> object) noexcept : Value() {
    V_VT(&value_) = VT_DISPATCH;
    V_DISPATCH(&value_) = object.Detach();
  }
  Value(const Value& other) : Value() {
    const HRESULT status = VariantCopy(&value_, Source(other));
    if (detail::IsFailure(status)) detail::Raise(Error(status));
  }
  Value(Value&& other) noexcept : value_(other.value_) { VariantInit(&other.value_); }
  Value& operator=(Value other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  ~Value() { Clear(); }

  static Value Null() noexcept {
    Value value;
    V_VT(&value.value_) = VT_NULL;
    return value;
  }

  VARTYPE Type() const noexcept { return V_VT(&value_); }
  bool IsEmpty() const noexcept { return Type() == VT_EMPTY; }

  // The VARIANT, as an argument; it stays the value's. For a function that returns one, an empty
  // place.
  const VARIANT& Get() const noexcept { return value_; }
  VARIANT* Put() noexcept {
    Clear();
    return &value_;
  }

  // The value as a text, an integer or a floating-point number, converted as the platform does it.
  // Errors: the conversion's, such as DISP_E_TYPEMISMATCH and DISP_E_OVERFLOW
  Result<Text> TryToText() const {
    Value converted;
    const HRESULT status = Convert(VT_BSTR, &converted);
    if (detail::IsFailure(status)) return Error(status);
    V_VT(&converted.value_) = VT_EMPTY;
    return Text::Attach(V_BSTR(&converted.value_));
  }
  Text ToText() const { return TryToText().Value(); }
  Result<std::int32_t> TryToInteger() const {
    Value converted;
    const HRESULT status = Convert(VT_I4, &converted);
    if (detail::IsFailure(status)) return Error(status);
    return static_cast<std::int32_t>(V_I4(&converted.value_));
  }
  std::int32_t ToInteger() const { return TryToInteger().Value(); }
  Result<double> TryToDouble() const {
    Value converted;
    const HRESULT status = Convert(VT_R8, &converted);
    if (detail::IsFailure(status)) return Error(status);
    return V_R8(&converted.value_);
  }
  double ToDouble() const { return TryToDouble().Value(); }

  // The bytes of a byte array, which the value gives up without copying; it is empty then. An empty
  // value has none.
  // Errors: DISP_E_TYPEMISMATCH for any other value, which is unchanged
  Result<Bytes> TryTakeBytes() {
    if (IsEmpty()) return Bytes();
    if (Type() != (VT_ARRAY | VT_UI1)) return Error(DISP_E_TYPEMISMATCH);
    V_VT(&value_) = VT_EMPTY;
    return Bytes::TryAttach(V_ARRAY(&value_));
  }
  Bytes TakeBytes() { return TryTakeBytes().Value(); }

  void Clear() noexcept {
    if (Type() == (VT_ARRAY | VT_UI1)) (void)TryTakeBytes();
    VariantClear(&value_);
  }

 private:
  // Integers that fit 32 bits are of the types that every class takes.
  template <typename Integer>
  void SetInteger(Integer number) noexcept {
    if constexpr (std::is_signed_v<Integer>) {
      const auto wide = static_cast<std::int64_t>(number);
      const auto narrow = static_cast<std::int32_t>(wide);
      V_VT(&value_) = narrow == wide ? VT_I4 : VT_I8;
      if (narrow == wide) {
        V_I4(&value_) = narrow;
      } else {
        V_I8(&value_) = wide;
      }
    } else {
      const auto wide = static_cast<std::uint64_t>(number);
      const auto narrow = static_cast<std::uint32_t>(wide);
      V_VT(&value_) = narrow == wide ? VT_UI4 : VT_UI8;
      if (narrow == wide) {
        V_UI4(&value_) = narrow;
      } else {
        V_UI8(&value_) = wide;
      }
    }
  }

  // Not every version of the platform's headers declares sources const.
  static VARIANT* Source(const Value& value) noexcept {
    return const_cast<VARIANT*>(&value.value_);
  }

  HRESULT Convert(VARTYPE type, Value* out) const noexcept {
    return VariantChangeType(&out->value_, Source(*this), 0, type);
  }

  VARIANT value_;
};

namespace detail {

// BorrowedBytes is a byte array over a caller's bytes, as an argument of a member that only reads
// it. Nothing is copied.
class BorrowedBytes {
 public:
  // Shapes: size() below 2^31; the bytes outlive the object
  explicit BorrowedBytes(ByteSpan bytes) noexcept {
    array_.cDims = 1;
    array_.fFeatures = FADF_AUTO | FADF_FIXEDSIZE;
    array_.cbElements = 1;
    // The members of the classes do not write to their arguments.
    array_.pvData = bytes.empty() ? &none_ : const_cast<std::uint8_t*>(bytes.data());
    array_.rgsabound[0].cElements = static_cast<ULONG>(bytes.size());
    VariantInit(&value_);
    V_VT(&value_) = VT_ARRAY | VT_UI1;
    V_ARRAY(&value_) = &array_;
  }
  BorrowedBytes(const BorrowedBytes&) = delete;
  BorrowedBytes& operator=(const BorrowedBytes&) = delete;

  const VARIANT& Get() const noexcept { return value_; }

 private:
  SAFEARRAY array_ = {};
  std::uint8_t none_ = 0;
  VARIANT value_;
};

}  // namespace detail
}  // namespace mirolta
