#include "charsets/utf8_text.h"

namespace mirolta::runtime {
namespace {

struct LeadByte {
  BYTE first;  // lead bytes first..last
  BYTE last;
  BYTE length;
  BYTE second_first;  // what the second byte may be; later bytes are 80..BF
  BYTE second_last;
};

// Excludes overlong forms, surrogates and code points above U+10FFFF.
// Source: Unicode, table 3-7, well-formed UTF-8 byte sequences.
constexpr LeadByte kLeadBytes[] = {
    {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF}, {0xE1, 0xEC, 3, 0x80, 0xBF},
    {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF}, {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

}  // namespace

size_t DecodeUtf8(const char* bytes, size_t size, uint32_t* point) {
  const uint32_t lead = static_cast<BYTE>(bytes[0]);
  *point = lead;
  if (lead < 0x80) return 1;
  *point = kNoCodePoint;
  for (const LeadByte& row : kLeadBytes) {
    if (lead < row.first || lead > row.last) continue;
    uint32_t value = lead & (0x7Fu >> row.length);
    BYTE first = row.second_first;
    BYTE last = row.second_last;
    for (size_t taken = 1; taken < row.length; ++taken) {
      if (taken == size) return taken;
      const BYTE next = static_cast<BYTE>(bytes[taken]);
      if (next < first || next > last) return taken;
      value = value << 6 | (next & 0x3Fu);
      first = 0x80;
      last = 0xBF;
    }
    *point = value;
    return row.length;
  }
  return 1;
}

size_t EncodeUtf8(uint32_t point, char* bytes) {
  if (point < 0x80) {
    bytes[0] = static_cast<char>(point);
    return 1;
  }
  const size_t length = point < 0x800 ? 2 : point < 0x10000 ? 3 : 4;
  for (size_t i = length - 1; i > 0; --i) {
    bytes[i] = static_cast<char>(0x80u | (point & 0x3Fu));
    point >>= 6;
  }
  bytes[0] = static_cast<char>((0xF00u >> length & 0xFFu) | point);
  return length;
}

}  // namespace mirolta::runtime
