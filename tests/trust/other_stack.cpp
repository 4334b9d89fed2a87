#include "other_stack.h"

#include <sys/mman.h>
#include <ucontext.h>

#include <cstdlib>

namespace mirolta::test {

unsigned char* NewStack(size_t size) {
  void* const memory = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) std::abort();
  return static_cast<unsigned char*>(memory);
}

void DeleteStack(unsigned char* stack, size_t size) {
  munmap(stack, size);
}

void RunOnStack(unsigned char* stack, size_t size, void (*function)()) {
  ucontext_t caller;
  ucontext_t callee;
  if (getcontext(&callee) != 0) std::abort();
  callee.uc_stack.ss_sp = stack;
  callee.uc_stack.ss_size = size;
  callee.uc_link = &caller;
  makecontext(&callee, function, 0);
  if (swapcontext(&caller, &callee) != 0) std::abort();
}

}  // namespace mirolta::test
