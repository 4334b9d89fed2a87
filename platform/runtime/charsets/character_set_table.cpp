#include "charsets/character_set_table.h"

#include <langinfo.h>
#include <locale.h>
#include <strings.h>

#include <atomic>
#include <cstring>
#include <mutex>

namespace mirolta {
namespace {

constexpr auto kUtf8 = CharacterSetKind::kUtf8;
constexpr auto kUtf7 = CharacterSetKind::kUtf7;
constexpr auto kSingle = CharacterSetKind::kSingleByte;
constexpr auto kMulti = CharacterSetKind::kMultiByte;

// 1200, 1201, 12000 and 12001 are missing on purpose: the platform refuses them here.
constexpr CharacterSet kSets[] = {
    {65001, kUtf8, "UTF-8", 0xFFFD},       {65000, kUtf7, "UTF-7", 0xFFFD},
    {20127, kSingle, "ASCII", u'?'},       {437, kSingle, "CP437", u'?'},
    {737, kSingle, "CP737", u'?'},         {775, kSingle, "CP775", u'?'},
    {850, kSingle, "CP850", u'?'},         {852, kSingle, "CP852", u'?'},
    {855, kSingle, "CP855", u'?'},         {857, kSingle, "CP857", u'?'},
    {858, kSingle, "CP858", u'?'},         {860, kSingle, "CP860", u'?'},
    {861, kSingle, "CP861", u'?'},         {862, kSingle, "CP862", u'?'},
    {863, kSingle, "CP863", u'?'},         {864, kSingle, "CP864", u'?'},
    {865, kSingle, "CP865", u'?'},         {866, kSingle, "CP866", u'?'},
    {869, kSingle, "CP869", u'?'},         {874, kSingle, "CP874", u'?'},
    {1250, kSingle, "CP1250", u'?'},       {1251, kSingle, "CP1251", u'?'},
    {1252, kSingle, "CP1252", u'?'},       {1253, kSingle, "CP1253", u'?'},
    {1254, kSingle, "CP1254", u'?'},       {1255, kSingle, "CP1255", u'?'},
    {1256, kSingle, "CP1256", u'?'},       {1257, kSingle, "CP1257", u'?'},
    {1258, kSingle, "CP1258", u'?'},       {10000, kSingle, "MACINTOSH", u'?'},
    {20866, kSingle, "KOI8-R", u'?'},      {21866, kSingle, "KOI8-U", u'?'},
    {28591, kSingle, "ISO-8859-1", u'?'},  {28592, kSingle, "ISO-8859-2", u'?'},
    {28593, kSingle, "ISO-8859-3", u'?'},  {28594, kSingle, "ISO-8859-4", u'?'},
    {28595, kSingle, "ISO-8859-5", u'?'},  {28596, kSingle, "ISO-8859-6", u'?'},
    {28597, kSingle, "ISO-8859-7", u'?'},  {28598, kSingle, "ISO-8859-8", u'?'},
    {28599, kSingle, "ISO-8859-9", u'?'},  {28600, kSingle, "ISO-8859-10", u'?'},
    {28601, kSingle, "ISO-8859-11", u'?'}, {28603, kSingle, "ISO-8859-13", u'?'},
    {28604, kSingle, "ISO-8859-14", u'?'}, {28605, kSingle, "ISO-8859-15", u'?'},
    {932, kMulti, "CP932", 0x30FB},        {936, kMulti, "CP936", u'?'},
    {949, kMulti, "CP949", u'?'},          {950, kMulti, "CP950", u'?'},
    {1361, kMulti, "JOHAB", u'?'},         {51932, kMulti, "EUC-JP", u'?'},
    {51949, kMulti, "EUC-KR", u'?'},       {54936, kMulti, "GB18030", u'?'},
};
constexpr size_t kSetCount = sizeof(kSets) / sizeof(kSets[0]);

// A locale's names for sets that the rows above call otherwise.
struct LocaleName {
  const char* name;
  UINT number;
};
constexpr LocaleName kLocaleNames[] = {
    {"ANSI_X3.4-1968", 65001},  // the plain C locale names no set of its own: texts are UTF-8
    {"US-ASCII", 65001},
    {"ASCII", 65001},
    {"UTF8", 65001},
    {"GBK", 936},
    {"GB2312", 936},
    {"BIG5", 950},
    {"SHIFT_JIS", 932},
    {"TIS-620", 874},
    {"UHC", 949},
};

// Bytes that the platform decodes although the character set's definition leaves them open.
struct OpenBytes {
  UINT number;
  BYTE first;
  BYTE last;
  WCHAR decoded;  // of first; the next ones follow
};
constexpr OpenBytes kOpenBytes[] = {
    {1253, 0xAA, 0xAA, 0xF8F9}, {1253, 0xD2, 0xD2, 0xF8FA}, {1253, 0xFF, 0xFF, 0xF8FB},
    {1255, 0xD9, 0xDF, 0xF88D}, {1255, 0xFB, 0xFC, 0xF894}, {1255, 0xFF, 0xFF, 0xF896},
    {1257, 0xA1, 0xA1, 0xF8FC}, {1257, 0xA5, 0xA5, 0xF8FD},
};

bool HasOpenControls(UINT number) {
  return number == 874 || (number >= 1250 && number <= 1258);
}

// The set that the environment's locale uses; the process's own locale is left alone.
const CharacterSet* SetOfLocale() {
  const locale_t locale = newlocale(LC_CTYPE_MASK, "", static_cast<locale_t>(nullptr));
  if (locale == static_cast<locale_t>(nullptr)) return FindCharacterSet(65001);
  const CharacterSet* set = FindCharacterSetByName(nl_langinfo_l(CODESET, locale));
  freelocale(locale);
  return set != nullptr ? set : FindCharacterSet(65001);
}

WCHAR DecodeOpenByte(UINT number, unsigned byte) {
  if (HasOpenControls(number) && byte >= 0x80 && byte <= 0x9F) return static_cast<WCHAR>(byte);
  for (const OpenBytes& row : kOpenBytes) {
    if (row.number == number && byte >= row.first && byte <= row.last) {
      return static_cast<WCHAR>(row.decoded + (byte - row.first));
    }
  }
  return kUndefinedByte;
}

// Each byte is decoded for itself: the C library would join some letters and marks, the platform
// does not.
bool FillTable(const CharacterSet& set, SingleByteTable* table) {
  Converter converter("UTF-16LE", set.name);
  if (!converter.valid()) return false;
  for (unsigned byte = 0; byte < 256; ++byte) {
    char in[1] = {static_cast<char>(byte)};
    char out[8] = {};
    char* from = in;
    char* to = out;
    size_t left = 1;
    size_t room = sizeof(out);
    converter.Reset();
    const size_t failed = iconv(converter.handle(), &from, &left, &to, &room);
    if (failed != static_cast<size_t>(-1)) iconv(converter.handle(), nullptr, nullptr, &to, &room);
    const bool one = failed != static_cast<size_t>(-1) && to - out == 2;
    table->decoded[byte] =
        one ? static_cast<WCHAR>(static_cast<BYTE>(out[0]) | static_cast<BYTE>(out[1]) << 8)
            : DecodeOpenByte(set.number, byte);
  }

  for (unsigned count = 0; count < 256; ++count) {  // insertion sort: once a set
    unsigned place = count;
    while (place > 0 && table->decoded[table->by_character[place - 1]] > table->decoded[count]) {
      table->by_character[place] = table->by_character[place - 1];
      --place;
    }
    table->by_character[place] = static_cast<BYTE>(count);
  }
  return true;
}

SingleByteTable g_tables[kSetCount];
std::atomic<bool> g_filled[kSetCount];
std::mutex g_filling;
std::mutex g_converters;

iconv_t OpenConverter(const char* to, const char* from) {
  const std::lock_guard<std::mutex> lock(g_converters);
  return iconv_open(to, from);
}

}  // namespace

Converter::Converter(const char* to, const char* from) : handle_(OpenConverter(to, from)) {}

Converter::~Converter() {
  if (!valid()) return;
  const std::lock_guard<std::mutex> lock(g_converters);
  iconv_close(handle_);
}

const CharacterSet* FindCharacterSet(UINT number) {
  if (number == 0) {
    static const CharacterSet* const set_of_locale = SetOfLocale();
    return set_of_locale;
  }
  for (const CharacterSet& set : kSets) {
    if (set.number == number) return &set;
  }
  return nullptr;
}

const CharacterSet* FindCharacterSetByName(const char* name) {
  for (const LocaleName& row : kLocaleNames) {
    if (strcasecmp(row.name, name) == 0) return FindCharacterSet(row.number);
  }
  for (const CharacterSet& set : kSets) {
    if (strcasecmp(set.name, name) == 0) return &set;
  }
  return nullptr;
}

INT SingleByteTable::Encode(WCHAR character) const {
  if (character == kUndefinedByte) return -1;
  unsigned first = 0;
  unsigned last = 256;
  while (first < last) {  // the answer, if any, stands in first..last
    const unsigned middle = (first + last) / 2;
    if (decoded[by_character[middle]] < character) {
      first = middle + 1;
    } else {
      last = middle;
    }
  }
  if (first == 256 || decoded[by_character[first]] != character) return -1;
  return by_character[first];
}

const SingleByteTable* TableOf(const CharacterSet& set) {
  const size_t index = static_cast<size_t>(&set - kSets);
  if (!g_filled[index].load(std::memory_order_acquire)) {
    const std::lock_guard<std::mutex> lock(g_filling);
    if (!g_filled[index].load(std::memory_order_relaxed)) {
      if (!FillTable(set, &g_tables[index])) return nullptr;
      g_filled[index].store(true, std::memory_order_release);
    }
  }
  return &g_tables[index];
}

}  // namespace mirolta
