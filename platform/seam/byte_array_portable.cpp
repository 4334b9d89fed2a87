#include "platform.h"
#include "portable/created_bytes.h"

namespace mirolta {

SAFEARRAY* CreateByteArray(uint32_t count) noexcept {
  return MiroltaCreateBytes(count);
}

}  // namespace mirolta
