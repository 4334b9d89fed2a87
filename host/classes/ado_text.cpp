#include "classes/ado_text.h"

#include <strings.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <new>

namespace mirolta::host {
namespace {

constexpr UINT kAscii = 20127;
constexpr UINT kUtf7 = 65000;
constexpr UINT kShiftJis = 932;
constexpr UINT kEucJp = 51932;
constexpr UINT kGb18030 = 54936;

struct NameRow {
  const char* name;
  UINT code_page;
};
constexpr NameRow kNames[] = {
    {"unicode", 1200},
    {"utf-16", 1200},
    {"utf-16le", 1200},
    {"iso-10646-ucs-2", 1200},
    {"ucs-2", 1200},
    {"unicodefffe", 1201},
    {"utf-16be", 1201},
    {"utf-8", CP_UTF8},
    {"utf8", CP_UTF8},
    {"unicode-1-1-utf-8", CP_UTF8},
    {"us-ascii", kAscii},
    {"ascii", kAscii},
    {"ansi_x3.4-1968", kAscii},
    {"iso646-us", kAscii},
    {"latin1", 28591},
    {"x-ansi", 1252},
    {"koi8-r", 20866},
    {"koi8-u", 21866},
    {"macintosh", 10000},
    {"tis-620", 874},
    {"shift_jis", kShiftJis},
    {"shift-jis", kShiftJis},
    {"x-sjis", kShiftJis},
    {"euc-jp", kEucJp},
    {"x-euc-jp", kEucJp},
    {"gb2312", 936},
    {"gbk", 936},
    {"gb18030", kGb18030},
    {"big5", 950},
    {"ks_c_5601-1987", 949},
    {"euc-kr", 51949},
    {"johab", 1361},
};

// Names that end with a number, to which the code page of the row is added.
constexpr NameRow kNumberedNames[] = {
    {"iso-8859-", 28590}, {"iso_8859-", 28590}, {"windows-", 0}, {"x-cp", 0}, {"cp", 0},
    {"ibm", 0},           {"dos-", 0},
};

// The code page of a name, 0 if there is none.
UINT CodePageOf(const std::string& name) {
  for (const NameRow& row : kNames) {
    if (strcasecmp(row.name, name.c_str()) == 0) return row.code_page;
  }
  for (const NameRow& row : kNumberedNames) {
    const std::string_view prefix = row.name;
    if (strncasecmp(row.name, name.c_str(), prefix.size()) != 0) continue;
    UINT number = 0;
    const char* const end = name.data() + name.size();
    const auto read = std::from_chars(name.data() + prefix.size(), end, number);
    if (read.ec == std::errc() && read.ptr == end && number < kUtf7) {
      return row.code_page + number;
    }
  }
  return 0;
}

uint8_t ByteAt(std::string_view bytes, size_t index) {
  return index < bytes.size() ? static_cast<uint8_t>(bytes[index]) : 0;
}

// The number of bytes that a lead byte of UTF-8 announces.
// Source: RFC 3629, section 4.
size_t Utf8Length(uint8_t lead) {
  if (lead >= 0xC2 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  if (lead >= 0xF0 && lead <= 0xF4) return 4;
  return 1;
}

// The first character with the bytes that continue it, as far as they do.
size_t FirstOfUtf8(std::string_view bytes, size_t* units) {
  const size_t most = Utf8Length(ByteAt(bytes, 0));
  size_t length = 1;
  while (length < most && (ByteAt(bytes, length) & 0xC0u) == 0x80) ++length;
  *units = length == 4 ? 2 : 1;
  return length;
}

// The sets of several bytes, by their lead bytes. A character is cut only by the end of the stream.
size_t MultiByteLength(UINT code_page, std::string_view bytes) {
  const uint8_t lead = ByteAt(bytes, 0);
  if (lead <= 0x80 || lead == 0xFF) return 1;
  if (code_page == kShiftJis && lead >= 0xA0 && lead <= 0xDF) return 1;
  if (code_page == kEucJp) return lead == 0x8F ? 3 : 2;
  const uint8_t second = ByteAt(bytes, 1);
  return code_page == kGb18030 && second >= '0' && second <= '9' ? 4 : 2;
}

bool IsMultiByte(UINT code_page) {
  constexpr UINT kMultiByte[] = {932, 936, 949, 950, 1361, 51932, 51949, 54936};
  return std::find(std::begin(kMultiByte), std::end(kMultiByte), code_page) != std::end(kMultiByte);
}

// The platform's conversions take sizes of type INT.
void CheckSize(size_t size) {
  if (size > static_cast<size_t>(std::numeric_limits<INT>::max())) throw std::bad_alloc();
}

// The size of a conversion's result. The platform returns 0 if it fails.
size_t SizeOf(INT converted) {
  if (converted <= 0) throw std::bad_alloc();
  return static_cast<size_t>(converted);
}

}  // namespace

bool TextCharset::Find(UnitsView name, TextCharset* charset) {
  const TextCharset found(CodePageOf(SystemFromUnits(name)));
  const bool is_known =
      found.IsUtf16() ||
      (found.code_page_ != 0 && MultiByteToWideChar(found.code_page_, 0, "a", 1, nullptr, 0) == 1);
  if (is_known) *charset = found;
  return is_known;
}

bool TextCharset::IsUtf16() const {
  return code_page_ == kUtf16 || code_page_ == kUtf16BigEndian;
}

std::string_view TextCharset::Mark() const {
  switch (code_page_) {
    case kUtf16:
      return "\xFF\xFE";
    case kUtf16BigEndian:
      return "\xFE\xFF";
    case CP_UTF8:
      return "\xEF\xBB\xBF";
    default:
      return "";
  }
}

std::string TextCharset::Encode(UnitsView text) const {
  std::string bytes;
  if (text.empty()) return bytes;
  if (IsUtf16()) {
    bytes.resize(2 * text.size());
    const size_t low = code_page_ == kUtf16 ? 0 : 1;
    for (size_t i = 0; i < text.size(); ++i) {
      bytes[2 * i + low] = static_cast<char>(text[i] & 0xFF);
      bytes[2 * i + 1 - low] = static_cast<char>(text[i] >> 8);
    }
    return bytes;
  }
  CheckSize(text.size());
  const INT size = WideCharToMultiByte(code_page_, 0, text.data(), static_cast<INT>(text.size()),
                                       nullptr, 0, nullptr, nullptr);
  bytes.resize(SizeOf(size));
  SizeOf(WideCharToMultiByte(code_page_, 0, text.data(), static_cast<INT>(text.size()),
                             bytes.data(), size, nullptr, nullptr));
  return bytes;
}

Units TextCharset::Decode(std::string_view bytes) const {
  Units text;
  if (bytes.empty()) return text;
  if (IsUtf16()) {
    // A last byte on its own is no character.
    text.resize(bytes.size() / 2);
    const size_t low = code_page_ == kUtf16 ? 0 : 1;
    for (size_t i = 0; i < text.size(); ++i) {
      text[i] =
          static_cast<OLECHAR>(ByteAt(bytes, 2 * i + low) | (ByteAt(bytes, 2 * i + 1 - low) << 8));
    }
    return text;
  }
  CheckSize(bytes.size());
  const INT size =
      MultiByteToWideChar(code_page_, 0, bytes.data(), static_cast<INT>(bytes.size()), nullptr, 0);
  text.resize(SizeOf(size));
  SizeOf(MultiByteToWideChar(code_page_, 0, bytes.data(), static_cast<INT>(bytes.size()),
                             text.data(), size));
  return text;
}

size_t TextCharset::FirstCharacter(std::string_view bytes, size_t* units) const {
  *units = 1;
  size_t length = UnitSize();
  if (code_page_ == CP_UTF8) {
    length = FirstOfUtf8(bytes, units);
  } else if (IsMultiByte(code_page_)) {
    length = MultiByteLength(code_page_, bytes);
  }
  return std::min(length, bytes.size());
}

}  // namespace mirolta::host
