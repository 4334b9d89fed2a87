// The architectures that have kernels of their own.
#pragma once

// MIROLTA_KERNELS_FOR(architecture) is 1 where the kernels for that architecture are compiled in,
// else 0. A file of such kernels is compiled everywhere and is empty where this is 0.
#define MIROLTA_KERNELS_FOR(architecture) MIROLTA_KERNELS_FOR_##architecture

#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)
  #define MIROLTA_KERNELS_FOR_X86_64 1
#else
  #define MIROLTA_KERNELS_FOR_X86_64 0
#endif
#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__i386__)
  #define MIROLTA_KERNELS_FOR_X86_32 1
#else
  #define MIROLTA_KERNELS_FOR_X86_32 0
#endif
// X86 has what both modes of these processors share.
#define MIROLTA_KERNELS_FOR_X86 (MIROLTA_KERNELS_FOR_X86_64 || MIROLTA_KERNELS_FOR_X86_32)
// ARM has what every 32-bit ARM processor from ARMv5TE on runs, in ARM state or Thumb-2; a build's
// flags may allow more (MIROLTA_HAS_UMAAL).
#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__arm__) && \
    (!defined(__thumb__) || defined(__thumb2__))
  #define MIROLTA_KERNELS_FOR_ARM 1
#else
  #define MIROLTA_KERNELS_FOR_ARM 0
#endif
#if MIROLTA_KERNELS_FOR_ARM && defined(__ARM_FEATURE_DSP) && __ARM_ARCH >= 6
  #define MIROLTA_HAS_UMAAL 1
#else
  #define MIROLTA_HAS_UMAAL 0
#endif
// ARMV7 has what of later 32-bit processors is chosen at run time. It is for Linux, which lists what a
// processor has and saves the vector registers, and for builds that use the registers of floating point:
// with others no such processor is to be expected.
#if MIROLTA_KERNELS_FOR_ARM && defined(__linux__) && defined(__ARM_FP)
  #define MIROLTA_KERNELS_FOR_ARMV7 1
#else
  #define MIROLTA_KERNELS_FOR_ARMV7 0
#endif
#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__aarch64__)
  #define MIROLTA_KERNELS_FOR_AARCH64 1
#else
  #define MIROLTA_KERNELS_FOR_AARCH64 0
#endif
// NEON has what both kinds have: vectors of 128 bits. On 64-bit processors it needs no feature, on 32-bit
// ones kFeatureNeon, and a compiler that takes it as an attribute of functions, or a build that allows it.
#if MIROLTA_KERNELS_FOR_AARCH64 || \
    (MIROLTA_KERNELS_FOR_ARMV7 && (defined(__ARM_NEON) || !defined(__clang__)))
  #define MIROLTA_KERNELS_FOR_NEON 1
#else
  #define MIROLTA_KERNELS_FOR_NEON 0
#endif
