// Registration: what DllRegisterServer and DllUnregisterServer write and remove.
#pragma once

#include "class_table.h"

namespace mirolta {

// UpdateRegistry registers or unregisters one row of the class table.
HRESULT UpdateRegistry(const ClassRow& row, bool registers);

// RegisterModule registers all rows in order, then the type library; it stops at the first failure
// and returns it. UnregisterModule continues after failures and always returns S_OK.
HRESULT RegisterModule();
HRESULT UnregisterModule();

}  // namespace mirolta
