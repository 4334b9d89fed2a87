// Memory that only a watch of the test looks at.
#pragma once

namespace mirolta::test {

// Used keeps the compiler from removing an allocation, and the writes to it, as unused.
inline void Used(const void* memory) {
  __asm__ volatile("" : : "r"(memory) : "memory");
}

}  // namespace mirolta::test
