// The platform's wording for statuses that come without a description.
#pragma once

#include "platform.h"

namespace mirolta::host {

// StandardText returns the platform's wording for a status; `otherwise` if it has none here.
const char* StandardText(HRESULT status, const char* otherwise);

}  // namespace mirolta::host
