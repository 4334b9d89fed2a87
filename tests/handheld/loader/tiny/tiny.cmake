# tiny.dll and numbers.dll, made by the tools that make the module for the handheld.
foreach(tool clang lld-link llvm-dlltool llvm-rc)
  string(MAKE_C_IDENTIFIER MIROLTA_TINY_${tool} variable)
  find_program(${variable} NAMES ${tool} ${tool}-19 ${tool}-14 REQUIRED NO_CMAKE_FIND_ROOT_PATH)
  mark_as_advanced(${variable})
endforeach()

set(sources ${CMAKE_CURRENT_LIST_DIR})
set(made ${CMAKE_CURRENT_BINARY_DIR})
set(finish ${PROJECT_SOURCE_DIR}/module/handheld/finish_image.py)

# tiny_dll(NAME FILES file... OPTIONS option...): a DLL of NAME.c and of what else is linked.
function(tiny_dll name)
  cmake_parse_arguments(TINY "" "" "FILES;OPTIONS" ${ARGN})
  list(TRANSFORM TINY_FILES PREPEND ${made}/ OUTPUT_VARIABLE files)
  add_custom_command(OUTPUT ${made}/${name}.dll
    COMMAND ${MIROLTA_TINY_clang} --target=thumbv7-windows-gnu -O1 -ffreestanding -Wall -Wextra -Werror
      -c ${sources}/${name}.c -o ${name}.obj
    COMMAND ${MIROLTA_TINY_lld_link} -dll -machine:arm -nodefaultlib -lldmingw -timestamp:0
      -out:${name}.dll ${TINY_OPTIONS} ${name}.obj ${TINY_FILES}
    COMMAND ${Python3_EXECUTABLE} ${finish} ${name}.dll
    DEPENDS ${sources}/${name}.c ${finish} ${files}
    WORKING_DIRECTORY ${made} VERBATIM)
endfunction()

foreach(library numbers system)
  add_custom_command(OUTPUT ${made}/${library}.lib
    COMMAND ${MIROLTA_TINY_llvm_dlltool} -m arm -d ${sources}/${library}.def -l ${library}.lib
    DEPENDS ${sources}/${library}.def WORKING_DIRECTORY ${made} VERBATIM)
endforeach()
# llvm-rc and lld-link take a path that begins with "/c" or "/d" for an option: inputs are named without folders.
add_custom_command(OUTPUT ${made}/tiny.res
  COMMAND ${MIROLTA_TINY_llvm_rc} /no-preprocess /fo ${made}/tiny.res tiny.rc
  DEPENDS ${sources}/tiny.rc WORKING_DIRECTORY ${sources} VERBATIM)

tiny_dll(tiny FILES tiny.res numbers.lib system.lib OPTIONS -entry:DllMain)
# Its own import library goes beside, not over the one above.
tiny_dll(numbers OPTIONS -noentry -def:${sources}/numbers.def -implib:numbers_own.lib)
add_custom_target(handheld_tiny DEPENDS ${made}/tiny.dll ${made}/numbers.dll)
