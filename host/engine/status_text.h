// The platform's wording for statuses that come without a description.
#pragma once

#include <string>

#include "platform.h"

namespace mirolta::host {

// StandardText returns the platform's wording for a status; `otherwise` if it has none here.
const char* StandardText(HRESULT status, const char* otherwise);

// DescribeStatus returns "WORDING (0x80004005)", also for a status without a standard wording.
// Errors: std::bad_alloc.
std::string DescribeStatus(HRESULT status);

}  // namespace mirolta::host
