#include "other_stack.h"

#include <cstdlib>

#include "platform.h"

namespace mirolta::test {

namespace {

#if defined(__x86_64__)

// The 32 bytes belong to the function that is called.
void CallOn(void* top, void (*function)()) {
  __asm__ volatile(
      "movq %%rsp, %%rbx\n\t"
      "leaq -32(%%rax), %%rsp\n\t"
      "call *%%rcx\n\t"
      "movq %%rbx, %%rsp"
      : "+a"(top), "+c"(function)
      :
      : "rbx", "rdx", "r8", "r9", "r10", "r11", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5",
        "memory", "cc");
}

#else

void CallOn(void* top, void (*function)()) {
  __asm__ volatile(
      "movl %%esp, %%ebx\n\t"
      "movl %%eax, %%esp\n\t"
      "call *%%ecx\n\t"
      "movl %%ebx, %%esp"
      : "+a"(top), "+c"(function)
      :
      : "ebx", "edx", "memory", "cc");
}

#endif

}  // namespace

unsigned char* NewStack(size_t size) {
  void* const memory = VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
  if (memory == nullptr) std::abort();
  return static_cast<unsigned char*>(memory);
}

void DeleteStack(unsigned char* stack, size_t) {
  VirtualFree(stack, 0, MEM_RELEASE);
}

// The system finds handlers of exceptions on the thread's stack only, and of 32-bit programs by a list of
// frames on it, which ends here.
void RunOnStack(unsigned char* stack, size_t size, void (*function)()) {
  NT_TIB* const thread = reinterpret_cast<NT_TIB*>(NtCurrentTeb());
  const NT_TIB own = *thread;
  thread->StackBase = stack + size;
  thread->StackLimit = stack;
  thread->ExceptionList = reinterpret_cast<decltype(thread->ExceptionList)>(~ULONG_PTR{0});
  CallOn(stack + size, function);
  thread->ExceptionList = own.ExceptionList;
  thread->StackLimit = own.StackLimit;
  thread->StackBase = own.StackBase;
}

}  // namespace mirolta::test
