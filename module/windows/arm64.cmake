# The module for Windows on 64-bit ARM: build/windows-arm64/Mirolta.dll.
include(${CMAKE_CURRENT_LIST_DIR}/definitions.cmake)

add_custom_command(OUTPUT ${made}/Mirolta.res
  COMMAND ${MIROLTA_llvm_rc} /no-preprocess /fo Mirolta.res Mirolta.rc
  DEPENDS ${made}/Mirolta.rc ${made}/Mirolta.tlb
  WORKING_DIRECTORY ${made} VERBATIM)
add_custom_target(mirolta_resources DEPENDS ${made}/Mirolta.res)

add_library(mirolta SHARED windows/Mirolta.def)
mirolta_library(mirolta Mirolta Mirolta)
set_target_properties(mirolta PROPERTIES PREFIX "" LINKER_LANGUAGE CXX
  RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
add_dependencies(mirolta mirolta_resources)
target_link_libraries(mirolta PRIVATE module_core ${made}/Mirolta.res)
target_link_options(mirolta PRIVATE
  -fuse-ld=${MIROLTA_ld_lld} -nostdlib -s -Wl,--gc-sections -Wl,--no-insert-timestamp
  -Wl,--entry,DllMainCRTStartup
  -Wl,-Map,${PROJECT_BINARY_DIR}/Mirolta.map)
