// UTF-7: letters, digits and some signs stand for themselves, runs of other units between "+" and
// "-" as base 64. Zero stands for itself, so that a terminated text stays one.
#pragma once

#include <cstddef>

#include "portable/base_types.h"

namespace mirolta::runtime {

// Utf7Encoder writes a text unit by unit and then its end; lone surrogates are units like others.
class Utf7Encoder {
 public:
  static constexpr size_t kMaxBytes = 8;  // of one call

  // Both return the number of bytes written. Shapes: bytes[kMaxBytes].
  size_t Encode(WCHAR unit, char* bytes);
  size_t End(char* bytes);

 private:
  bool in_run_ = false;
  uint32_t bits_ = 0;  // those not written yet, at most 4 between calls
  int bit_count_ = 0;
};

// Utf7Decoder reads bytes one by one. A run that ends within a unit loses it; bytes outside of runs
// are units, those of 80 and above too.
class Utf7Decoder {
 public:
  // Decode returns whether the byte completed a unit.
  bool Decode(char byte, WCHAR* unit);

 private:
  bool in_run_ = false;
  bool run_is_empty_ = false;
  uint32_t bits_ = 0;
  int bit_count_ = 0;
};

}  // namespace mirolta::runtime
