// The type library: its interfaces and classes. The members are in the table beside each interface.
#pragma once

#include "seam/interface_table.h"

namespace mirolta {

extern const TypeLibraryTable kTypeLibraryTable;

}  // namespace mirolta
