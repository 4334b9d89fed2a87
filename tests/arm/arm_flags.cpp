// What the flags of the ARM builds are, seen by the compiler: the processor, no unaligned access on 32
// bits, and plain char without a sign, as the ABI has it.
#include <climits>

static_assert(__ARM_ARCH == MIROLTA_ARM_VERSION);
static_assert(CHAR_MIN == 0);
#if MIROLTA_ARM_VERSION < 8 && defined(__ARM_FEATURE_UNALIGNED)
  #error "The compiler may access words that are not aligned."
#endif
#if MIROLTA_ARM_VERSION == 5 && (defined(__ARM_FP) || defined(__thumb__))
  #error "Not the instructions of an ARMv5TE without floating point."
#endif
