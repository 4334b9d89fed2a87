// The system's headers: its own on Windows; elsewhere portable declarations with the same names,
// layouts and slot order.
#pragma once

#ifdef _WIN32
  #include "windows/windows_headers.h"
#else
  #include "portable/runtime.h"
#endif
