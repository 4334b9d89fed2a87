// The module's allocations, from the process heap. The language library's operators throw, and
// exception support is larger than the module.
#include <new>

#include "platform.h"

void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return HeapAlloc(GetProcessHeap(), 0, size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return HeapAlloc(GetProcessHeap(), 0, size);
}
// HeapFree ignores a null pointer.
void operator delete(void* memory) noexcept {
  HeapFree(GetProcessHeap(), 0, memory);
}
void operator delete[](void* memory) noexcept {
  HeapFree(GetProcessHeap(), 0, memory);
}
void operator delete(void* memory, size_t) noexcept {
  HeapFree(GetProcessHeap(), 0, memory);
}
void operator delete[](void* memory, size_t) noexcept {
  HeapFree(GetProcessHeap(), 0, memory);
}
