#include "platform.h"
#include "portable/registry_mode.h"

namespace mirolta {

HRESULT AsOneRegistryChange(HRESULT (*work)()) noexcept {
  const LONG begun = MiroltaRegistryBatch(TRUE);
  if (begun != ERROR_SUCCESS) return HRESULT_FROM_WIN32(begun);
  const HRESULT status = work();
  const LONG written = MiroltaRegistryBatch(FALSE);
  return SUCCEEDED(status) && written != ERROR_SUCCESS ? HRESULT_FROM_WIN32(written) : status;
}

}  // namespace mirolta
