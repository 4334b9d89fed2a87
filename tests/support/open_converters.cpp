#include "open_converters.h"

#include <errno.h>
#include <iconv.h>

#include <atomic>

#include "platform_fault.h"

namespace {

std::atomic<long> opened = 0, closed = 0;
std::atomic<bool> refused = false;

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
  const iconv_t converter = mirolta::test::RuntimeOperation(&iconv_open, "iconv_open")(to, from);
  if (converter != reinterpret_cast<iconv_t>(-1)) ++opened;
  return converter;
}

extern "C" __attribute__((visibility("default"))) int iconv_close(iconv_t converter) {
  ++closed;
  return mirolta::test::RuntimeOperation(&iconv_close, "iconv_close")(converter);
}
