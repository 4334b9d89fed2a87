// Memory that can be a stack, and calls on it.
#pragma once

#include <cstddef>

namespace mirolta::test {

// NewStack returns stack[size]; the program ends if there is no memory.
unsigned char* NewStack(size_t size);
void DeleteStack(unsigned char* stack, size_t size);

// RunOnStack calls a function on stack[size] and returns when it returns.
void RunOnStack(unsigned char* stack, size_t size, void (*function)());

}  // namespace mirolta::test
