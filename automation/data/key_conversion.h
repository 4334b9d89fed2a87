// Conversion of automation values to keys.
#pragma once

#include "byte_string.h"
#include "owned_value.h"
#include "platform.h"

namespace mirolta {

// Which byte arrays are accepted: HMAC keys must have one dimension; of a cipher's key the first
// dimension is used.
enum class KeyArrays { kAnyDimensions, kOneDimension };

// KeyFromVariant gives the bytes of a byte array, or converts any other value to text and the text
// to bytes: with a negative code page to little-endian UTF-16, including zero characters; otherwise
// by the code page, up to the first zero character. An array without elements gives no key
// (key->IsPresent() is false); an empty text gives a key that is present and has no bytes.
// Errors: E_POINTER for a null key; those of CopyReferent and SafeArrayToBytes; the status of a
//         failed coercion; DISP_E_TYPEMISMATCH for an array of several dimensions with
//         kOneDimension, and for text that code_page cannot convert; E_OUTOFMEMORY. *key is empty
//         on failure.
HRESULT KeyFromVariant(const VARIANT& value, LONG code_page, ByteString* key,
                       KeyArrays arrays = KeyArrays::kAnyDimensions) noexcept;

// PlainKey is a caller's key with objects replaced by their values. Reading an object runs the
// caller's code, which may call back and destroy the engine that the key is for; an owner therefore
// reads the key first and then looks its engine up. The caller's code already finds the old key
// dropped, as after SetKey.
class PlainKey {
 public:
  // Drops the engine's key, then reads the new one.
  template <typename Engine>
  PlainKey(Engine& engine, const VARIANT& value, LONG code_page) noexcept : code_page_(code_page) {
    engine.DropKey();
    Read(value);
  }

  // GiveTo sets the key of an engine, which need not be the one whose key was dropped.
  // Errors: the status of reading the value, and the engine then has no key; those of its SetKey.
  template <typename Engine>
  HRESULT GiveTo(Engine& engine) const {
    if (SUCCEEDED(read_)) return engine.SetKey(value_.Value(), code_page_);
    engine.DropKey();
    return read_;
  }

 private:
  void Read(const VARIANT& value) noexcept;

  OwnedVariant value_;
  const LONG code_page_;  // at the time of the call
  HRESULT read_ = S_OK;
};

}  // namespace mirolta
