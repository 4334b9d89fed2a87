// The intrinsics of AArch64, those of the cryptographic instructions among them, for kernels that are
// chosen at run time.
#pragma once

#if defined(__clang__) && __clang_major__ < 16
  // Before version 16 the header declares them only where all of the file may use them.
  #if !defined(__ARM_FEATURE_AES)
    #define __ARM_FEATURE_AES 1  // NOLINT(bugprone-reserved-identifier)
  #endif
  #if !defined(__ARM_FEATURE_SHA2)
    #define __ARM_FEATURE_SHA2 1  // NOLINT(bugprone-reserved-identifier)
  #endif
#endif
#include <arm_neon.h>

// The instruction sets of functions: AES, and SHA-1 with SHA-256.
#if defined(__clang__)
  #define MIROLTA_ARM_AES __attribute__((target("aes")))
  #define MIROLTA_ARM_SHA __attribute__((target("sha2")))
#else
  #define MIROLTA_ARM_AES __attribute__((target("+crypto")))
  #define MIROLTA_ARM_SHA __attribute__((target("+crypto")))
#endif
