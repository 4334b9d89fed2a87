#include "source/script_encoding.h"

#include <langinfo.h>
#include <locale.h>
#include <stdio.h>
#include <strings.h>

#include "source/charset_decoder.h"
#include "source/source_lines.h"
#include "values/text_encoding.h"

namespace mirolta::host {
namespace {

using std::string_view;
using namespace std::string_view_literals;

constexpr string_view kUtf8 = "UTF-8";
constexpr string_view kUtf16Little = "UTF-16LE";
constexpr string_view kUtf16Big = "UTF-16BE";
constexpr string_view kWestern = "windows-1252";

// A mark of UTF-32 begins like one of UTF-16.
struct Mark {
  string_view bytes;
  string_view charset;
};
constexpr Mark kMarks[] = {
    {"\xEF\xBB\xBF"sv, kUtf8},    {"\xFF\xFE\0\0"sv, "UTF-32LE"}, {"\0\0\xFE\xFF"sv, "UTF-32BE"},
    {"\xFF\xFE"sv, kUtf16Little}, {"\xFE\xFF"sv, kUtf16Big},
};

// Scripts start with a character below U+0100: a letter, a comment, a quotation mark.
string_view Utf16OfFirstCharacter(string_view bytes) {
  if (bytes.size() < 2 || (bytes[0] == '\0') == (bytes[1] == '\0')) return {};
  return bytes[0] == '\0' ? kUtf16Big : kUtf16Little;
}

// The codeset of the environment's locale. Does not change the process's locale.
std::string LocaleCharset() {
  const locale_t locale = newlocale(LC_CTYPE_MASK, "", static_cast<locale_t>(nullptr));
  if (locale == static_cast<locale_t>(nullptr)) return std::string(kUtf8);
  std::string name = nl_langinfo_l(CODESET, locale);
  freelocale(locale);
  return name;
}

bool IsUtf8OrAscii(const std::string& charset) {
  for (const char* name : {"UTF-8", "UTF8", "ANSI_X3.4-1968", "US-ASCII", "ASCII", ""}) {
    if (strcasecmp(charset.c_str(), name) == 0) return true;
  }
  return false;
}

bool HasUtf8Sequence(string_view bytes) {
  uint32_t code = 0;
  for (size_t at = 0; at < bytes.size(); ++at) {
    if (ReadSequence(bytes.substr(at), &code) > 1) return true;
  }
  return false;
}

// The set of bytes without a mark. The bytes are decoded for the answer if they are UTF-8.
std::string DetectCharset(string_view bytes, std::string* text) {
  const string_view utf16 = Utf16OfFirstCharacter(bytes);
  if (!utf16.empty()) return std::string(utf16);
  size_t offset = 0;
  if (DecodeText(kUtf8, bytes, text, &offset) == Decoding::kDone) return std::string(kUtf8);
  text->clear();
  std::string locale = LocaleCharset();
  if (!IsUtf8OrAscii(locale)) return locale;
  return std::string(HasUtf8Sequence(bytes) ? kUtf8 : kWestern);
}

// The name, and the line that follows the text.
std::string LineAfter(const std::string& name, string_view text) {
  return name + '(' + std::to_string(CountLines(text)) + "): ";
}

std::string Hexadecimal(char byte) {
  char text[sizeof "0xFF"];
  snprintf(text, sizeof text, "0x%02X", static_cast<unsigned>(static_cast<uint8_t>(byte)));
  return text;
}

// Bytes, by their offset in the file, that are not valid.
std::string NotValid(Decoding decoding, char byte, size_t offset, string_view charset,
                     bool was_chosen) {
  const std::string place = "at offset " + std::to_string(offset);
  std::string text = decoding == Decoding::kTruncated
                         ? "the character " + place + " is incomplete: the text is not valid "
                         : "the byte " + Hexadecimal(byte) + ' ' + place + " is not valid ";
  text += charset;
  text += was_chosen ? ", the character set chosen"
                     : "; --charset NAME chooses the character set, for example windows-1252";
  return text;
}

}  // namespace

bool DecodeScript(const std::string& name, string_view bytes, const std::string& charset,
                  std::string* text, std::string* problem) {
  text->clear();
  std::string set = charset;
  string_view body = bytes;
  for (const Mark& mark : kMarks) {
    if (!bytes.starts_with(mark.bytes)) continue;
    set = mark.charset;
    body.remove_prefix(mark.bytes.size());
    break;
  }
  const bool was_chosen = !charset.empty() && set == charset;
  if (set.empty() || strcasecmp(set.c_str(), "UTF-16") == 0) {
    const string_view utf16 = Utf16OfFirstCharacter(body);
    set =
        set.empty() ? DetectCharset(body, text) : std::string(utf16.empty() ? kUtf16Little : utf16);
  }
  if (text->empty()) {
    size_t offset = 0;
    const Decoding decoding = DecodeText(set, body, text, &offset);
    if (decoding == Decoding::kUnknownSet) {
      *problem = "unknown character set " + set +
                 "; the names are those of iconv --list, and numbers of code pages such as 1252";
      return false;
    }
    if (decoding != Decoding::kDone) {
      *problem =
          LineAfter(name, *text) +
          NotValid(decoding, body[offset], offset + bytes.size() - body.size(), set, was_chosen);
      return false;
    }
  }
  const size_t zero = text->find('\0');
  if (zero == std::string::npos) return true;
  const size_t offset = OffsetOfText(set, body, zero) + bytes.size() - body.size();
  *problem = LineAfter(name, string_view(*text).substr(0, zero)) + "the NUL character at offset " +
             std::to_string(offset) + " cannot be part of a script; is the character set not " +
             set + "? --charset NAME chooses it";
  return false;
}

}  // namespace mirolta::host
