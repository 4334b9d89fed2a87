# 32-bit x86 Linux, whose programs the machine's own processor runs.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)
set(CMAKE_CXX_COMPILER_TARGET i686-linux-gnu)
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/linux-target.cmake)
set(libraries ${MIROLTA_TARGET_ROOT}/lib/i386-linux-gnu)
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT
  " -Wl,--dynamic-linker=${libraries}/ld-linux.so.2"
  " -Wl,--disable-new-dtags,-rpath,${libraries}:${MIROLTA_TARGET_LIBRARIES}")
