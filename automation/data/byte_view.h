// The bytes of a caller's value, read without copying if possible.
#pragma once

#include "byte_string.h"
#include "platform.h"

namespace mirolta {

// ByteView is open on at most one value, which must stay alive and unchanged until Close. A byte
// array, by value or by reference, is borrowed and its data locked until Close; for any other value
// the view owns converted bytes, which Close wipes. Statuses and bytes are those of the copying
// conversions.
class ByteView {
 public:
  ByteView() noexcept = default;
  ~ByteView() { Close(); }
  ByteView(const ByteView&) = delete;
  ByteView& operator=(const ByteView&) = delete;

  // Open gives the bytes of VariantToBytes.
  HRESULT Open(const VARIANT& value, LONG code_page) noexcept;
  // OpenUnresolved differs from Open for objects whose default value is a byte array: they fail
  // with DISP_E_TYPEMISMATCH.
  HRESULT OpenUnresolved(const VARIANT& value, LONG code_page) noexcept;
  // OpenByteArray gives the bytes of VariantToByteArrayBytes.
  HRESULT OpenByteArray(const VARIANT& value) noexcept;
  void Close() noexcept;

  const uint8_t* Data() const noexcept { return data_; }
  uint32_t Count() const noexcept { return count_; }
  // True if the bytes came from an array, not from a text or VT_EMPTY; tells an empty array from an
  // empty text.
  bool IsFromArray() const noexcept { return from_array_; }

 private:
  HRESULT Borrow(SAFEARRAY* array) noexcept;
  HRESULT OwnArray(SAFEARRAY* array) noexcept;
  HRESULT OwnText(const OLECHAR* text, LONG code_page) noexcept;
  HRESULT OwnCopy(VARIANT* copy, LONG code_page) noexcept;
  bool OpenInPlace(const VARIANT& value, LONG code_page, HRESULT* status) noexcept;

  const uint8_t* data_ = nullptr;
  uint32_t count_ = 0;
  bool from_array_ = false;
  SAFEARRAY* locked_ = nullptr;
  ByteString owned_;
};

}  // namespace mirolta
