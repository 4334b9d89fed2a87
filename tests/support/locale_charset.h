// The character set of the locale, of which few systems have another than UTF-8. Link locale_charset.cpp.
#pragma once

namespace mirolta::test {

// From now on the C library names this one, of at most 15 characters, for every locale.
void SetLocaleCharset(const char* name);

}  // namespace mirolta::test
