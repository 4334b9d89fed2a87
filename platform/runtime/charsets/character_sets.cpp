#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>

#include "charsets/character_set_table.h"
#include "charsets/iconv_converter.h"
#include "charsets/single_byte_table.h"
#include "charsets/utf16_text.h"
#include "charsets/utf7_text.h"
#include "charsets/utf8_text.h"
#include "mirolta/bool.h"
#include "mirolta/system.h"
#include "texts/wide_text.h"

namespace mirolta::runtime {
namespace {

constexpr uint32_t kReplacement = 0xFFFD;
constexpr const char* kUtf16Name =
    std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

// Output receives the result of a conversion; with capacity 0 it only counts.
template <typename Unit>
class Output {
 public:
  Output(Unit* place, INT capacity) : place_(place), capacity_(static_cast<size_t>(capacity)) {}
  void Put(const Unit* units, size_t count) {
    if (!IsCounting() && count <= capacity_ - std::min(capacity_, size_)) {
      std::memcpy(place_ + size_, units, count * sizeof(Unit));
    }
    size_ += count;
  }
  void Put(Unit unit) { Put(&unit, 1); }
  // Puts characters of ASCII from the other form, as many as fit.
  template <typename From>
  void PutAscii(const From* characters, size_t count) {
    const size_t fitting = std::min(count, capacity_ - std::min(capacity_, size_));
    for (size_t i = 0; i < fitting; ++i) place_[size_ + i] = static_cast<Unit>(characters[i]);
    size_ += count;
  }
  // The length; 0 if it does not fit or exceeds an INT.
  INT Result() const {
    if (size_ > 0x7FFFFFFF || (!IsCounting() && size_ > capacity_)) return 0;
    return static_cast<INT>(size_);
  }

 private:
  bool IsCounting() const { return capacity_ == 0; }
  Unit* place_;
  size_t capacity_;
  size_t size_ = 0;
};

// The default character, written for characters that the set lacks.
struct Default {
  const char* bytes;
  size_t size;
  bool used;
  void PutTo(Output<char>* out) {
    out->Put(bytes, size);
    used = true;
  }
};

// The length of the ASCII that a text starts with. Most texts have nothing else.
template <typename Unit>
size_t AsciiLength(const Unit* text, size_t length) {
  constexpr size_t kBlock = 8;
  constexpr auto is_other = [](Unit unit) { return (static_cast<unsigned>(unit) & ~0x7Fu) != 0; };
  size_t at = 0;
  for (; length - at >= kBlock; at += kBlock) {
    bool any = false;
    for (size_t i = 0; i < kBlock; ++i) any |= is_other(text[at + i]);
    if (any) break;
  }
  while (at < length && !is_other(text[at])) ++at;
  return at;
}

bool EncodeToUtf8(const WCHAR* text, size_t length, bool strict, Output<char>* out) {
  for (size_t at = 0; at < length;) {
    const size_t ascii = AsciiLength(text + at, length - at);
    out->PutAscii(text + at, ascii);
    at += ascii;
    if (at == length) break;
    uint32_t point;
    at += DecodeUtf16(text + at, length - at, &point);
    if (IsHighSurrogate(point) || IsLowSurrogate(point)) {
      if (strict) return false;
      point = kReplacement;
    }
    char bytes[4];
    out->Put(bytes, EncodeUtf8(point, bytes));
  }
  return true;
}

bool DecodeFromUtf8(const char* bytes, size_t size, bool strict, Output<WCHAR>* out) {
  for (size_t at = 0; at < size;) {
    const size_t ascii = AsciiLength(bytes + at, size - at);
    out->PutAscii(bytes + at, ascii);
    at += ascii;
    if (at == size) break;
    uint32_t point;
    at += DecodeUtf8(bytes + at, size - at, &point);
    if (point == kNoCodePoint) {
      if (strict) return false;
      point = kReplacement;
    }
    WCHAR units[2];
    const size_t count = EncodeUtf16(point, units);
    for (size_t i = 0; i < count; ++i) out->Put(units[i]);
  }
  return true;
}

bool EncodeSingleByte(const CharacterSet& set, const WCHAR* text, size_t length, Default* missing,
                      Output<char>* out) {
  const SingleByteTable* table = TableOf(set);
  if (table == nullptr) return false;
  for (size_t i = 0; i < length; ++i) {
    const INT byte = table->Encode(text[i]);
    if (byte >= 0) {
      out->Put(static_cast<char>(byte));
    } else {
      missing->PutTo(out);
    }
  }
  return true;
}

bool DecodeSingleByte(const CharacterSet& set, const char* bytes, size_t size, bool strict,
                      Output<WCHAR>* out) {
  const SingleByteTable* table = TableOf(set);
  if (table == nullptr) return false;
  for (size_t i = 0; i < size; ++i) {
    WCHAR character = table->decoded[static_cast<BYTE>(bytes[i])];
    if (character == kUndefinedByte) {
      if (strict) return false;
      character = set.undecodable;
    }
    out->Put(character);
  }
  return true;
}

// Converts in[0..*left) up to its end or an ill-formed sequence, and advances in and left. A null
// `in` writes the sequence that returns to the initial shift state. False if it stopped early.
template <typename Unit>
bool Convert(const IconvConverter& converter, char** in, size_t* left, Output<Unit>* out) {
  for (;;) {
    Unit block[256];
    char* to = reinterpret_cast<char*>(block);
    size_t room = sizeof(block);
    const size_t result = iconv(converter.Handle(), in, left, &to, &room);
    const int error = errno;
    out->Put(block, (sizeof(block) - room) / sizeof(Unit));
    if (result != static_cast<size_t>(-1)) return true;
    if (error != E2BIG) return false;
  }
}

bool EncodeMultiByte(const CharacterSet& set, const WCHAR* text, size_t length, Default* missing,
                     Output<char>* out) {
  const IconvConverter converter(set.name, kUtf16Name);
  if (!converter.IsValid()) return false;
  char* in = reinterpret_cast<char*>(const_cast<WCHAR*>(text));  // iconv does not write to it
  size_t left = length * sizeof(WCHAR);
  while (!Convert(converter, &in, &left, out)) {
    const size_t at = length - left / sizeof(WCHAR);
    // In these sets the platform converts code units: a surrogate pair gives two defaults.
    uint32_t point;
    const size_t taken = DecodeUtf16(text + at, length - at, &point);
    for (size_t i = 0; i < taken; ++i) missing->PutTo(out);
    in += taken * sizeof(WCHAR);
    left -= taken * sizeof(WCHAR);
  }
  return Convert(converter, nullptr, nullptr, out);
}

bool DecodeMultiByte(const CharacterSet& set, const char* bytes, size_t size, bool strict,
                     Output<WCHAR>* out) {
  const IconvConverter converter(kUtf16Name, set.name);
  if (!converter.IsValid()) return false;
  char* in = const_cast<char*>(bytes);  // iconv does not write to it
  size_t left = size;
  while (!Convert(converter, &in, &left, out)) {
    if (strict) return false;
    out->Put(set.undecodable);
    ++in;
    --left;
  }
  return true;
}

void EncodeToUtf7(const WCHAR* text, size_t length, Output<char>* out) {
  Utf7Encoder encoder;
  char bytes[Utf7Encoder::kMaxBytes];
  for (size_t i = 0; i < length; ++i) out->Put(bytes, encoder.Encode(text[i], bytes));
  out->Put(bytes, encoder.End(bytes));
}

void DecodeFromUtf7(const char* bytes, size_t size, Output<WCHAR>* out) {
  Utf7Decoder decoder;
  WCHAR unit;
  for (size_t i = 0; i < size; ++i) {
    if (decoder.Decode(bytes[i], &unit)) out->Put(unit);
  }
}

}  // namespace
}  // namespace mirolta::runtime

