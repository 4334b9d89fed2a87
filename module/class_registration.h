// Registration: what DllRegisterServer and DllUnregisterServer write and remove.
#pragma once

#include "class_table.h"

namespace mirolta {

// UpdateRegistry registers or unregisters one row of the class table.
HRESULT UpdateRegistry(const ClassRow& row, bool registers);

// RegisterModule registers all rows in order, then the type library; the first failure ends it and
// is returned. UnregisterModule goes on past failures and always returns S_OK.
HRESULT RegisterModule();
HRESULT UnregisterModule();

}  // namespace mirolta
