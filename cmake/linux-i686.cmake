# 32-bit x86 Linux. scripts/i386-packages.sh has unpacked the libraries into MIROLTA_I386; programs run on
# a 64-bit system that has none of them installed.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)
set(CMAKE_CXX_COMPILER_TARGET i686-linux-gnu)
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MIROLTA_I386)
get_filename_component(MIROLTA_I386 "${MIROLTA_I386}" ABSOLUTE BASE_DIR ${CMAKE_SOURCE_DIR})
set(CMAKE_FIND_ROOT_PATH ${MIROLTA_I386}/root)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(libraries ${MIROLTA_I386}/root/lib/i386-linux-gnu)
set(more_libraries ${MIROLTA_I386}/root/usr/lib/i386-linux-gnu)
set(CMAKE_CXX_FLAGS_INIT "-isystem ${MIROLTA_I386}/root/usr/include/i386-linux-gnu")
# What is looked up by libraries themselves is found there too.
string(CONCAT CMAKE_EXE_LINKER_FLAGS_INIT
  "-Wl,--dynamic-linker=${libraries}/ld-linux.so.2 "
  "-Wl,--disable-new-dtags,-rpath,${libraries}:${more_libraries},-rpath-link,${more_libraries}")