using namespace mirolta::runtime;

extern "C" INT WideCharToMultiByte(UINT code_page, DWORD flags, LPCWSTR text, INT length,
                                   LPSTR bytes, INT capacity, LPCSTR default_character,
                                   BOOL* used_default) {
  if (text == nullptr || length == 0 || capacity < 0) return 0;
  if (capacity != 0 && bytes == nullptr) return 0;
  const CharacterSet* set = FindCharacterSet(code_page);
  if (set == nullptr) return 0;
  // UTF-7 and UTF-8 encode every character: as on the platform, a default character is refused.
  const bool complete = code_page == 65000 || code_page == 65001;
  if (complete && (default_character != nullptr || used_default != nullptr)) return 0;

  const size_t count = length < 0 ? WideLength(text) + 1 : static_cast<size_t>(length);
  Default missing = {default_character == nullptr ? "?" : default_character, 1, false};
  if (default_character != nullptr) missing.size = std::strlen(default_character);
  Output<char> out(bytes, capacity);
  bool converted = false;
  switch (set->kind) {
    case CharacterSetKind::kUtf8:
      converted = EncodeToUtf8(text, count, (flags & WC_ERR_INVALID_CHARS) != 0, &out);
      break;
    case CharacterSetKind::kUtf7:
      EncodeToUtf7(text, count, &out);
      converted = true;
      break;
    case CharacterSetKind::kSingleByte:
      converted = EncodeSingleByte(*set, text, count, &missing, &out);
      break;
    case CharacterSetKind::kMultiByte:
      converted = EncodeMultiByte(*set, text, count, &missing, &out);
      break;
  }
  if (used_default != nullptr) *used_default = missing.used ? TRUE : FALSE;
  return converted ? out.Result() : 0;
}

extern "C" INT MultiByteToWideChar(UINT code_page, DWORD flags, LPCSTR bytes, INT length,
                                   LPWSTR text, INT capacity) {
  if (bytes == nullptr || length == 0 || capacity < 0) return 0;
  if (capacity != 0 && text == nullptr) return 0;
  const CharacterSet* set = FindCharacterSet(code_page);
  if (set == nullptr) return 0;

  const size_t count = length < 0 ? std::strlen(bytes) + 1 : static_cast<size_t>(length);
  const bool strict = (flags & MB_ERR_INVALID_CHARS) != 0;
  Output<WCHAR> out(text, capacity);
  bool converted = false;
  switch (set->kind) {
    case CharacterSetKind::kUtf8:
      converted = DecodeFromUtf8(bytes, count, strict, &out);
      break;
    case CharacterSetKind::kUtf7:
      DecodeFromUtf7(bytes, count, &out);
      converted = !strict;  // the platform refuses the flag for this set
      break;
    case CharacterSetKind::kSingleByte:
      converted = DecodeSingleByte(*set, bytes, count, strict, &out);
      break;
    case CharacterSetKind::kMultiByte:
      converted = DecodeMultiByte(*set, bytes, count, strict, &out);
      break;
  }
  return converted ? out.Result() : 0;
}
