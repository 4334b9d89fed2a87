#include "platform.h"

namespace mirolta {

SAFEARRAY* CreateByteArray(uint32_t count) noexcept {
  SAFEARRAYBOUND bound = {count, 0};
  return SafeArrayCreate(VT_UI1, 1, &bound);
}

}  // namespace mirolta
