// A converter of the C library.
#pragma once

#include <iconv.h>

namespace mirolta::runtime {

// IconvConverter owns one converter. Converters are opened and closed under a lock: that loads and
// unloads code, and thread checkers do not know the C library's own lock.
class IconvConverter {
 public:
  IconvConverter(const char* to, const char* from);
  IconvConverter(const IconvConverter&) = delete;
  IconvConverter& operator=(const IconvConverter&) = delete;
  ~IconvConverter();
  bool IsValid() const { return handle_ != reinterpret_cast<iconv_t>(-1); }
  iconv_t Handle() const { return handle_; }

 private:
  const iconv_t handle_;
};

}  // namespace mirolta::runtime
