// How an automation value becomes a key.
#pragma once

#include "byte_string.h"
#include "owned_value.h"
#include "platform.h"

namespace mirolta {

// KeyFromVariant gives the bytes of a byte array as they are, or of the text that any other value
// has. A code page below 0 takes the text's UTF-16 units, least significant byte first, zero
// characters included; from 0 on the text up to its first zero character is converted.
// An array without elements gives no key (key->IsPresent() is false); an empty text gives a key
// that is present and has no bytes. Errors: E_POINTER for a null key; a failed copy's or coercion's
// status; those of
//         SafeArrayToBytes; DISP_E_TYPEMISMATCH for text that code_page cannot convert;
//         E_OUTOFMEMORY. *key is empty on failure.
HRESULT KeyFromVariant(const VARIANT& value, LONG code_page, ByteString* key) noexcept;

// PlainKey is a caller's key with no object left in it. Reading an object runs the caller's code,
// which may call back and do away with the engine that the key is for; so an owner reads first and
// looks for its engine then.
class PlainKey {
 public:
  explicit PlainKey(const VARIANT& value) noexcept;

  // GiveTo sets the key of an engine. Errors: what reading the value gave, and the engine has no
  // key then; those of its SetKey.
  template <typename Engine>
  HRESULT GiveTo(Engine& engine, LONG code_page) const {
    const HRESULT status = engine.SetKey(value_.Value(), code_page);
    return FAILED(read_) ? read_ : status;
  }

 private:
  OwnedVariant value_;  // VT_NULL, which is no key, if it could not be read
  HRESULT read_;
};

}  // namespace mirolta
