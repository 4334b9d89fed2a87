# Windows on 64-bit ARM, by clang and lld. Of mingw-w64 and of its compiler for 64-bit x86 only headers are
# used: the system's and those of the language library.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER_TARGET aarch64-w64-windows-gnu)
set(header_compiler MIROLTA_MINGW)
find_program(MIROLTA_MINGW NAMES x86_64-w64-mingw32-g++-win32 x86_64-w64-mingw32-g++ REQUIRED)
include(${CMAKE_CURRENT_LIST_DIR}/windows-clang.cmake)
set(CMAKE_CXX_FLAGS_INIT "${includes} -fno-ident")
