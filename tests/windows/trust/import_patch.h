// A program's imports of system functions, and those of the system's modules, replaced while it runs.
#pragma once

#include "platform.h"

namespace mirolta::test {

// ReplaceImport makes all calls of an imported function reach `replacement`, those of the module's code and
// of the libraries linked to it, and returns what they reached before. Other modules of the process keep
// theirs. The program ends if it does not import the function.
void* ReplaceImport(const char* name, void* replacement);

// ReplaceImportOf does the same to the imports of a module of the process, and returns null if it does not
// import the function.
void* ReplaceImportOf(HMODULE module, const char* name, void* replacement);

template <typename Result, typename... Parameters>
auto ReplaceImport(const char* name, Result(WINAPI* replacement)(Parameters...)) {
  void* const before = ReplaceImport(name, reinterpret_cast<void*>(replacement));
  return reinterpret_cast<Result(WINAPI*)(Parameters...)>(before);
}

}  // namespace mirolta::test
