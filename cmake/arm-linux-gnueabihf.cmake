# ARMv7 Linux: floating point in registers, Thumb-2. NEON is chosen at run time.
set(CMAKE_SYSTEM_PROCESSOR armv7)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
# No note about an ABI before GCC 7, which nothing here was built with.
set(flags "-march=armv7-a+fp -mfloat-abi=hard -mthumb -mno-unaligned-access -Wno-psabi")
set(qemu qemu-arm)
set(least_cpu cortex-a15)
include(${CMAKE_CURRENT_LIST_DIR}/linux-emulated.cmake)
