// Included before everything in what uses GoogleTest. Its death tests on this compiler ask for
// threads, which the compiler's library lacks: without the compiler's mark there are none of them.
#pragma once

#include <gtest/internal/gtest-port-arch.h>

#undef GTEST_OS_WINDOWS_MINGW
#define GTEST_OS_WINDOWS_DESKTOP 1
