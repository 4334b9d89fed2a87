#include "open_converters.h"

#include <dlfcn.h>
#include <iconv.h>

#include <atomic>

namespace {

std::atomic<long> open_converters = 0;

template <typename Function>
Function* Next(Function*, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

namespace mirolta::test {

long OpenConverters() {
  return open_converters;
}

}  // namespace mirolta::test

// In place of the C library's.
extern "C" iconv_t iconv_open(const char* to, const char* from) {
  const iconv_t converter = Next(&iconv_open, "iconv_open")(to, from);
  if (converter != reinterpret_cast<iconv_t>(-1)) ++open_converters;
  return converter;
}

extern "C" int iconv_close(iconv_t converter) {
  --open_converters;
  return Next(&iconv_close, "iconv_close")(converter);
}
