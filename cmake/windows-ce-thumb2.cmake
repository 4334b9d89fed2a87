# The handheld: Thumb-2 code for Windows CE, by clang and lld. Of mingw-w64 and of its compiler for 32 bits
# only headers are used: the system's and those of the language library.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR thumbv7)
set(MIROLTA_HANDHELD ON)
set(CMAKE_CXX_COMPILER_TARGET thumbv7-w64-windows-gnu)
set(header_compiler MIROLTA_MINGW_32)
find_program(MIROLTA_MINGW_32 NAMES i686-w64-mingw32-g++-win32 i686-w64-mingw32-g++ REQUIRED)
include(${CMAKE_CURRENT_LIST_DIR}/windows-clang.cmake)
# Addresses in constants, which every loader can relocate, instead of in pairs of instructions; frames
# without a chain, and without tables for the debuggers of desktops.
# Nothing is marked as imported, and no variable is another module's (local_symbols.h): for both, clang with
# -mno-movt takes the address of a symbol for that of the pointer to it.
string(CONCAT CMAKE_CXX_FLAGS_INIT "${includes} -mno-movt -Ddllimport= "
  "-include ${CMAKE_CURRENT_LIST_DIR}/../platform/handheld/local_symbols.h -fomit-frame-pointer "
  "-fno-unwind-tables -fno-asynchronous-unwind-tables -fno-ident")
