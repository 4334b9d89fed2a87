set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
# Debian has a compiler for each thread model, other systems just one. The module starts no threads.
find_program(MIROLTA_MINGW NAMES i686-w64-mingw32-g++-win32 i686-w64-mingw32-g++ REQUIRED)
set(CMAKE_CXX_COMPILER ${MIROLTA_MINGW})
set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
