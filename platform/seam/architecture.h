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
#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__arm__)
  #define MIROLTA_KERNELS_FOR_ARMV7 1
#else
  #define MIROLTA_KERNELS_FOR_ARMV7 0
#endif
#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__aarch64__)
  #define MIROLTA_KERNELS_FOR_AARCH64 1
#else
  #define MIROLTA_KERNELS_FOR_AARCH64 0
#endif
