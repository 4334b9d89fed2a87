// The runtime's memory: every text, array, object and task block comes from here, so that tests can
// make any one allocation fail.
#pragma once

#include <cstddef>
#include <new>
#include <utility>

namespace mirolta::runtime {

// AllocateRuntime returns `size` bytes aligned for any type, never null for size 0.
// Errors: null if memory is short or the failing-allocation hook says so.
void* AllocateRuntime(size_t size);

// ReallocateRuntime moves `memory` (null: a new block) to a block of `size` bytes.
// Errors: null; `memory` is then untouched and still owned by the caller.
void* ReallocateRuntime(void* memory, size_t size);

void FreeRuntime(void* memory);  // null does nothing

// NewRuntime makes an object in runtime memory; null if there is none. DeleteRuntime ends it.
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

}  // namespace mirolta::runtime
