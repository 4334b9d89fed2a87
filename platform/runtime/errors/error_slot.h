// The thread's error slot, for the runtime's own use.
#pragma once

#include "mirolta/error_info.h"

namespace mirolta::runtime {

// ThreadErrorSlot returns the thread's slot, which owns a reference to the error object that
// GetErrorInfo would return. The object may be taken out and put back; a new one is set by
// SetErrorInfo.
IErrorInfo** ThreadErrorSlot();

}  // namespace mirolta::runtime
