#include "system/system_library.h"

#include <strings.h>

#include <string>
#include <vector>

namespace mirolta::loader {
namespace {

// The device's base library has what desktops divide among several.
std::vector<SystemFunction> BaseFunctions() {
  std::vector<SystemFunction> all;
  for (const auto part : {MemoryFunctions(), ProcessFunctions(), ModuleFunctions(),
                          ArithmeticFunctions(), RegistryFunctions()}) {
    all.insert(all.end(), part.begin(), part.end());
  }
  return all;
}

}  // namespace

std::span<const SystemLibrary> SystemLibraries() {
  static const std::vector<SystemFunction> base = BaseFunctions();
  static const SystemLibrary libraries[] = {
      {"coredll.dll", base},
      {"ole32.dll", ObjectFunctions()},
      {"oleaut32.dll", AutomationFunctions()},
  };
  return libraries;
}

const SystemLibrary* FindSystemLibrary(std::string_view name) {
  const std::string wanted(name);
  for (const SystemLibrary& library : SystemLibraries()) {
    if (strcasecmp(library.name, wanted.c_str()) == 0) return &library;
  }
  return nullptr;
}

void* FindSystemFunction(const SystemLibrary& library, std::string_view name) {
  for (const SystemFunction& function : library.functions) {
    if (function.name == name) return function.address;
  }
  return nullptr;
}

}  // namespace mirolta::loader
