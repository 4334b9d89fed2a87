#include "seam/wiped_work.h"

#include "seam/memory.h"

#if defined(__x86_64__) || defined(__i386__)
  #include <cpuid.h>
#endif

namespace mirolta {

namespace {

// A frame that the compiler makes as it stands, without a guard.
#define MIROLTA_OWN_FRAME __attribute__((noinline, no_stack_protector))

// Sizes of the parts of the stack. Without optimisation frames are much larger.
#if defined(__OPTIMIZE__)
constexpr size_t kFrameScale = 1;
#else
constexpr size_t kFrameScale = 6;
#endif
constexpr size_t kShortBytes = kFrameScale * 3072;
constexpr size_t kMediumBytes = kFrameScale * 6144;
constexpr size_t kDeepBytes = kFrameScale * 24576;

// A function that has an array at the end of its frame does not reach what lies before it: return
// address, saved registers, alignment.
constexpr size_t kBeforeArray = 96;

// Its frame lies where the overwriting function's reaches nothing.
MIROLTA_OWN_FRAME HRESULT RunDeeper(HRESULT (*function)(void* context), void* context) noexcept {
  unsigned char unused[kBeforeArray];
  // The compiler must neither leave the array out nor see through the function.
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

// By the processor alone, not by the kernels in use: the C library's copying uses what there is.
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

#define MIROLTA_CLEAR(n) "xorps %%xmm" #n ", %%xmm" #n "\n\t"
#define MIROLTA_CLEAR_WIDE(n) "vpxord %%zmm" #n ", %%zmm" #n ", %%zmm" #n "\n\t"
#define MIROLTA_CLEAR_MASK(n) "kxorw %%k" #n ", %%k" #n ", %%k" #n "\n\t"

// Clears the vector, mask and general registers that are lost in a call.
__attribute__((always_inline)) inline void ClearRegisters() noexcept {
  static const VectorRegisters widest = WidestVectorRegisters();
  if (widest == VectorRegisters::kAvx512) {
    __asm__ __volatile__(
        MIROLTA_CLEAR_MASK(0) MIROLTA_CLEAR_MASK(1) MIROLTA_CLEAR_MASK(2) MIROLTA_CLEAR_MASK(3)
            MIROLTA_CLEAR_MASK(4) MIROLTA_CLEAR_MASK(5) MIROLTA_CLEAR_MASK(6) MIROLTA_CLEAR_MASK(7)
#if defined(__x86_64__)
                MIROLTA_CLEAR_WIDE(16) MIROLTA_CLEAR_WIDE(17) MIROLTA_CLEAR_WIDE(18)
                    MIROLTA_CLEAR_WIDE(19) MIROLTA_CLEAR_WIDE(20) MIROLTA_CLEAR_WIDE(21)
                        MIROLTA_CLEAR_WIDE(22) MIROLTA_CLEAR_WIDE(23) MIROLTA_CLEAR_WIDE(24)
                            MIROLTA_CLEAR_WIDE(25) MIROLTA_CLEAR_WIDE(26) MIROLTA_CLEAR_WIDE(27)
                                MIROLTA_CLEAR_WIDE(28) MIROLTA_CLEAR_WIDE(29)
                                    MIROLTA_CLEAR_WIDE(30) MIROLTA_CLEAR_WIDE(31)
#endif
        :);
  }
#if defined(_WIN64)
  // The callee keeps the low halves of registers 6 to 15.
  if (widest >= VectorRegisters::kAvx) __asm__ __volatile__("vzeroupper");
  __asm__ __volatile__(MIROLTA_CLEAR(0) MIROLTA_CLEAR(1) MIROLTA_CLEAR(2) MIROLTA_CLEAR(3)
                           MIROLTA_CLEAR(4) MIROLTA_CLEAR(5)
                       :
                       :
                       : "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5");
  __asm__ __volatile__(
      "xorl %%eax, %%eax; xorl %%ecx, %%ecx; xorl %%edx, %%edx; xorl %%r8d, %%r8d\n\t"
      "xorl %%r9d, %%r9d; xorl %%r10d, %%r10d; xorl %%r11d, %%r11d"
      :
      :
      : "rax", "rcx", "rdx", "r8", "r9", "r10", "r11", "cc");
#elif defined(__x86_64__)
  if (widest >= VectorRegisters::kAvx) {
    __asm__ __volatile__("vzeroall"
                         :
                         :
                         : "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7", "xmm8",
                           "xmm9", "xmm10", "xmm11", "xmm12", "xmm13", "xmm14", "xmm15");
  } else {
    __asm__ __volatile__(
        MIROLTA_CLEAR(0) MIROLTA_CLEAR(1) MIROLTA_CLEAR(2) MIROLTA_CLEAR(3) MIROLTA_CLEAR(4)
            MIROLTA_CLEAR(5) MIROLTA_CLEAR(6) MIROLTA_CLEAR(7) MIROLTA_CLEAR(8) MIROLTA_CLEAR(9)
                MIROLTA_CLEAR(10) MIROLTA_CLEAR(11) MIROLTA_CLEAR(12) MIROLTA_CLEAR(13)
                    MIROLTA_CLEAR(14) MIROLTA_CLEAR(15)
        :
        :
        : "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7", "xmm8", "xmm9", "xmm10",
          "xmm11", "xmm12", "xmm13", "xmm14", "xmm15");
  }
  __asm__ __volatile__(
      "xorl %%eax, %%eax; xorl %%ecx, %%ecx; xorl %%edx, %%edx; xorl %%esi, %%esi\n\t"
      "xorl %%edi, %%edi; xorl %%r8d, %%r8d; xorl %%r9d, %%r9d; xorl %%r10d, %%r10d\n\t"
      "xorl %%r11d, %%r11d"
      :
      :
      : "rax", "rcx", "rdx", "rsi", "rdi", "r8", "r9", "r10", "r11", "cc");
#else
  // Code for this processor uses no vector registers by itself, so none is named as changed.
  if (widest >= VectorRegisters::kAvx) {
    __asm__ __volatile__("vzeroall");
  } else if (widest == VectorRegisters::kSse) {
    __asm__ __volatile__(MIROLTA_CLEAR(0) MIROLTA_CLEAR(1) MIROLTA_CLEAR(2) MIROLTA_CLEAR(3)
                             MIROLTA_CLEAR(4) MIROLTA_CLEAR(5) MIROLTA_CLEAR(6) MIROLTA_CLEAR(7)
                         :);
  }
  __asm__ __volatile__("xorl %%eax, %%eax; xorl %%ecx, %%ecx; xorl %%edx, %%edx"
                       :
                       :
                       : "eax", "ecx", "edx", "cc");
#endif
}

#else

// Other processors' registers are left as they are: the next call's work takes their place.
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
