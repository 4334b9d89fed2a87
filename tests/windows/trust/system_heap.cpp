// The system's heaps as trust_heap.h watches them: those modules whose blocks pass between the program and
// the system reach them by the functions here.
#include <cstring>

#include "heap_watch.h"
#include "import_patch.h"

namespace mirolta::test {

namespace {

// Texts are not kept for reuse when they are freed: they are freed. The 32-bit import library has no such
// function.
void FreeTexts() {
  const HMODULE automation = GetModuleHandleW(OLESTR("oleaut32.dll"));
  void* const function = reinterpret_cast<void*>(GetProcAddress(automation, "SetOaNoCache"));
  reinterpret_cast<void(WINAPI*)()>(function)();
}

LPVOID WINAPI Allocate(HANDLE heap, DWORD flags, SIZE_T size) {
  void* const block = HeapAlloc(heap, flags, size);
  if (block != nullptr) SeeAllocated();
  return block;
}

BOOL WINAPI Free(HANDLE heap, DWORD flags, LPVOID block) {
  if (block == nullptr) return TRUE;
  const SIZE_T size = HeapSize(heap, flags, block);
  SeeFreed(block, size);
  std::memset(block, 0xDD, size);
  // So that the compiler does not drop the overwriting of memory that dies.
  __asm__ volatile("" : : "r"(block) : "memory");
  return HeapFree(heap, flags, block);
}

LPVOID WINAPI Resize(HANDLE heap, DWORD flags, LPVOID block, SIZE_T size) {
  if (block == nullptr || (flags & HEAP_REALLOC_IN_PLACE_ONLY) != 0) {
    return HeapReAlloc(heap, flags, block, size);
  }
  void* const moved = Allocate(heap, flags, size);
  if (moved == nullptr) return nullptr;
  const SIZE_T before = HeapSize(heap, 0, block);
  std::memcpy(moved, block, before < size ? before : size);
  Free(heap, 0, block);
  return moved;
}

// Whose blocks the program frees, or the other way round.
constexpr const OLECHAR* kModules[] = {OLESTR("msvcrt.dll"), OLESTR("ucrtbase.dll"),
                                       OLESTR("ole32.dll"), OLESTR("combase.dll"),
                                       OLESTR("oleaut32.dll")};

void Watch(HMODULE module) {
  ReplaceImportOf(module, "HeapAlloc", reinterpret_cast<void*>(Allocate));
  ReplaceImportOf(module, "HeapReAlloc", reinterpret_cast<void*>(Resize));
  ReplaceImportOf(module, "HeapFree", reinterpret_cast<void*>(Free));
}

[[maybe_unused]] const bool watched = [] {
  FreeTexts();
  for (const OLECHAR* const name : kModules) {
    const HMODULE module = GetModuleHandleW(name);
    if (module != nullptr) Watch(module);
  }
  return true;
}();

}  // namespace

}  // namespace mirolta::test
