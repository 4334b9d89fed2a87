// The handheld's system libraries as the images see them: functions by the names that the device
// exports, each bound to the portable runtime or the C library, through a function of our own where
// names, types or calling conventions differ.
#pragma once

#include <span>
#include <string_view>

namespace mirolta::loader {

struct SystemFunction {
  const char* name;
  void* address;
};

// Function makes a row of a table.
template <typename Result, typename... Parameter>
SystemFunction Function(const char* name, Result (*function)(Parameter...)) {
  return {name, reinterpret_cast<void*>(function)};
}

struct SystemLibrary {
  const char* name;
  std::span<const SystemFunction> functions;
};

// All libraries; the names of the device are compared without case.
std::span<const SystemLibrary> SystemLibraries();
const SystemLibrary* FindSystemLibrary(std::string_view name);
// FindSystemFunction returns a function's address, null if there is none of that name.
void* FindSystemFunction(const SystemLibrary& library, std::string_view name);

// The tables, by subject.
std::span<const SystemFunction> MemoryFunctions();
std::span<const SystemFunction> ProcessFunctions();
std::span<const SystemFunction> ModuleFunctions();
std::span<const SystemFunction> ArithmeticFunctions();
std::span<const SystemFunction> RegistryFunctions();
std::span<const SystemFunction> ObjectFunctions();
std::span<const SystemFunction> AutomationFunctions();

}  // namespace mirolta::loader
