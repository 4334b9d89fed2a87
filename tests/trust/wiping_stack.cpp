#include "wiping_stack.h"

#include <cstdint>
#include <cstring>

#include "other_stack.h"

namespace mirolta::test {
namespace {

// The code below knows them by their offsets.
struct Call {
  void (*function)(void*);
  void* context;
  unsigned char* registers;
  intptr_t vector_level;
};

const Call* current = nullptr;

#if defined(__x86_64__) || defined(__i386__)
// -1: no vector registers, which a 32-bit processor may lack; 0: SSE2; 1: AVX; 2: AVX-512.
intptr_t VectorLevel() {
  if (__builtin_cpu_supports("avx512bw")) return 2;
  if (__builtin_cpu_supports("avx")) return 1;
  return __builtin_cpu_supports("sse2") ? 0 : -1;
}
#else
intptr_t VectorLevel() {
  return -1;
}
#endif

#if defined(__x86_64__)

  #ifdef _WIN32
    #define MIROLTA_TAKE_CONTEXT "movq 8(%%rbx), %%rcx\n\t"
  #else
    #define MIROLTA_TAKE_CONTEXT "movq 8(%%rbx), %%rdi\n\t"
  #endif

// Everything between the call and the stores is one piece, so that nothing comes in between.
void CallAndKeepRegisters(const Call& call) {
  const Call* parameters = &call;
  __asm__ volatile(
      "xorl %%esi, %%esi; xorl %%edi, %%edi\n\t"
      "movq (%%rbx), %%r12\n\t" MIROLTA_TAKE_CONTEXT
      "movq 24(%%rbx), %%r14\n\t"
      "movq 16(%%rbx), %%rbx\n\t"
      "movq %%rsp, %%r13\n\t"
      "subq $256, %%rsp\n\t"
      "andq $-64, %%rsp\n\t"
      ".irp n,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15\n\t"
      "xorps %%xmm\\n, %%xmm\\n\n\t"
      ".endr\n\t"
      "cmpq $1, %%r14; jl 1f\n\t"
      "vzeroall\n\t"
      "je 1f\n\t"
      ".irp n,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31\n\t"
      "vpxorq %%zmm\\n, %%zmm\\n, %%zmm\\n\n\t"
      ".endr\n\t"
      ".irp n,1,2,3,4,5,6,7\n\t"
      "kxorq %%k\\n, %%k\\n, %%k\\n\n\t"
      ".endr\n"
      "1:\n\t"
      "call *%%r12\n\t"
      "movq %%rax, (%%rbx); movq %%rcx, 8(%%rbx); movq %%rdx, 16(%%rbx)\n\t"
      "movq %%rsi, 24(%%rbx); movq %%rdi, 32(%%rbx); movq %%r8, 40(%%rbx)\n\t"
      "movq %%r9, 48(%%rbx); movq %%r10, 56(%%rbx); movq %%r11, 64(%%rbx)\n\t"
      "leaq 192(%%rbx), %%rax\n\t"
      "cmpq $1, %%r14; jg 3f; je 2f\n\t"
      ".irp n,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15\n\t"
      "movups %%xmm\\n, \\n*64(%%rax)\n\t"
      ".endr\n\t"
      "jmp 4f\n"
      "2:\n\t"
      ".irp n,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15\n\t"
      "vmovdqu %%ymm\\n, \\n*64(%%rax)\n\t"
      ".endr\n\t"
      "jmp 4f\n"
      "3:\n\t"
      ".irp n,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,"
      "31\n\t"
      "vmovdqu64 %%zmm\\n, \\n*64(%%rax)\n\t"
      ".endr\n\t"
      ".irp n,0,1,2,3,4,5,6,7\n\t"
      "kmovq %%k\\n, 128+\\n*8(%%rbx)\n\t"
      ".endr\n"
      "4:\n\t"
      "movq %%r13, %%rsp"
      : "+b"(parameters)
      :
      : "rax", "rcx", "rdx", "rsi", "rdi", "r8", "r9", "r10", "r11", "r12", "r13", "r14", "memory",
        "cc", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7", "xmm8", "xmm9",
        "xmm10", "xmm11", "xmm12", "xmm13", "xmm14", "xmm15");
}

#elif defined(__i386__)

void CallAndKeepRegisters(const Call& call) {
  const Call* parameters = &call;
  __asm__ volatile(
      "movl 8(%%esi), %%ebx\n\t"
      "movl 12(%%esi), %%edi\n\t"
      "pushl %%ebp\n\t"
      "movl %%esp, %%ebp\n\t"
      "subl $256, %%esp\n\t"
      "andl $-64, %%esp\n\t"
      "movl 4(%%esi), %%eax\n\t"
      "movl %%eax, (%%esp)\n\t"
      "call *(%%esi)\n\t"
      "movl %%eax, (%%ebx); movl %%ecx, 4(%%ebx); movl %%edx, 8(%%ebx)\n\t"
      "leal 192(%%ebx), %%eax\n\t"
      "cmpl $0, %%edi; jl 4f\n\t"
      "cmpl $1, %%edi; jg 3f; je 2f\n\t"
      ".irp n,0,1,2,3,4,5,6,7\n\t"
      "movups %%xmm\\n, \\n*64(%%eax)\n\t"
      ".endr\n\t"
      "jmp 4f\n"
      "2:\n\t"
      ".irp n,0,1,2,3,4,5,6,7\n\t"
      "vmovdqu %%ymm\\n, \\n*64(%%eax)\n\t"
      ".endr\n\t"
      "jmp 4f\n"
      "3:\n\t"
      ".irp n,0,1,2,3,4,5,6,7\n\t"
      "vmovdqu64 %%zmm\\n, \\n*64(%%eax)\n\t"
      ".endr\n\t"
      ".irp n,0,1,2,3,4,5,6,7\n\t"
      "kmovq %%k\\n, 128+\\n*8(%%ebx)\n\t"
      ".endr\n"
      "4:\n\t"
      "movl %%ebp, %%esp\n\t"
      "popl %%ebp"
      : "+S"(parameters)
      :
      : "eax", "ebx", "ecx", "edx", "edi", "memory", "cc");
}

#else

void CallAndKeepRegisters(const Call& call) {
  call.function(call.context);
}

#endif

void Enter() {
  CallAndKeepRegisters(*current);
}

}  // namespace

PaintedStack::PaintedStack() {
  bottom_ = NewStack(kSize);
  top_ = bottom_ + kSize;
  std::memset(bottom_, kPaint, kSize);
  touched_ = bottom_;
}

PaintedStack::~PaintedStack() {
  DeleteStack(bottom_, kSize);
}

bool PaintedStack::KeepsRegisters() {
#if defined(__x86_64__) || defined(__i386__)
  return true;
#else
  return false;
#endif
}

void PaintedStack::Run(void (*function)(void*), void* context) {
  // Only what the last call wrote to has lost its paint.
  std::memset(touched_, kPaint, TouchedBytes());
  std::memset(registers_, 0, sizeof registers_);
  const Call call = {.function = function,
                     .context = context,
                     .registers = registers_,
                     .vector_level = VectorLevel()};
  current = &call;
  RunOnStack(bottom_, kSize, Enter);
  uint64_t paint = 0;
  uint64_t eight = 0;
  std::memset(&paint, kPaint, sizeof paint);
  for (touched_ = bottom_; touched_ != top_; touched_ += sizeof eight) {
    std::memcpy(&eight, touched_, sizeof eight);
    if (eight != paint) break;
  }
}

size_t PaintedStack::DirtyBytes(size_t depth) const {
  size_t count = 0;
  for (const unsigned char* byte = touched_ + kLastCall; byte < top_ - depth; ++byte) {
    count += *byte != 0 && *byte != kPaint ? 1 : 0;
  }
  return count;
}

}  // namespace mirolta::test
