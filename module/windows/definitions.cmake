# What the resources of Mirolta.dll are made from, for every Windows.

# Writes the definitions from the tables. It runs on the building machine, so it comes from the native
# build.
find_program(MIROLTA_DEFINITIONS mirolta-definitions REQUIRED
  HINTS ${PROJECT_SOURCE_DIR}/build/native/bin
  DOC "The program mirolta-definitions of a native build" NO_CMAKE_FIND_ROOT_PATH)
# The type library depends on the size of pointers only.
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(widl x86_64-w64-mingw32-widl)
else()
  set(widl i686-w64-mingw32-widl)
endif()
find_program(MIROLTA_WIDL ${widl} REQUIRED
  DOC "The compiler of interface definitions" NO_CMAKE_FIND_ROOT_PATH)

set(sources ${CMAKE_CURRENT_SOURCE_DIR}/windows)
set(made ${CMAKE_CURRENT_BINARY_DIR}/definitions)
file(MAKE_DIRECTORY ${made})

add_custom_command(
  OUTPUT ${made}/Mirolta.idl ${made}/Mirolta.rc
  COMMAND ${MIROLTA_DEFINITIONS} idl ${made}/Mirolta.idl
  COMMAND ${MIROLTA_DEFINITIONS} resources ${made}/Mirolta.rc ${PROJECT_VERSION}
  DEPENDS ${MIROLTA_DEFINITIONS}
  VERBATIM)
add_custom_command(
  OUTPUT ${made}/Mirolta.tlb
  COMMAND ${MIROLTA_WIDL} -t -I ${sources} -o stdole2.tlb ${sources}/stdole2.idl
  COMMAND ${MIROLTA_WIDL} -t -I ${sources} -L . -o Mirolta.tlb Mirolta.idl
  COMMAND ${MIROLTA_DEFINITIONS} untimed Mirolta.tlb
  DEPENDS ${made}/Mirolta.idl ${sources}/automation_types.idl ${sources}/stdole2.idl
  WORKING_DIRECTORY ${made}
  VERBATIM)
