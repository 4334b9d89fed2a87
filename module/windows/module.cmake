# The module for Windows: Mirolta.dll, and the manifest for use without registration.
enable_language(RC)
include(${CMAKE_CURRENT_LIST_DIR}/definitions.cmake)

if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
  set(manifest_processor amd64)
else()
  set(manifest_processor x86)
endif()
add_custom_command(
  OUTPUT ${PROJECT_BINARY_DIR}/Mirolta.manifest
  COMMAND ${MIROLTA_DEFINITIONS} manifest ${PROJECT_BINARY_DIR}/Mirolta.manifest ${PROJECT_VERSION}
    ${manifest_processor}
  DEPENDS ${MIROLTA_DEFINITIONS}
  VERBATIM)

set_source_files_properties(${made}/Mirolta.rc PROPERTIES
  OBJECT_DEPENDS ${made}/Mirolta.tlb
  INCLUDE_DIRECTORIES ${made})

add_library(mirolta SHARED
  ${sources}/Mirolta.def ${made}/Mirolta.rc ${PROJECT_BINARY_DIR}/Mirolta.manifest)
mirolta_library(mirolta Mirolta Mirolta)
set_target_properties(mirolta PROPERTIES PREFIX "" LINKER_LANGUAGE CXX)
if(PROJECT_IS_TOP_LEVEL)
  set_target_properties(mirolta PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
endif()
target_link_libraries(mirolta PRIVATE module_core INTERFACE ole32 oleaut32 uuid)
# The module needs no library of the compiler at run time. The definition file names the entry points
# without the decoration of 32-bit calling conventions. Without the time of linking the same sources
# give the same bytes.
target_link_options(mirolta PRIVATE
  -static -static-libgcc -static-libstdc++ -s -Wl,--gc-sections -Wl,--enable-stdcall-fixup
  -Wl,--no-insert-timestamp
  # What the DLL contains of others, for tests.
  -Wl,-Map,${PROJECT_BINARY_DIR}/Mirolta.map)
if(CMAKE_SYSTEM_PROCESSOR STREQUAL "i686")
  # In the folder of the library, and by names without the folder, which would become part of it.
  add_custom_command(TARGET mirolta POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E chdir $<TARGET_LINKER_FILE_DIR:mirolta>
      ${CMAKE_DLLTOOL} --kill-at --temp-prefix Mirolta --input-def ${sources}/ImportsX86.def
      --output-lib $<TARGET_LINKER_FILE_NAME:mirolta>
    VERBATIM)
endif()

# Test programs that act as the module are linked from the same parts.
if(MIROLTA_TESTS)
  add_library(mirolta_resources OBJECT EXCLUDE_FROM_ALL ${made}/Mirolta.rc)
  add_library(mirolta_entry OBJECT EXCLUDE_FROM_ALL type_library_table.cpp)
  target_include_directories(mirolta_entry INTERFACE ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(mirolta_entry
    PUBLIC module_core PRIVATE mirolta_module_options INTERFACE $<TARGET_OBJECTS:mirolta_resources>)
endif()
