// Bytes of a script that automation reads where they are, without a copy.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform.h"

namespace mirolta::host {

// An array without bytes of its own, kept from one loan to the next.
class SpareArray {
 public:
  SpareArray() = default;
  SpareArray(const SpareArray&) = delete;
  SpareArray& operator=(const SpareArray&) = delete;
  ~SpareArray() { SafeArrayDestroy(array_); }

  // Take returns the array, or another one if it is taken already; null without memory.
  SAFEARRAY* Take() noexcept;
  // Return takes back what Take returned.
  void Return(SAFEARRAY* array) noexcept;

 private:
  SAFEARRAY* array_ = nullptr;
};

// A byte array that is an argument of one call. Its bytes stay those of the script, which has to keep
// them until End.
class ByteLoan {
 public:
  ByteLoan() = default;
  ByteLoan(const ByteLoan&) = delete;
  ByteLoan& operator=(const ByteLoan&) = delete;
  ~ByteLoan() { End(); }

  // Begin makes *argument, which is empty, an array of these bytes with the lower bound 0.
  // Shapes: bytes[size], size > 0; spare and argument live until End.
  // Errors: false without memory.
  bool Begin(SpareArray* spare, const uint8_t* bytes, size_t size, VARIANT* argument) noexcept;
  // End makes the argument empty again. An array that the callee left locked is its own then, with
  // a copy of the bytes.
  void End() noexcept {
    if (array_ != nullptr) TakeBack();
  }

 private:
  void TakeBack() noexcept;

  SpareArray* spare_ = nullptr;
  VARIANT* argument_ = nullptr;
  SAFEARRAY* array_ = nullptr;
  void* own_data_ = nullptr;
};

}  // namespace mirolta::host
