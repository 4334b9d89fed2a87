#include "charsets/character_set_table.h"

#include <langinfo.h>
#include <locale.h>
#include <strings.h>

namespace mirolta::runtime {
namespace {

constexpr auto kUtf8 = CharacterSetKind::kUtf8;
constexpr auto kUtf7 = CharacterSetKind::kUtf7;
constexpr auto kSingle = CharacterSetKind::kSingleByte;
constexpr auto kMulti = CharacterSetKind::kMultiByte;

// Without 1200, 1201, 12000 and 12001 (UTF-16, UTF-32), which the platform's conversions refuse.
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
static_assert(sizeof(kSets) / sizeof(kSets[0]) == kCharacterSetCount);

// Codeset names of locales that differ from the names above.
struct LocaleName {
  const char* name;
  UINT number;
};
constexpr LocaleName kLocaleNames[] = {
    {"ANSI_X3.4-1968", 65001},  // the C locale: texts are UTF-8
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

// The codeset of the environment's locale. Does not change the process's locale.
const CharacterSet* SetOfLocale() {
  const locale_t locale = newlocale(LC_CTYPE_MASK, "", static_cast<locale_t>(nullptr));
  if (locale == static_cast<locale_t>(nullptr)) return FindCharacterSet(65001);
  const CharacterSet* set = FindCharacterSetByName(nl_langinfo_l(CODESET, locale));
  freelocale(locale);
  return set != nullptr ? set : FindCharacterSet(65001);
}

}  // namespace

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

size_t CharacterSetIndex(const CharacterSet& set) {
  return static_cast<size_t>(&set - kSets);
}

}  // namespace mirolta::runtime
