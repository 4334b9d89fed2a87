// Memory that a test searches for secrets, though nothing may have written all of it.
#pragma once

#include <cstddef>

#if defined(__has_feature)
  #if __has_feature(memory_sanitizer)
    #include <sanitizer/msan_interface.h>
    #define MIROLTA_TEST_BY_MEMORY_SANITIZER 1
  #endif
#endif

namespace mirolta::test {

// From here on the MemorySanitizer takes memory[size] as written: it would report the search.
inline void TakeAsWritten([[maybe_unused]] const void* memory, [[maybe_unused]] size_t size) {
#ifdef MIROLTA_TEST_BY_MEMORY_SANITIZER
  __msan_unpoison(memory, size);
#endif
}

}  // namespace mirolta::test
