#include "source/charset_decoder.h"

#include <errno.h>
#include <iconv.h>

#include <algorithm>
#include <charconv>
#include <iterator>

#include "values/text_encoding.h"

namespace mirolta::host {
namespace {

constexpr std::string_view kUtf8 = "UTF-8";
constexpr std::string_view kUtf16Little = "UTF-16LE";
constexpr std::string_view kUtf16Big = "UTF-16BE";

// Code pages that iconv does not know as "CP" and the number.
struct CodePage {
  unsigned number;
  std::string_view name;
};
constexpr CodePage kCodePages[] = {
    {1200, kUtf16Little},   {1201, kUtf16Big},      {10000, "MACINTOSH"},   {12000, "UTF-32LE"},
    {12001, "UTF-32BE"},    {20127, "ASCII"},       {20866, "KOI8-R"},      {20932, "EUC-JP"},
    {21866, "KOI8-U"},      {28591, "ISO-8859-1"},  {28592, "ISO-8859-2"},  {28593, "ISO-8859-3"},
    {28594, "ISO-8859-4"},  {28595, "ISO-8859-5"},  {28596, "ISO-8859-6"},  {28597, "ISO-8859-7"},
    {28598, "ISO-8859-8"},  {28599, "ISO-8859-9"},  {28600, "ISO-8859-10"}, {28601, "ISO-8859-11"},
    {28603, "ISO-8859-13"}, {28604, "ISO-8859-14"}, {28605, "ISO-8859-15"}, {50220, "ISO-2022-JP"},
    {51932, "EUC-JP"},      {51936, "GB2312"},      {51949, "EUC-KR"},      {54936, "GB18030"},
    {65000, "UTF-7"},       {65001, kUtf8},
};

// Names that the C library lacks or, like that of Shift JIS, whose backslash it may decode as a yen
// sign.
struct Alias {
  std::string_view name;
  std::string_view charset;
};
constexpr Alias kAliases[] = {
    {"UTF8", kUtf8},          {"UTF16LE", kUtf16Little},   {"UTF16BE", kUtf16Big},
    {"UTF-16", kUtf16Little}, {"UTF16", kUtf16Little},     {"UNICODE", kUtf16Little},
    {"UCS-2", kUtf16Little},  {"ANSI_X3.4-1968", "ASCII"}, {"SHIFT_JIS", "CP932"},
    {"SHIFT-JIS", "CP932"},   {"SJIS", "CP932"},
};

char UpperCase(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// The name by which the set is decoded here or by iconv; "" if it can be no name.
std::string CanonicalName(std::string_view charset) {
  std::string name;
  for (char c : charset) {
    // A slash starts options of iconv.
    if (static_cast<unsigned char>(c) <= ' ' || static_cast<unsigned char>(c) > '~' || c == '/') {
      return {};
    }
    name += UpperCase(c);
  }
  for (const Alias& row : kAliases) {
    if (row.name == name) return std::string(row.charset);
  }
  std::string_view digits = name;
  if (digits.starts_with("CP")) digits.remove_prefix(2);
  unsigned number = 0;
  const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (parsed.ec != std::errc() || parsed.ptr != digits.data() + digits.size()) return name;
  for (const CodePage& row : kCodePages) {
    if (row.number == number) return std::string(row.name);
  }
  return "CP" + std::to_string(number);
}

bool IsSurrogate(uint32_t code) {
  return code >= 0xD800 && code <= 0xDFFF;
}

Decoding DecodeUtf8(std::string_view bytes, std::string* text, size_t* offset) {
  size_t at = 0;
  while (at < bytes.size()) {
    uint32_t code = static_cast<uint8_t>(bytes[at]);
    const size_t length = code < 0x80 ? 1 : ReadSequence(bytes.substr(at), &code);
    if (length == 0 || IsSurrogate(code)) break;
    at += length;
  }
  text->append(bytes.substr(0, at));
  *offset = at;
  return at == bytes.size() ? Decoding::kDone : Decoding::kMalformed;
}

Decoding DecodeUtf16(std::string_view bytes, bool is_big, std::string* text, size_t* offset) {
  const auto unit_at = [&](size_t at) {
    const uint32_t first = static_cast<uint8_t>(bytes[at]);
    const uint32_t second = static_cast<uint8_t>(bytes[at + 1]);
    return is_big ? first << 8 | second : second << 8 | first;
  };
  size_t& at = *offset;
  for (at = 0; at + 1 < bytes.size(); at += 2) {
    uint32_t code = unit_at(at);
    if (IsSurrogate(code)) {
      if (code >= 0xDC00) return Decoding::kMalformed;
      if (at + 3 >= bytes.size()) return Decoding::kTruncated;
      const uint32_t low = unit_at(at + 2);
      if (low < 0xDC00 || low > 0xDFFF) return Decoding::kMalformed;
      code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
      AppendCode(code, text);
      at += 2;
    } else {
      AppendCode(code, text);
    }
  }
  return at == bytes.size() ? Decoding::kDone : Decoding::kTruncated;
}

// A converter to UTF-8 of the C library.
class Converter {
 public:
  explicit Converter(const std::string& from) : handle_(iconv_open("UTF-8", from.c_str())) {}
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;
  ~Converter() {
    if (IsValid()) iconv_close(handle_);
  }
  bool IsValid() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

  // Converts *bytes until its end, an error or until `room` bytes are written, and advances it.
  // Returns 0 or the error's number.
  int Convert(std::string_view* bytes, char* out, size_t* room) {
    char* in = const_cast<char*>(bytes->data());  // iconv does not write to it
    size_t left = bytes->size();
    const size_t result = iconv(handle_, &in, &left, &out, room);
    const int error = result == static_cast<size_t>(-1) ? errno : 0;
    bytes->remove_prefix(bytes->size() - left);
    return error;
  }

 private:
  iconv_t handle_;
};

constexpr size_t kBlockSize = 16384;

Decoding DecodeByIconv(const std::string& charset, std::string_view bytes, std::string* text,
                       size_t* offset) {
  Converter converter(charset);
  if (!converter.IsValid()) return Decoding::kUnknownSet;
  std::string_view left = bytes;
  for (;;) {
    char block[kBlockSize];
    size_t room = sizeof block;
    const int error = converter.Convert(&left, block, &room);
    text->append(block, sizeof block - room);
    *offset = bytes.size() - left.size();
    if (error == 0 && left.empty()) return Decoding::kDone;
    if (error == EINVAL) return Decoding::kTruncated;
    if (error != E2BIG) return Decoding::kMalformed;
  }
}

}  // namespace

Decoding DecodeText(std::string_view charset, std::string_view bytes, std::string* text,
                    size_t* offset) {
  const std::string name = CanonicalName(charset);
  *offset = 0;
  if (name.empty()) return Decoding::kUnknownSet;
  if (name == kUtf8) return DecodeUtf8(bytes, text, offset);
  if (name == kUtf16Little || name == kUtf16Big) {
    return DecodeUtf16(bytes, name == kUtf16Big, text, offset);
  }
  return DecodeByIconv(name, bytes, text, offset);
}

size_t OffsetOfText(std::string_view charset, std::string_view bytes, size_t size) {
  // Every set encodes a character in at least one byte: the shortest prefix with that much text is
  // found by halves.
  size_t low = 0;
  size_t high = bytes.size();
  while (low < high) {
    const size_t middle = low + (high - low) / 2;
    std::string text;
    size_t offset = 0;
    DecodeText(charset, bytes.substr(0, middle), &text, &offset);
    if (text.size() < size) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low;
}

}  // namespace mirolta::host
