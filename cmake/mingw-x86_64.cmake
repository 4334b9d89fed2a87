set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
# Debian has a compiler for each thread model, other systems just one. The module starts no threads.
find_program(MIROLTA_MINGW NAMES x86_64-w64-mingw32-g++-win32 x86_64-w64-mingw32-g++ REQUIRED)
set(CMAKE_CXX_COMPILER ${MIROLTA_MINGW})
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
