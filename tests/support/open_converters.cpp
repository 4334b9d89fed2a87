#include "open_converters.h"

#include <dlfcn.h>
#include <errno.h>
#include <iconv.h>

#include <atomic>

namespace {

std::atomic<long> opened = 0, closed = 0;
std::atomic<bool> refused = false;

template <typename Function>
Function* Next(Function*, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

namespace mirolta::test {

long OpenedConverters() {
  return opened;
}
long ClosedConverters() {
  return closed;
}
void RefuseConverters(bool refuse) {
  refused = refuse;
}

}  // namespace mirolta::test

// In place of the C library's, for shared libraries too.
extern "C" __attribute__((visibility("default"))) iconv_t iconv_open(const char* to,
                                                                     const char* from) {
  if (refused) {
    errno = EINVAL;
    return reinterpret_cast<iconv_t>(-1);
  }
  const iconv_t converter = Next(&iconv_open, "iconv_open")(to, from);
  if (converter != reinterpret_cast<iconv_t>(-1)) ++opened;
  return converter;
}

extern "C" __attribute__((visibility("default"))) int iconv_close(iconv_t converter) {
  ++closed;
  return Next(&iconv_close, "iconv_close")(converter);
}
