# What the toolchains of clang and lld for Windows share. Each names its processor and target before, and
# the variable of another compiler, from which the folders of headers are.
# No start-up code or library of a compiler is linked.
set(MIROLTA_WITHOUT_RUNTIME ON)
# Not every release of the tools has all of them without its number in the name.
foreach(tool clang++ llvm-ar llvm-ranlib llvm-rc llvm-dlltool ld.lld)
  string(MAKE_C_IDENTIFIER MIROLTA_${tool} variable)
  find_program(${variable} NAMES ${tool} ${tool}-19 ${tool}-14 REQUIRED)
  mark_as_advanced(${variable})
endforeach()
set(CMAKE_CXX_COMPILER ${MIROLTA_clang__})
set(CMAKE_AR ${MIROLTA_llvm_ar} CACHE FILEPATH "The archiver")
set(CMAKE_RANLIB ${MIROLTA_llvm_ranlib} CACHE FILEPATH "The indexer of archives")
# There is no start-up code that a program could be linked with.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_CXX_STANDARD_LIBRARIES "" CACHE STRING "Libraries of every program")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# Where the other compiler looks for headers: those of the language library, then the system's. Its own
# are replaced by clang's, which come between them.
mark_as_advanced(${header_compiler})
execute_process(COMMAND ${${header_compiler}} -v -E -x c++ /dev/null
  ERROR_VARIABLE report OUTPUT_QUIET)
string(REGEX REPLACE ".*#include <[^\n]*\n(.*)End of search list.*" "\\1" folders "${report}")
string(REGEX MATCHALL "[^ \n]+" folders "${folders}")
set(includes "-nostdlibinc -Wno-unused-command-line-argument")
foreach(folder IN LISTS folders)
  cmake_path(NORMAL_PATH folder)
  if(folder MATCHES "/c\\+\\+(/|$)" AND NOT folder MATCHES "/backward$")
    string(APPEND includes " -isystem ${folder}")
  elseif(NOT folder MATCHES "/lib/gcc/")
    string(APPEND includes " -idirafter ${folder}")
  endif()
endforeach()
