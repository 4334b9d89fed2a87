# mirolta.h by itself: with every compiler that there is, and in C.
mirolta_test(c_slots_test SOURCES c_slots_test.cpp LIBRARIES mirolta_api)

# The same whatever the build is.
if(NOT MIROLTA_SANITIZE)
  add_test(NAME header_matrix
    COMMAND ${Python3_EXECUTABLE} -B ${CMAKE_CURRENT_SOURCE_DIR}/header_matrix.py
      ${PROJECT_SOURCE_DIR}/include)
  set_tests_properties(header_matrix PROPERTIES TIMEOUT 600 COST 50)
endif()

# The programs of docs/c.md. The runtime finds the module in a registry of the test's own.
find_program(MIROLTA_C_COMPILER NAMES gcc cc clang DOC "Compiler of the tests in C")
mark_as_advanced(MIROLTA_C_COMPILER)
if(MIROLTA_C_COMPILER AND TARGET mirolta-host AND NOT CMAKE_CROSSCOMPILING)
  set(sanitized "")
  if(MIROLTA_SANITIZE)
    set(sanitized -fsanitize=${MIROLTA_SANITIZE})
  endif()
  set(registry MIROLTA_REGISTRY=${CMAKE_CURRENT_BINARY_DIR}/c_page.reg)
  add_test(NAME c_page_registration COMMAND mirolta-host --register $<TARGET_FILE:mirolta>)
  add_test(NAME c_page
    COMMAND ${Python3_EXECUTABLE} -B ${CMAKE_CURRENT_SOURCE_DIR}/c_page.py
      ${PROJECT_SOURCE_DIR}/docs/c.md ${CMAKE_CURRENT_BINARY_DIR}/c_page ${MIROLTA_C_COMPILER}
      -I${PROJECT_SOURCE_DIR}/include $<TARGET_FILE:mirolta> $<TARGET_FILE:mirolta_runtime>
      -Wl,-rpath,$<TARGET_FILE_DIR:mirolta>
      ${sanitized})
  set_tests_properties(c_page_registration PROPERTIES FIXTURES_SETUP c_page ENVIRONMENT ${registry})
  set_tests_properties(c_page PROPERTIES FIXTURES_REQUIRED c_page TIMEOUT 120 ENVIRONMENT ${registry})
endif()
