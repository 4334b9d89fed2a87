#include "charsets/iconv_converter.h"

#include <mutex>

namespace mirolta::runtime {
namespace {

std::mutex g_converters;

iconv_t OpenConverter(const char* to, const char* from) {
  const std::lock_guard<std::mutex> lock(g_converters);
  return iconv_open(to, from);
}

}  // namespace

IconvConverter::IconvConverter(const char* to, const char* from)
    : handle_(OpenConverter(to, from)) {}

IconvConverter::~IconvConverter() {
  if (!IsValid()) return;
  const std::lock_guard<std::mutex> lock(g_converters);
  iconv_close(handle_);
}

}  // namespace mirolta::runtime
