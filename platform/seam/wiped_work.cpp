#include "seam/wiped_work.h"

#include "seam/architecture.h"
#include "seam/memory.h"
#include "seam/small_stack.h"

#if defined(__x86_64__) || defined(__i386__)
  #include <cpuid.h>
#elif MIROLTA_KERNELS_FOR(ARMV7)
  #include <sys/auxv.h>
#endif

namespace mirolta {

namespace {

// A frame of its own, without a stack canary.
#define MIROLTA_OWN_FRAME __attribute__((noinline, no_stack_protector))

// Sizes of the parts of the stack, for optimised builds. Those of a small stack are compared with the
// computed use of every call (scripts/budget/stack_rules.txt).
constexpr size_t kShortBytes = kSmallStack ? 1280 : 2048;
constexpr size_t kMediumBytes = kSmallStack ? 3072 : 6144;
constexpr size_t kDeepBytes = kSmallStack ? 3072 : 24576;

// What a frame holds beside its array (return address, saved registers, alignment) is not
// overwritten.
constexpr size_t kBeforeArray = 96;

// Moves the frame of `function` below what Overwrite does not reach.
MIROLTA_OWN_FRAME HRESULT RunDeeper(HRESULT (*function)(void* context), void* context) noexcept {
  unsigned char unused[kBeforeArray];
  // Keeps the compiler from removing the array and from inlining the call.
  __asm__ __volatile__("" : "+r"(function) : "r"(unused) : "memory");
  const HRESULT status = function(context);
  __asm__ __volatile__("" : : "r"(unused) : "memory");
  return status;
}

template <size_t kBytes>
MIROLTA_OWN_FRAME void Overwrite() noexcept {
  unsigned char area[kBytes];
  WipeMemory(area, sizeof area);
}

#if defined(__x86_64__) || defined(__i386__)

enum class VectorRegisters : uint8_t { kNone, kSse, kAvx, kAvx512 };

// By the processor, not by the kernels in use: memcpy uses the widest registers there are.
VectorRegisters WidestVectorRegisters() noexcept {
  uint32_t a = 0, b = 0, c = 0, d = 0;
  if (!__get_cpuid(1, &a, &b, &c, &d) || (d & bit_SSE) == 0) return VectorRegisters::kNone;
  if ((c & bit_OSXSAVE) == 0 || (c & bit_AVX) == 0) return VectorRegisters::kSse;
  uint32_t saved = 0;
  __asm__ __volatile__("xgetbv" : "=a"(saved), "=d"(d) : "c"(0u));
  if ((saved & 0x06) != 0x06) return VectorRegisters::kSse;
  const bool has_leaf7 = __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0;
  const bool has_avx512 = has_leaf7 && (b & bit_AVX512F) != 0 && (saved & 0xE6) == 0xE6;
  return has_avx512 ? VectorRegisters::kAvx512 : VectorRegisters::kAvx;
}

// Clears the vector, mask and general registers that a call need not preserve, as the calling
// convention lists them. Registers that the compiler does not know in this build need no clobber.
__attribute__((always_inline)) inline void ClearRegisters() noexcept {
  static const VectorRegisters widest = WidestVectorRegisters();
  if (widest == VectorRegisters::kAvx512) {
    __asm__ __volatile__(
        ".irp n,0,1,2,3,4,5,6,7\n\t"
        "kxorw %%k\\n, %%k\\n, %%k\\n\n\t"
        ".endr\n\t"
  #if defined(__x86_64__)
        ".irp n,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31\n\t"
        "vpxord %%zmm\\n, %%zmm\\n, %%zmm\\n\n\t"
        ".endr"
  #endif
        :);
  }
  // First the upper halves: SSE instructions are slow while they are in use.
  if (widest >= VectorRegisters::kAvx) __asm__ __volatile__("vzeroupper");
  #if defined(_WIN64)
  __asm__ __volatile__(
      ".irp n,0,1,2,3,4,5\n\t"
      "xorps %%xmm\\n, %%xmm\\n\n\t"
      ".endr\n\t"
      "xorl %%eax, %%eax; xorl %%ecx, %%ecx; xorl %%edx, %%edx; xorl %%r8d, %%r8d\n\t"
      "xorl %%r9d, %%r9d; xorl %%r10d, %%r10d; xorl %%r11d, %%r11d"
      :
      :
      : "rax", "rcx", "rdx", "r8", "r9", "r10", "r11", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4",
        "xmm5", "cc");
  #elif defined(__x86_64__)
  __asm__ __volatile__(
      ".irp n,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15\n\t"
      "xorps %%xmm\\n, %%xmm\\n\n\t"
      ".endr\n\t"
      "xorl %%eax, %%eax; xorl %%ecx, %%ecx; xorl %%edx, %%edx; xorl %%esi, %%esi\n\t"
      "xorl %%edi, %%edi; xorl %%r8d, %%r8d; xorl %%r9d, %%r9d; xorl %%r10d, %%r10d\n\t"
      "xorl %%r11d, %%r11d"
      :
      :
      : "rax", "rcx", "rdx", "rsi", "rdi", "r8", "r9", "r10", "r11", "xmm0", "xmm1", "xmm2", "xmm3",
        "xmm4", "xmm5", "xmm6", "xmm7", "xmm8", "xmm9", "xmm10", "xmm11", "xmm12", "xmm13", "xmm14",
        "xmm15", "cc");
  #else
  if (widest >= VectorRegisters::kSse) {
    __asm__ __volatile__(
        ".irp n,0,1,2,3,4,5,6,7\n\t"
        "xorps %%xmm\\n, %%xmm\\n\n\t"
        ".endr"
        :);
  }
  __asm__ __volatile__("xorl %%eax, %%eax; xorl %%ecx, %%ecx; xorl %%edx, %%edx"
                       :
                       :
                       : "eax", "ecx", "edx", "cc");
  #endif
}

#elif defined(__aarch64__)

// Clears the vector and general registers that a call need not preserve. Of v8 to v15 it preserves
// the lower halves. x18 is the system's on Windows.
__attribute__((always_inline)) inline void ClearRegisters() noexcept {
  __asm__ __volatile__(
      ".irp n,0,1,2,3,4,5,6,7,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31\n\t"
      "movi v\\n\\().16b, #0\n\t"
      ".endr\n\t"
      ".irp n,8,9,10,11,12,13,14,15\n\t"
      "mov v\\n\\().d[1], xzr\n\t"
      ".endr\n\t"
      ".irp n,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17\n\t"
      "mov x\\n, xzr\n\t"
      ".endr"
      :
      :
      : "x0", "x1", "x2", "x3", "x4", "x5", "x6", "x7", "x8", "x9", "x10", "x11", "x12", "x13",
        "x14", "x15", "x16", "x17", "v0", "v1", "v2", "v3", "v4", "v5", "v6", "v7", "v16", "v17",
        "v18", "v19", "v20", "v21", "v22", "v23", "v24", "v25", "v26", "v27", "v28", "v29", "v30",
        "v31", "cc");
}

#elif MIROLTA_KERNELS_FOR(ARMV7)

// Clears the general and vector registers that a call need not preserve. With NEON memcpy uses these too.
__attribute__((always_inline)) inline void ClearRegisters() noexcept {
  constexpr unsigned long kCapabilityNeon = 1u << 12;  // of Linux
  static const bool has_neon = (getauxval(AT_HWCAP) & kCapabilityNeon) != 0;
  if (has_neon) {
    // No repetition: the compiler counts instructions, for its branches. It need not know d16 to d31.
    __asm__ __volatile__(
        ".fpu neon\n\t"
        "vmov.i32 q0, #0; vmov.i32 q1, #0; vmov.i32 q2, #0; vmov.i32 q3, #0\n\t"
        "vmov.i32 q8, #0; vmov.i32 q9, #0; vmov.i32 q10, #0; vmov.i32 q11, #0\n\t"
        "vmov.i32 q12, #0; vmov.i32 q13, #0; vmov.i32 q14, #0; vmov.i32 q15, #0"
        :
        :
        : "d0", "d1", "d2", "d3", "d4", "d5", "d6", "d7");
  }
  __asm__ __volatile__("mov r0, #0; mov r1, #0; mov r2, #0; mov r3, #0; mov r12, #0"
                       :
                       :
                       : "r0", "r1", "r2", "r3", "r12");
}

#else

// Registers of other processors are not cleared; later calls overwrite them.
inline void ClearRegisters() noexcept {}

#endif

}  // namespace

MIROLTA_OWN_FRAME HRESULT RunWiped(HRESULT (*function)(void* context), void* context,
                                   const StackUse* use) noexcept {
  const HRESULT status = RunDeeper(function, context);
  switch (*use) {
    case StackUse::kShort:
      Overwrite<kShortBytes>();
      break;
    case StackUse::kMedium:
      Overwrite<kMediumBytes>();
      break;
    case StackUse::kDeep:
      Overwrite<kDeepBytes>();
      break;
  }
  ClearRegisters();
  return status;
}

}  // namespace mirolta
