// The system's own headers, kept to what a component needs of them.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
  #define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
  #define NOMINMAX
#endif
#ifndef UNICODE
  #define UNICODE
#endif
#include <windows.h>

#include <objbase.h>
#include <oleauto.h>
#include <olectl.h>

// An entry point of a module; the definition file exports it.
#define MIROLTA_ENTRY extern "C"
