// What the language's library allocates comes from where the module's operators free it.
#include <cstdlib>
#include <new>

#include "platform.h"

void* operator new(size_t size) {
  void* const memory = HeapAlloc(GetProcessHeap(), 0, size);
  if (memory == nullptr) std::abort();
  return memory;
}
void* operator new[](size_t size) {
  return operator new(size);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  operator delete(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  operator delete[](memory);
}
