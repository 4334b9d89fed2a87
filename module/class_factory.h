// The class factory of all classes.
#pragma once

#include "class_table.h"

namespace mirolta {

// CreateClassFactory creates a factory for an instance creator and queries it for iid. The first
// reference, which the class table keeps, does not keep the module loaded; further ones do.
// Errors: E_OUTOFMEMORY; E_NOINTERFACE for anything but IUnknown and IClassFactory.
HRESULT CreateClassFactory(InstanceCreator create_instance, REFIID iid, void** out);

}  // namespace mirolta
