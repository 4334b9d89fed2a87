# The oldest compilers that pass all tests. Others of C++20 are let through: nobody has tried them.
set(least_GNU 12)
set(least_Clang 14)
set(least "${least_${CMAKE_CXX_COMPILER_ID}}")
if(least AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS least)
  message(FATAL_ERROR
    "${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION} is too old: "
    "Mirolta needs g++ ${least_GNU} or clang ${least_Clang}, or a later one.")
endif()
