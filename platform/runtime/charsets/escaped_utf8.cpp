#include "charsets/escaped_utf8.h"

#include "charsets/utf16_text.h"
#include "charsets/utf8_text.h"

namespace mirolta::runtime {
namespace {

constexpr uint32_t kEscapedByte = 0xDC00;

}  // namespace

bool AppendWideFromUtf8(const char* bytes, size_t size, WideText* text) {
  if (!text->Reserve(text->Size() + size)) return false;  // never more units than bytes
  for (size_t at = 0; at < size;) {
    uint32_t point;
    size_t taken = DecodeUtf8(bytes + at, size - at, &point);
    if (point == kNoCodePoint) {
      taken = 1;
      point = kEscapedByte | static_cast<BYTE>(bytes[at]);
    }
    WCHAR units[2];
    const size_t count = EncodeUtf16(point, units);
    if (!text->Append(units, count)) return false;
    at += taken;
  }
  return true;
}

bool AppendUtf8FromWide(WideView text, RuntimeArray<char>* bytes) {
  if (text.size() > SIZE_MAX - bytes->Size() || !bytes->Reserve(bytes->Size() + text.size()))
    return false;
  size_t at = 0;
  // Most names are ASCII.
  for (; at < text.size() && text[at] < 0x80; ++at) {
    if (!bytes->Append(static_cast<char>(text[at]))) return false;
  }
  while (at < text.size()) {
    uint32_t point;
    at += DecodeUtf16(text.data() + at, text.size() - at, &point);
    char encoded[4] = {static_cast<char>(point & 0xFFu)};
    const bool escaped = point >= kEscapedByte + 0x80 && point <= kEscapedByte + 0xFF;
    if (!bytes->Append(encoded, escaped ? 1 : EncodeUtf8(point, encoded))) return false;
  }
  return true;
}

}  // namespace mirolta::runtime
