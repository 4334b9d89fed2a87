// The thread's error slot, for the runtime's own use.
#pragma once

#include "portable/error_info.h"

namespace mirolta::runtime {

// ThreadErrorSlot gives the place of the description that GetErrorInfo would take, with its
// reference. Descriptions may be taken from it and put back; new ones go through SetErrorInfo.
IErrorInfo** ThreadErrorSlot();

}  // namespace mirolta::runtime
