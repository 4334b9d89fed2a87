// Tables of the character sets that have one byte a character.
#pragma once

#include "charsets/character_set_table.h"

namespace mirolta::runtime {

constexpr WCHAR kUndefinedByte = 0xFFFF;

// SingleByteTable maps bytes to characters and back.
struct SingleByteTable {
  WCHAR decoded[256];      // kUndefinedByte for a byte that encodes no character
  BYTE by_character[256];  // the bytes in the order of decoded[]

  // Encode returns the byte, or -1 for a character that the set lacks.
  // Time:   binary search, 8 steps.
  INT Encode(WCHAR character) const;
};

// TableOf returns the table of a kSingleByte set, built at its first use; null if the C library
// lacks the set.
const SingleByteTable* TableOf(const CharacterSet& set);

}  // namespace mirolta::runtime
