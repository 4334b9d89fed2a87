// The character sets that conversions know by number.
#pragma once

#include "mirolta/base_types.h"

namespace mirolta::runtime {

enum class CharacterSetKind : uint8_t {
  kUtf8,
  kUtf7,
  kSingleByte,
  kMultiByte,  // converted by the C library, a text at a time
};

struct CharacterSet {
  UINT number;
  CharacterSetKind kind;
  const char* name;   // as the C library knows it
  WCHAR undecodable;  // the character for bytes that encode none
};

constexpr size_t kCharacterSetCount = 54;

// FindCharacterSet returns the row of a number, for 0 that of the environment's locale; null for an
// unknown number. Rows are static.
const CharacterSet* FindCharacterSet(UINT number);

// FindCharacterSetByName returns the row of a locale's codeset name; null for an unknown name.
// Letter case does not matter.
const CharacterSet* FindCharacterSetByName(const char* name);

// CharacterSetIndex returns the index of a row, less than kCharacterSetCount.
size_t CharacterSetIndex(const CharacterSet& set);

}  // namespace mirolta::runtime
