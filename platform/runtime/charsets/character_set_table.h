// The character sets that conversions know by number.
#pragma once

#include <iconv.h>

#include "portable/base_types.h"

namespace mirolta {

enum class CharacterSetKind : uint8_t {
  kUtf8,
  kUtf7,
  kSingleByte,
  kMultiByte,  // through the C library, a text at a time
};

struct CharacterSet {
  UINT number;
  CharacterSetKind kind;
  const char* name;   // as the C library knows it
  WCHAR undecodable;  // what bytes become that are no character
};

// FindCharacterSet returns the row of a number, for 0 that of the environment's locale; null for an
// unknown number. Rows stay where they are.
const CharacterSet* FindCharacterSet(UINT number);

// FindCharacterSetByName does the same for a locale's name of its set, letter case aside.
const CharacterSet* FindCharacterSetByName(const char* name);

// Converter is one use of the C library's converter. Making and ending them takes turns between
// threads: it loads and unloads code, and the library's own lock is one that thread checkers miss.
class Converter {
 public:
  Converter(const char* to, const char* from);
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;
  ~Converter();
  bool valid() const { return handle_ != reinterpret_cast<iconv_t>(-1); }
  iconv_t handle() const { return handle_; }
  void Reset() { iconv(handle_, nullptr, nullptr, nullptr, nullptr); }

 private:
  const iconv_t handle_;
};

// SingleByteTable: both directions of a single-byte set.
struct SingleByteTable {
  WCHAR decoded[256];                 // kUndefinedByte where a byte is no character
  BYTE by_character[256];             // the bytes in order of what they decode to
  INT Encode(WCHAR character) const;  // the byte, or -1
};
constexpr WCHAR kUndefinedByte = 0xFFFF;

// TableOf returns the set's table, made at its first use; null if the C library lacks the set.
const SingleByteTable* TableOf(const CharacterSet& set);

}  // namespace mirolta
