#include "import_patch.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace mirolta::test {

namespace {

uint8_t* Image() {
  return reinterpret_cast<uint8_t*>(GetModuleHandleW(nullptr));
}

template <typename Header>
Header* At(DWORD offset) {
  return reinterpret_cast<Header*>(reinterpret_cast<void*>(Image() + offset));
}

const IMAGE_IMPORT_DESCRIPTOR* Imports() {
  const auto* const headers =
      At<const IMAGE_NT_HEADERS>(static_cast<DWORD>(At<const IMAGE_DOS_HEADER>(0)->e_lfanew));
  return At<const IMAGE_IMPORT_DESCRIPTOR>(
      headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
}

// The slot through which the program calls an import; null if it has none of the name.
ULONG_PTR* SlotOf(const char* name) {
  for (const IMAGE_IMPORT_DESCRIPTOR* library = Imports(); library->Name != 0; ++library) {
    const auto* entry = At<const IMAGE_THUNK_DATA>(library->OriginalFirstThunk);
    auto* slot = At<IMAGE_THUNK_DATA>(library->FirstThunk);
    for (; entry->u1.AddressOfData != 0; ++entry, ++slot) {
      if (IMAGE_SNAP_BY_ORDINAL(entry->u1.Ordinal)) continue;
      const auto* const import =
          At<const IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(entry->u1.AddressOfData));
      if (std::strcmp(import->Name, name) == 0) return &slot->u1.Function;
    }
  }
  return nullptr;
}

}  // namespace

void* ReplaceImport(const char* name, void* replacement) {
  ULONG_PTR* const slot = SlotOf(name);
  DWORD protection = 0;
  if (slot == nullptr || !VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection)) {
    std::fprintf(stderr, "%s cannot be replaced\n", name);
    std::abort();
  }
  void* const before = reinterpret_cast<void*>(*slot);
  *slot = reinterpret_cast<ULONG_PTR>(replacement);
  VirtualProtect(slot, sizeof *slot, protection, &protection);
  return before;
}

}  // namespace mirolta::test
