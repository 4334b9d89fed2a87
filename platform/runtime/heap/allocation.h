// The runtime's allocator. Every text, array, object and task block comes from it, so that tests
// can make any single allocation fail.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <utility>

namespace mirolta::runtime {

// AllocateRuntime allocates `size` bytes, aligned for any type; size 0 is a block too.
// Errors: null if memory is short or a test hook fails the allocation.
void* AllocateRuntime(size_t size);

// ReallocateRuntime resizes `memory`, which may move; null is allocated.
// Errors: null; `memory` is then unchanged and still owned by the caller.
void* ReallocateRuntime(void* memory, size_t size);

void FreeRuntime(void* memory);  // null does nothing

// NewRuntime constructs an object in runtime memory; DeleteRuntime destroys and frees it.
// Errors: null if memory is short.
template <class T, class... Arguments>
T* NewRuntime(Arguments&&... arguments) {
  void* memory = AllocateRuntime(sizeof(T));
  return memory == nullptr ? nullptr : ::new (memory) T(std::forward<Arguments>(arguments)...);
}
template <class T>
void DeleteRuntime(T* object) {
  if (object == nullptr) return;
  object->~T();
  FreeRuntime(object);
}

// RuntimeOwner owns an object made by NewRuntime.
struct RuntimeDeleter {
  template <class T>
  void operator()(T* object) const {
    DeleteRuntime(object);
  }
};
template <class T>
using RuntimeOwner = std::unique_ptr<T, RuntimeDeleter>;

}  // namespace mirolta::runtime
