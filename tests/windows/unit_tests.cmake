# What the unit tests of the Windows builds need beyond those of others.

# The compiler's library has no threads; those that tests make are the system's (tests/support/test_thread.h).
target_compile_definitions(gtest_main PUBLIC GTEST_IS_THREADSAFE=0)
target_compile_options(gtest_main PUBLIC
  "SHELL:-include ${CMAKE_CURRENT_SOURCE_DIR}/windows/google_test_port.h")

add_custom_target(windows-tests)

# The programs by folder, for the script that runs them.
set(MIROLTA_UNIT_TESTS ${CMAKE_BINARY_DIR}/tests/unit_tests.txt)
file(WRITE ${MIROLTA_UNIT_TESTS} "")

# mirolta_windows_test(NAME): what a unit test's program needs in these builds.
function(mirolta_windows_test name)
  get_filename_component(folder ${CMAKE_CURRENT_SOURCE_DIR} NAME)
  file(APPEND ${MIROLTA_UNIT_TESTS} "${folder} ${name}\n")
  set_target_properties(${name} PROPERTIES EXCLUDE_FROM_ALL ON)
  target_link_options(${name} PRIVATE -static)
  # The module frees memory by operators of its own, which go with its own way to get it. A program
  # with the language's needs all of them from one place.
  get_target_property(sources ${name} SOURCES)
  if(NOT sources MATCHES "memory_watch")
    target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/memory_watch.cpp)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support)
  endif()
  add_dependencies(windows-tests ${name})
endfunction()
