# The seam on Windows for 64-bit ARM: the desktop's, and the start that no compiler's runtime brings.
target_sources(mirolta_platform PRIVATE
  windows/allocation.cpp windows/byte_array.cpp windows/entropy.cpp windows/identifiers.cpp
  windows/language_support.cpp windows/registry_change.cpp windows/shared_system_source.cpp windows/start.cpp windows/threads.cpp)
target_compile_definitions(mirolta_platform PUBLIC
  MIROLTA_WITHOUT_RUNTIME=1 UNICODE NOMINMAX WIN32_LEAN_AND_MEAN)

# Import libraries with what the module for 64-bit x86 imports too, and nothing else.
set(imports ${CMAKE_CURRENT_BINARY_DIR}/imports)
file(MAKE_DIRECTORY ${imports})
foreach(library advapi32 kernel32 msvcrt ole32 oleaut32 user32)
  set(list ${CMAKE_CURRENT_SOURCE_DIR}/windows/imports/${library}.txt)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
  file(READ ${list} names)
  file(CONFIGURE OUTPUT ${imports}/${library}.def CONTENT "LIBRARY ${library}.dll\nEXPORTS\n${names}" @ONLY)
  add_custom_command(OUTPUT ${imports}/lib${library}.a
    COMMAND ${MIROLTA_llvm_dlltool} -m arm64 -d ${library}.def -l lib${library}.a
    DEPENDS ${imports}/${library}.def WORKING_DIRECTORY ${imports} VERBATIM)
  list(APPEND import_libraries ${imports}/lib${library}.a)
endforeach()
add_custom_target(mirolta_imports DEPENDS ${import_libraries})
add_dependencies(mirolta_platform mirolta_imports)
target_link_libraries(mirolta_platform PUBLIC ${import_libraries})
