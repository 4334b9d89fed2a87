#include <initializer_list>

#include "definition_files.h"

namespace mirolta {

namespace {

bool all_plain = true;

}  // namespace

void WriteText(FILE* out, const OLECHAR* text) {
  for (; *text != 0; ++text) {
    if (*text < 0x20 || *text > 0x7E || *text == '"' || *text == '\\' || *text == '<' ||
        *text == '&') {
      all_plain = false;
    }
    fputc(static_cast<int>(*text), out);
  }
}

void WriteGuid(FILE* out, const GUID& id, bool braces) {
  OLECHAR text[39] = {};
  StringFromGUID2(id, text, 39);
  if (!braces) text[37] = 0;
  WriteText(out, braces ? text : text + 1);
}

bool ReadVersion(const char* text, Version* version) {
  version->text = text;
  for (unsigned* number : {&version->major, &version->minor, &version->patch}) {
    if (number != &version->major && *text++ != '.') return false;
    if (*text < '0' || *text > '9') return false;
    *number = 0;
    for (; *text >= '0' && *text <= '9'; ++text) {
      *number = *number * 10 + static_cast<unsigned>(*text - '0');
      if (*number > 0xFFFF) return false;
    }
  }
  return *text == 0;
}

bool TextsArePlain() {
  return all_plain;
}

}  // namespace mirolta
