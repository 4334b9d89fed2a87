// Heaps, bytes and texts of the base library. A heap of the device has one size of header, so a
// block of one heap may be freed into another here; the C library's heap stands for all.
#include <cstdlib>
#include <cstring>

#include "platform.h"
#include "system/system_library.h"

namespace mirolta::loader {
namespace {

constexpr DWORD kZeroed = 0x00000008;      // HEAP_ZERO_MEMORY
constexpr UINT kLocalZeroed = 0x00000040;  // LMEM_ZEROINIT
void* const kHeap = reinterpret_cast<void*>(uintptr_t{0x48454150});

void* GetProcessHeap() {
  return kHeap;
}
// A heap that is not the process's is a mistake of the caller.
void* HeapAlloc(void* heap, DWORD flags, SIZE_T size) {
  if (heap != kHeap) return nullptr;
  return (flags & kZeroed) != 0 ? std::calloc(1, size) : std::malloc(size);
}
INT HeapFree(void* heap, DWORD, void* memory) {
  if (heap != kHeap) return FALSE;
  std::free(memory);
  return TRUE;
}
void* LocalAlloc(UINT flags, UINT size) {
  return (flags & kLocalZeroed) != 0 ? std::calloc(1, size) : std::malloc(size);
}
void* LocalFree(void* memory) {
  std::free(memory);
  return nullptr;
}

// The device's wide characters have 16 bits, the C library's 32.
UINT WideLength(LPCWSTR text) {
  UINT length = 0;
  while (text[length] != 0) ++length;
  return length;
}

}  // namespace

std::span<const SystemFunction> MemoryFunctions() {
  static const SystemFunction functions[] = {
      Function("GetProcessHeap", GetProcessHeap),
      Function("HeapAlloc", HeapAlloc),
      Function("HeapFree", HeapFree),
      Function("LocalAlloc", LocalAlloc),
      Function("LocalFree", LocalFree),
      Function("calloc", std::calloc),
      Function("free", std::free),
      Function("malloc", std::malloc),
      Function("memcmp", std::memcmp),
      Function("memcpy", std::memcpy),
      Function("memmove", std::memmove),
      Function("memset", std::memset),
      Function("realloc", std::realloc),
      Function("strlen", std::strlen),
      Function("wcslen", WideLength),
  };
  return functions;
}

}  // namespace mirolta::loader
