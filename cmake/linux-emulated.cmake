# What the toolchains for ARM share beyond linux-target.cmake: QEMU runs the programs. It looks for every
# file of the system, the dynamic linker and character sets among them, below the unpacked packages first.
include(${CMAKE_CURRENT_LIST_DIR}/linux-target.cmake)
string(APPEND CMAKE_CXX_FLAGS_INIT " ${flags}")
find_program(MIROLTA_QEMU ${qemu} REQUIRED DOC "QEMU's emulator of programs for another processor")
set(MIROLTA_QEMU_CPU "${least_cpu}" CACHE STRING "The processor that QEMU emulates")
set(CMAKE_CROSSCOMPILING_EMULATOR ${MIROLTA_QEMU} -cpu ${MIROLTA_QEMU_CPU} -L ${MIROLTA_TARGET_ROOT})
