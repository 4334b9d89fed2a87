#include "portable/registry_mode.h"

namespace mirolta {

namespace {

HKEY classes = nullptr;
OLECHAR name[64];

LONG Begin() {
  wsprintfW(name, OLESTR("Software\\MiroltaTest%u"), static_cast<unsigned>(GetCurrentProcessId()));
  const LONG error = RegCreateKeyExW(HKEY_CURRENT_USER, name, 0, nullptr, 0, KEY_ALL_ACCESS,
                                     nullptr, &classes, nullptr);
  return error == ERROR_SUCCESS ? RegOverridePredefKey(HKEY_CLASSES_ROOT, classes) : error;
}

void End() {
  RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
  RegCloseKey(classes);
  classes = nullptr;
  RegDeleteTreeW(HKEY_CURRENT_USER, name);
}

}  // namespace

LONG MiroltaRegistryInMemory(BOOL in_memory) {
  if (classes != nullptr) End();
  return in_memory ? Begin() : ERROR_SUCCESS;
}

}  // namespace mirolta
