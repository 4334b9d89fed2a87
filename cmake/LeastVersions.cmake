# The oldest tested versions. Other compilers are accepted without a test.
set(least_GNU 12)
set(least_Clang 14)
set(least "${least_${CMAKE_CXX_COMPILER_ID}}")
if(least AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS least)
  message(FATAL_ERROR
    "${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION} is too old: "
    "Mirolta needs g++ ${least_GNU} or clang ${least_Clang}, or a later one.")
endif()
