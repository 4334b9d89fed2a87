// Modules and their resources in the base library. Names of functions are wide here, and a system
// library has only what the device exports.
#include <string>

#include "platform.h"
#include "system/system_library.h"

namespace mirolta::loader {
namespace {

std::string Narrow(LPCWSTR text) {
  std::string narrow;
  for (; *text != 0; ++text) narrow += *text < 0x80 ? static_cast<char>(*text) : '?';
  return narrow;
}

// The handle of a system library is the row of its table.
HMODULE HandleOf(const SystemLibrary& library) {
  return reinterpret_cast<HMODULE>(const_cast<SystemLibrary*>(&library));
}
const SystemLibrary* LibraryOf(HMODULE handle) {
  for (const SystemLibrary& library : SystemLibraries()) {
    if (HandleOf(library) == handle) return &library;
  }
  return nullptr;
}

HMODULE LoadLibraryByName(LPCWSTR file) {
  if (file == nullptr) return nullptr;
  const SystemLibrary* const library = FindSystemLibrary(Narrow(file));
  return library != nullptr ? HandleOf(*library) : LoadLibraryW(file);
}
INT FreeLibraryByHandle(HMODULE module) {
  return LibraryOf(module) != nullptr ? TRUE : FreeLibrary(module);
}
FARPROC ProcedureAddress(HMODULE module, LPCWSTR name) {
  const std::string narrow = Narrow(name);
  const SystemLibrary* const library = LibraryOf(module);
  if (library == nullptr) return GetProcAddress(module, narrow.c_str());
  return reinterpret_cast<FARPROC>(FindSystemFunction(*library, narrow));
}

}  // namespace

std::span<const SystemFunction> ModuleFunctions() {
  static const SystemFunction functions[] = {
      Function("DisableThreadLibraryCalls", DisableThreadLibraryCalls),
      Function("FindResourceW", FindResourceW),
      Function("FreeLibrary", FreeLibraryByHandle),
      Function("GetModuleFileNameW", GetModuleFileNameW),
      Function("GetProcAddressW", ProcedureAddress),
      Function("LoadLibraryW", LoadLibraryByName),
      Function("LoadResource", LoadResource),
      Function("LoadStringW", LoadStringW),
      Function("SizeofResource", SizeofResource),
  };
  return functions;
}

}  // namespace mirolta::loader
