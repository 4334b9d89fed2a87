# The seam on Windows CE: the desktop's, but for entropy, start-up and what compiled code calls.
target_sources(mirolta_platform PRIVATE
  handheld/compiled_code.cpp handheld/entropy.cpp handheld/start.cpp
  windows/allocation.cpp windows/byte_array.cpp windows/identifiers.cpp windows/registry_change.cpp
  windows/shared_system_source.cpp)
target_compile_definitions(mirolta_platform PUBLIC
  MIROLTA_HANDHELD=1 UNICODE NOMINMAX WIN32_LEAN_AND_MEAN)

# Import libraries with all that the system exports and nothing else: as data, for which they define the
# addresses only. The calls are compiled here; those of import libraries hold an address in a pair of
# instructions (tests/handheld/dll_check.py).
set(imports ${CMAKE_CURRENT_BINARY_DIR}/imports)
file(MAKE_DIRECTORY ${imports})
set(calls "#include \"handheld/import_call.h\"\n")
foreach(library coredll ole32 oleaut32)
  set(list ${CMAKE_CURRENT_SOURCE_DIR}/handheld/exports/${library}.txt)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
  file(STRINGS ${list} names)
  list(TRANSFORM names APPEND " DATA\n" OUTPUT_VARIABLE lines)
  string(CONCAT lines "LIBRARY ${library}.dll\nEXPORTS\n" ${lines})
  file(CONFIGURE OUTPUT ${imports}/${library}.def CONTENT "${lines}" @ONLY)
  list(TRANSFORM names REPLACE "(.+)" "IMPORT_CALL(\\1)\n" OUTPUT_VARIABLE lines)
  string(APPEND calls ${lines})
  add_custom_command(OUTPUT ${imports}/lib${library}.a
    COMMAND ${MIROLTA_llvm_dlltool} -m arm -d ${library}.def -l lib${library}.a
    DEPENDS ${imports}/${library}.def WORKING_DIRECTORY ${imports} VERBATIM)
  list(APPEND import_libraries ${imports}/lib${library}.a)
endforeach()
file(CONFIGURE OUTPUT ${imports}/import_calls.cpp CONTENT "${calls}" @ONLY)
add_custom_target(mirolta_handheld_imports DEPENDS ${import_libraries})
add_dependencies(mirolta_platform mirolta_handheld_imports)
target_link_libraries(mirolta_platform PUBLIC ${import_libraries})
target_sources(mirolta_platform PRIVATE ${imports}/import_calls.cpp)
