#include "locale_charset.h"

#include <langinfo.h>

#include <cstdio>

#include "platform_fault.h"

namespace {

bool is_set = false;
char charset[16];

}  // namespace

namespace mirolta::test {

void SetLocaleCharset(const char* name) {
  is_set = true;
  std::snprintf(charset, sizeof charset, "%s", name);
}

}  // namespace mirolta::test

// In place of the C library's, for shared libraries too.
extern "C" __attribute__((visibility("default"))) char* nl_langinfo_l(nl_item item,
                                                                      locale_t locale) {
  if (item == CODESET && is_set) return charset;
  return mirolta::test::RuntimeOperation(&nl_langinfo_l, "nl_langinfo_l")(item, locale);
}
