#include "seam/wiped_work.h"

#include "seam/memory.h"

#if defined(__x86_64__) || defined(__i386__)
  #include <cpuid.h>
#endif

namespace mirolta {

namespace {

// A frame of its own, without a stack canary.
#define MIROLTA_OWN_FRAME __attribute__((noinline, no_stack_protector))

// Sizes of the parts of the stack, for optimised builds.
constexpr size_t kShortBytes = 2048;
constexpr size_t kMediumBytes = 6144;
constexpr size_t kDeepBytes = 24576;

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

#else

// Registers of other processors are not cleared; later calls overwrite them.
inline void ClearRegisters() noexcept {}

#endif

}  // namespace

MIROLTA_OWN_FRAME HRESULT RunWiped(HRESULT (*function)(void* context), void* context,
                                   const StackUse* use) noexcept {
  const HRESULT status = RunDeeper(function, context);
  if (*use == StackUse::kShort) {
    Overwrite<kShortBytes>();
  } else if (*use == StackUse::kMedium) {
    Overwrite<kMediumBytes>();
  } else {
    Overwrite<kDeepBytes>();
  }
  ClearRegisters();
  return status;
}

}  // namespace mirolta
