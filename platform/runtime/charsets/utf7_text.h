// UTF-7, one unit or byte at a time. Direct characters are encoded as themselves, other units in
// base-64 runs between "+" and "-". Zero is a direct character, so that a terminated text stays
// terminated.
// Source: RFC 2152; rules 1 to 3 with the direct characters of set D, and tab, line feed, carriage
//         return and space.
#pragma once

#include <cstddef>

#include "mirolta/base_types.h"

namespace mirolta::runtime {

// Utf7Encoder encodes a text unit by unit; End follows the last. Unpaired surrogates are encoded
// like other units.
class Utf7Encoder {
 public:
  static constexpr size_t kMaxBytes = 8;  // of one call

  // Both return the number of bytes written.
  // Shapes: bytes[kMaxBytes].
  size_t Encode(WCHAR unit, char* bytes);
  size_t End(char* bytes);

 private:
  bool in_run_ = false;
  uint32_t bits_ = 0;  // not written yet; at most 4 between calls
  int bit_count_ = 0;
};

// Utf7Decoder decodes byte by byte. A unit that is incomplete at the end of its run is dropped. A
// byte outside a run is a unit of the same value, also from 0x80 on.
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
