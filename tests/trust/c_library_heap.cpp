// The C library's heap as trust_heap.h watches it: the program's malloc and free stand before the library's.
#include <malloc.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "heap_watch.h"
#include "searched_memory.h"

#if defined(__SANITIZE_ADDRESS__)
  #define TRUST_HEAP_OF_SANITIZER 1
#elif defined(__has_feature)
  #if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer)
    #define TRUST_HEAP_OF_SANITIZER 1
  #endif
#endif

#ifdef TRUST_HEAP_OF_SANITIZER

namespace mirolta::test {

extern "C" {
int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*, size_t),
                                              void (*freeing)(const volatile void*));
size_t __sanitizer_get_allocated_size(const volatile void* block);
}

namespace {

void CountBlock(const volatile void* /*block*/, size_t /*size*/) {
  SeeAllocated();
}

void SearchFreedBlock(const volatile void* block) {
  // MemorySanitizer does not mark the arguments that it passes as written.
  TakeAsWritten(&block, sizeof block);
  if (block == nullptr) return;
  SeeFreed(const_cast<void*>(block), __sanitizer_get_allocated_size(block));
}

[[maybe_unused]] const int hooks =
    __sanitizer_install_malloc_and_free_hooks(CountBlock, SearchFreedBlock);

}  // namespace
}  // namespace mirolta::test

#else

// The program's own doors before the C library's. What is freed is overwritten, so that a new
// block never shows what an older one held.
extern "C" {

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void __libc_free(void* block);

__attribute__((visibility("default"))) void* malloc(size_t size) {
  void* const block = __libc_malloc(size);
  if (block != nullptr) mirolta::test::SeeAllocated();
  return block;
}

__attribute__((visibility("default"))) void* calloc(size_t count, size_t size) {
  void* const block = __libc_calloc(count, size);
  if (block != nullptr) mirolta::test::SeeAllocated();
  return block;
}

__attribute__((visibility("default"))) void free(void* block) {
  if (block == nullptr) return;
  const int error = errno;
  const size_t size = malloc_usable_size(block);
  mirolta::test::SeeFreed(block, size);
  std::memset(block, 0xDD, size);
  // So that the compiler does not drop the overwriting of memory that dies.
  __asm__ volatile("" : : "r"(block) : "memory");
  __libc_free(block);
  errno = error;
}

__attribute__((visibility("default"))) void* realloc(void* block, size_t size) {
  if (block == nullptr) return malloc(size);
  if (size == 0) {
    free(block);
    return nullptr;
  }
  void* const moved = malloc(size);
  if (moved == nullptr) return nullptr;
  const size_t before = malloc_usable_size(block);
  std::memcpy(moved, block, before < size ? before : size);
  free(block);
  return moved;
}
}

#endif
