# Programs that use mirolta.hpp as others do: without the project's options.

# No exceptions, and no run-time type information.
add_executable(hpp_no_exceptions hpp_no_exceptions.cpp)
target_compile_options(hpp_no_exceptions PRIVATE -fno-exceptions -fno-rtti)
add_test(NAME hpp_no_exceptions COMMAND hpp_no_exceptions)
mirolta_program(no_exceptions_program hpp_no_exceptions)
add_test(NAME hpp_no_exceptions_failure
  COMMAND sh -c "\"$0\" fail && echo 'no failures'; true" ${no_exceptions_program})
set_tests_properties(hpp_no_exceptions_failure PROPERTIES
  PASS_REGULAR_EXPRESSION "^Algorithm not found\\.\n" FAIL_REGULAR_EXPRESSION "failures")

# Which module serves, without a registration and with one of a copy.
add_executable(hpp_registered hpp_registered.cpp)
mirolta_program(registered_program hpp_registered)
add_test(NAME hpp_registered
  COMMAND sh ${CMAKE_CURRENT_SOURCE_DIR}/hpp_registered.sh ${registered_program}
    ${host_program} $<TARGET_FILE:mirolta> ${CMAKE_CURRENT_BINARY_DIR}/registered)

# The programs of docs/cpp.md.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
set(page ${PROJECT_SOURCE_DIR}/docs/cpp.md)
set(page_source ${CMAKE_CURRENT_BINARY_DIR}/cpp_page.cpp)
add_custom_command(OUTPUT ${page_source}
  COMMAND ${Python3_EXECUTABLE} -B ${CMAKE_CURRENT_SOURCE_DIR}/cpp_page.py ${page} --source
    ${page_source}
  DEPENDS cpp_page.py ../support/cpp_programs.py ../support/page_blocks.py ${page} VERBATIM)
add_executable(cpp_page ${page_source})
add_test(NAME hpp_compilers
  COMMAND sh ${CMAKE_CURRENT_SOURCE_DIR}/hpp_compilers.sh ${page_source} ${PROJECT_SOURCE_DIR}/include)
mirolta_program(page_program cpp_page)
add_test(NAME cpp_page
  COMMAND ${Python3_EXECUTABLE} -B ${CMAKE_CURRENT_SOURCE_DIR}/cpp_page.py ${page} --run
    ${page_program})

# As users may compile them, by the least edition of the language that the header is for.
foreach(name hpp_no_exceptions hpp_registered cpp_page)
  target_link_libraries(${name} PRIVATE Mirolta::Mirolta)
  target_compile_options(${name} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast)
  set_target_properties(${name} PROPERTIES CXX_STANDARD 17
    RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
endforeach()
set_tests_properties(hpp_no_exceptions hpp_no_exceptions_failure hpp_compilers cpp_page PROPERTIES
  TIMEOUT 300 ENVIRONMENT "MIROLTA_REGISTRY=${CMAKE_CURRENT_BINARY_DIR}/none.reg")
# Compiles the programs of the page four times.
set_tests_properties(hpp_compilers PROPERTIES TIMEOUT 900)
