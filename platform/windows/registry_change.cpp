#include "platform.h"

namespace mirolta {

HRESULT AsOneRegistryChange(HRESULT (*work)()) noexcept {
  return work();
}

}  // namespace mirolta
