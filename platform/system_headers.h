// The system's headers: its own on Windows, the portable declarations with the same names, layouts
// and slot orders elsewhere.
#pragma once

#ifdef _WIN32
  #include "windows/windows_headers.h"
#else
  #include "portable/runtime.h"
#endif
