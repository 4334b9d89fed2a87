// The architectures that have kernels of their own.
#pragma once

// MIROLTA_KERNELS_FOR(architecture) is 1 where the kernels for that architecture are compiled in, else
// 0. A file of such kernels is compiled everywhere and is empty where this is 0.
#define MIROLTA_KERNELS_FOR(architecture) MIROLTA_KERNELS_FOR_##architecture

#if !defined(MIROLTA_PORTABLE_ONLY) && defined(__x86_64__)
  #define MIROLTA_KERNELS_FOR_X86_64 1
#else
  #define MIROLTA_KERNELS_FOR_X86_64 0
#endif
