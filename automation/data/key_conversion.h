// How an automation value becomes a key.
#pragma once

#include "byte_string.h"
#include "owned_value.h"
#include "platform.h"

namespace mirolta {

// Which byte arrays are keys as they are: HMAC keys have one dimension, of a cipher's key the first
// dimension counts.
enum class KeyArrays { kAnyDimensions, kOneDimension };

// KeyFromVariant gives the bytes of a byte array as they are, or of the text that any other value
// has. A code page below 0 takes the text's UTF-16 units, least significant byte first, zero
// characters included; from 0 on the text up to its first zero character is converted.
// An array without elements gives no key (key->IsPresent() is false); an empty text gives a key
// that is present and has no bytes.
// Errors: E_POINTER for a null key; those of CopyReferent; a failed coercion's status; those of
//         SafeArrayToBytes; DISP_E_TYPEMISMATCH for an array of more dimensions than one where
//         that is not taken, and for text that code_page cannot convert; E_OUTOFMEMORY. *key is
//         empty on failure.
HRESULT KeyFromVariant(const VARIANT& value, LONG code_page, ByteString* key,
                       KeyArrays arrays = KeyArrays::kAnyDimensions) noexcept;

// PlainKey is a caller's key with no object left in it. Reading an object runs the caller's code,
// which may call back and do away with the engine that the key is for; so an owner reads first and
// looks for its engine then. What the caller's code sees is what SetKey leaves: the old key is
// gone.
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
  const LONG code_page_;  // as it was when the key was put
  HRESULT read_ = S_OK;
};

}  // namespace mirolta
