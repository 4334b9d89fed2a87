# ARMv5TE Linux: soft float, no unaligned access, unsigned char. The processor that is emulated knows no
# later instruction.
set(CMAKE_SYSTEM_PROCESSOR armv5te)
set(CMAKE_CXX_COMPILER arm-linux-gnueabi-g++)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabi)
# No note about an ABI before GCC 7, which nothing here was built with.
set(flags "-march=armv5te -mfloat-abi=soft -marm -Wno-psabi")
set(qemu qemu-arm)
set(least_cpu arm926)
include(${CMAKE_CURRENT_LIST_DIR}/linux-emulated.cmake)
