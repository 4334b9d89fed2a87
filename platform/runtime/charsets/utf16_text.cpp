#include "charsets/utf16_text.h"

namespace mirolta::runtime {

size_t DecodeUtf16(const WCHAR* text, size_t size, uint32_t* point) {
  *point = text[0];
  if (!IsHighSurrogate(text[0]) || size < 2 || !IsLowSurrogate(text[1])) return 1;
  *point = 0x10000u + ((text[0] & 0x3FFu) << 10 | (text[1] & 0x3FFu));
  return 2;
}

size_t EncodeUtf16(uint32_t point, WCHAR* units) {
  if (point < 0x10000) {
    units[0] = static_cast<WCHAR>(point);
    return 1;
  }
  units[0] = static_cast<WCHAR>(0xD7C0u + (point >> 10));
  units[1] = static_cast<WCHAR>(0xDC00u | (point & 0x3FFu));
  return 2;
}

}  // namespace mirolta::runtime
