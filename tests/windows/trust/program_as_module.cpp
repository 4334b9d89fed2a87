// A program that links mirolta_entry is a module, but the loader calls DllMain of DLLs only. Its one thread,
// which makes the objects, is one that may use those of the system.
#include "entry_points.h"

__attribute__((constructor)) static void Load() {
  CoInitialize(nullptr);
  DllMain(GetModuleHandleW(nullptr), DLL_PROCESS_ATTACH, nullptr);
}
