#include "import_patch.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace mirolta::test {

namespace {

template <typename Header>
Header* At(HMODULE module, DWORD offset) {
  return reinterpret_cast<Header*>(
      reinterpret_cast<void*>(reinterpret_cast<uint8_t*>(module) + offset));
}

const IMAGE_IMPORT_DESCRIPTOR* Imports(HMODULE module) {
  const LONG headers_at = At<const IMAGE_DOS_HEADER>(module, 0)->e_lfanew;
  const auto* const headers = At<const IMAGE_NT_HEADERS>(module, static_cast<DWORD>(headers_at));
  return At<const IMAGE_IMPORT_DESCRIPTOR>(
      module, headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
}

// The slot through which the module calls an import; null if it has none of the name.
ULONG_PTR* SlotOf(HMODULE module, const char* name) {
  const IMAGE_IMPORT_DESCRIPTOR* library = Imports(module);
  for (; library->Name != 0; ++library) {
    const auto* entry = At<const IMAGE_THUNK_DATA>(module, library->OriginalFirstThunk);
    auto* slot = At<IMAGE_THUNK_DATA>(module, library->FirstThunk);
    for (; entry->u1.AddressOfData != 0; ++entry, ++slot) {
      if (IMAGE_SNAP_BY_ORDINAL(entry->u1.Ordinal)) continue;
      const auto* const import =
          At<const IMAGE_IMPORT_BY_NAME>(module, static_cast<DWORD>(entry->u1.AddressOfData));
      if (std::strcmp(import->Name, name) == 0) return &slot->u1.Function;
    }
  }
  return nullptr;
}

}  // namespace

void* ReplaceImportOf(HMODULE module, const char* name, void* replacement) {
  ULONG_PTR* const slot = SlotOf(module, name);
  DWORD protection = 0;
  if (slot == nullptr || !VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection)) {
    return nullptr;
  }
  void* const before = reinterpret_cast<void*>(*slot);
  *slot = reinterpret_cast<ULONG_PTR>(replacement);
  VirtualProtect(slot, sizeof *slot, protection, &protection);
  return before;
}

void* ReplaceImport(const char* name, void* replacement) {
  void* const before = ReplaceImportOf(GetModuleHandleW(nullptr), name, replacement);
  if (before == nullptr) {
    std::fprintf(stderr, "%s cannot be replaced\n", name);
    std::abort();
  }
  return before;
}

}  // namespace mirolta::test
