# Tests of the module for Windows on 64-bit ARM, as it is linked: no system here runs it.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
foreach(test arm64_check arm64_check_test)
  add_test(NAME ${test}
    COMMAND ${Python3_EXECUTABLE} -B ${CMAKE_CURRENT_SOURCE_DIR}/windows/${test}.py
      $<TARGET_FILE:mirolta> ${PROJECT_BINARY_DIR}/Mirolta.map
      ${PROJECT_SOURCE_DIR}/platform/windows/imports
      ${PROJECT_BINARY_DIR}/module/definitions/Mirolta.rc
      ${PROJECT_SOURCE_DIR}/build/windows-x64/Mirolta.dll)
endforeach()
