// The identifiers of the system's interfaces, where no library of a compiler has them. The linker keeps those
// that are used.
#include <initguid.h>

#include "system_headers.h"

// The headers declare these two only.
DEFINE_GUID(GUID_NULL, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
DEFINE_GUID(IID_IUnknown, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46);
