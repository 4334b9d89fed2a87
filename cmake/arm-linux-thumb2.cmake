# Thumb-2 code for ARM Linux by clang, with the libraries of the other compiler's soft-float system: what
# `make size` measures.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_CXX_COMPILER_TARGET arm-linux-gnueabi)
set(CMAKE_CXX_FLAGS_INIT "-march=armv7-a -mthumb -mfloat-abi=soft")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-march=armv7-a -mthumb -mfloat-abi=soft")
# Programs run on the building machine by an emulator.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L /usr/arm-linux-gnueabi)
