#include "platform.h"

namespace mirolta {

SAFEARRAY* CreateByteArray(uint32_t count) noexcept {
  return MiroltaCreateBytes(count);
}

}  // namespace mirolta
