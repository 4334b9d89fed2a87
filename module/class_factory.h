// The class factory that every class shares.
#pragma once

#include "class_table.h"

namespace mirolta {

// CreateClassFactory makes a factory for one instance creator and queries it for iid.
// The reference that the class table keeps does not hold the module loaded; every further one does.
// Errors: E_OUTOFMEMORY; E_NOINTERFACE for anything but IUnknown and IClassFactory.
HRESULT CreateClassFactory(InstanceCreator create_instance, REFIID iid, void** out);

}  // namespace mirolta
