# 64-bit ARM Linux. Instructions beyond ARMv8.0 are chosen at run time.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(flags "-march=armv8-a")
set(qemu qemu-aarch64)
set(least_cpu max)
include(${CMAKE_CURRENT_LIST_DIR}/linux-emulated.cmake)
