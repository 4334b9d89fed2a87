// The system's headers: its own on Windows; elsewhere portable declarations with the same names,
// layouts and slot order, which callers of the library have too.
#pragma once

#ifdef _WIN32
  #ifdef MIROLTA_HANDHELD
    #include "handheld/handheld_headers.h"
  #else
    #include "windows/windows_headers.h"
  #endif
  // An entry point of a module; the definition file exports it.
  #define MIROLTA_ENTRY extern "C"
#else
  #include "mirolta/bool.h"
  #include "mirolta/runtime.h"
  #define MIROLTA_ENTRY extern "C" __attribute__((visibility("default")))
#endif
