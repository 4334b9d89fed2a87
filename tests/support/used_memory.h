// Memory that a test makes for a watch to see.
#pragma once

namespace mirolta::test {

// Used tells the compiler that somebody looks at the memory: it may leave out an allocation, and
// what is written there, that nobody does.
inline void Used(const void* memory) {
  __asm__ volatile("" : : "r"(memory) : "memory");
}

}  // namespace mirolta::test
