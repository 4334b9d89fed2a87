// The type library: its interfaces and classes. Members stand in the table beside each interface.
#pragma once

#include "portable/interface_table.h"

namespace mirolta {

extern const TypeLibraryTable kTypeLibraryTable;

}  // namespace mirolta
