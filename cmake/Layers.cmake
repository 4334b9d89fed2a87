# Every layer is a target of its own whose include directories hold just the layers it may know, so an
# include in a wrong direction does not compile.

add_library(mirolta_options INTERFACE)
target_compile_features(mirolta_options INTERFACE cxx_std_20)
target_compile_options(mirolta_options INTERFACE
  -Wall -Wextra -Werror -Wshadow -Wconversion -Wsign-conversion -Woverloaded-virtual
  -Wcast-align -Wcast-qual -Wformat=2 -Wundef -Wvla -Wimplicit-fallthrough
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>  # gcc 12 warns of its own std::string
  -fno-strict-aliasing -fvisibility=hidden -fvisibility-inlines-hidden -ffunction-sections -fdata-sections)
if(MIROLTA_SANITIZE)
  # The module has no run-time type information, which the check of virtual tables would need. The
  # code that sanitizers add sets off the conversion warnings, which the plain builds check.
  target_compile_options(mirolta_options INTERFACE
    -fsanitize=${MIROLTA_SANITIZE} -fno-sanitize-recover=all -fno-sanitize=vptr
    -fno-omit-frame-pointer -Wno-conversion -Wno-sign-conversion)
  target_link_options(mirolta_options INTERFACE -fsanitize=${MIROLTA_SANITIZE})
endif()
if(MIROLTA_FUZZ)
  # The other compiler warns of other things; its build is for finding faults.
  target_compile_options(mirolta_options INTERFACE -w)
endif()
if(MIROLTA_PORTABLE_ONLY)
  target_compile_definitions(mirolta_options INTERFACE MIROLTA_PORTABLE_ONLY=1)
endif()

# What the module itself is made of: no exceptions and no run-time type information.
add_library(mirolta_module_options INTERFACE)
target_compile_options(mirolta_module_options INTERFACE -fno-exceptions -fno-rtti)
target_link_libraries(mirolta_module_options INTERFACE mirolta_options)

# mirolta_layer(NAME DIRECTORY SOURCES file... [KNOWS target...])
# A static library of position-independent code; its directory is what users of the layer may include.
function(mirolta_layer name directory)
  cmake_parse_arguments(LAYER "" "" "SOURCES;KNOWS" ${ARGN})
  list(TRANSFORM LAYER_SOURCES PREPEND ${directory}/)
  add_library(${name} STATIC ${LAYER_SOURCES})
  set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  target_include_directories(${name} PUBLIC ${directory})
  target_link_libraries(${name} PUBLIC ${LAYER_KNOWS} PRIVATE mirolta_module_options)
  # Where the portable loops do all the work they are worth their size in builds that are small
  # otherwise.
  if(name MATCHES "_kernels$" AND NOT CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    target_compile_options(${name} PRIVATE $<$<CONFIG:MinSizeRel>:-O2>)
  endif()
endfunction()
