# Every layer is a target whose include directories contain only the layers it may depend on, so an
# include in the wrong direction does not compile.

add_library(mirolta_options INTERFACE)
target_compile_features(mirolta_options INTERFACE cxx_std_20)
target_compile_options(mirolta_options INTERFACE
  -Wall -Wextra -Wshadow -Wconversion -Wsign-conversion -Woverloaded-virtual
  -Wcast-align -Wcast-qual -Wformat=2 -Wundef -Wvla -Wimplicit-fallthrough
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>  # gcc 12 warns of its own std::string
  $<$<CXX_COMPILER_ID:Clang>:-Wno-unknown-warning-option>  # the other's, that sources switch off
  -fvisibility=hidden -fvisibility-inlines-hidden -ffunction-sections -fdata-sections)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT MIROLTA_SANITIZE)
  # Not among them: -Wuseless-cast (LONG and Limb are other types elsewhere),
  # -Wnon-virtual-dtor (interfaces have no destructor; -Wdelete-non-virtual-dtor is on) and
  # -Wnull-dereference (depends on inlining; make lint analyses).
  target_compile_options(mirolta_options INTERFACE
    -Walloc-zero -Walloca -Warith-conversion -Wcatch-value=3 -Wcomma-subscript -Wdate-time
    -Wdeprecated-copy-dtor -Wdouble-promotion -Wduplicated-branches -Wduplicated-cond -Wextra-semi
    -Wformat-signedness -Wimplicit-fallthrough=5 -Wlogical-op -Wmismatched-tags -Wold-style-cast
    -Wplacement-new=2 -Wredundant-tags -Wshift-overflow=2 -Wsuggest-override -Wtrampolines
    -Wunused-const-variable=1 -Wunused-macros -Wvolatile -Wzero-as-null-pointer-constant)
  if(NOT WIN32)  # whose headers declare some of the entry points, and some not
    target_compile_options(mirolta_options INTERFACE -Wmissing-declarations -Wredundant-decls)
  endif()
endif()
if(NOT WIN32)
  # Times and files have 64 bits on 32-bit processors too.
  target_compile_definitions(mirolta_options INTERFACE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
endif()
if(WIN32 AND CMAKE_SYSTEM_PROCESSOR MATCHES "^i[3-6]86$" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # Callers there align the stack to four bytes; functions that keep vectors on it align it further.
  target_compile_options(mirolta_options INTERFACE -mpreferred-stack-boundary=2)
endif()
if(MIROLTA_SANITIZE)
  # The module has no run-time type information, which the check of virtual tables would need. The
  # code that sanitizers add sets off the conversion warnings, which the plain builds check.
  target_compile_options(mirolta_options INTERFACE
    -fsanitize=${MIROLTA_SANITIZE} -fno-sanitize-recover=all -fno-sanitize=vptr
    -fno-omit-frame-pointer -Wno-conversion -Wno-sign-conversion)
  target_link_options(mirolta_options INTERFACE -fsanitize=${MIROLTA_SANITIZE})
endif()
if(MIROLTA_FUZZ)
  # Warnings of the other compiler are not wanted in a fuzzing build.
  target_compile_options(mirolta_options INTERFACE -w)
endif()
if(MIROLTA_BUDGETS)
  # In the object files, or beside them; scripts/size.py reads both.
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang" AND NOT WIN32)
    target_compile_options(mirolta_options INTERFACE -fstack-size-section)
  else()
    target_compile_options(mirolta_options INTERFACE -fstack-usage)
  endif()
endif()
if(MIROLTA_UP_TO_AVX2)
  target_compile_definitions(mirolta_options INTERFACE MIROLTA_UP_TO_AVX2=1)
endif()
if(MIROLTA_PORTABLE_ONLY)
  target_compile_definitions(mirolta_options INTERFACE MIROLTA_PORTABLE_ONLY=1)
endif()

# Hardening; tests/trust/hardening_test.py reads it from the files.
# Targets with the property MIROLTA_HOT have no stack protector, which would slow their loops.
if(WIN32)
  target_link_options(mirolta_options INTERFACE -Wl,--nxcompat -Wl,--dynamicbase)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|aarch64)$")
    target_link_options(mirolta_options INTERFACE -Wl,--high-entropy-va)
  endif()
else()
  # Binding at load keeps the dynamic linker, which saves vector registers on the stack at a first
  # call, away from secrets.
  target_link_options(mirolta_options INTERFACE
    -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,--as-needed)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|i[3-6]86)$")
    # Indirect branch targets are marked in the code. The linker marks the file as a whole only if
    # the system's start-up objects are marked too; these do keep to the shadow stack, whatever they
    # say.
    target_compile_options(mirolta_options INTERFACE -fcf-protection=full)
    target_link_options(mirolta_options INTERFACE -Wl,-z,shstk)
  endif()
endif()
if(MIROLTA_HANDHELD)
  # The compiler loads the canary by a pair of instructions that not every loader can relocate.
  target_compile_options(mirolta_options INTERFACE -fno-stack-protector)
elseif(NOT MIROLTA_SANITIZE)
  # The module for Windows has a size limit: only functions with character arrays.
  set(protector -fstack-protector$<$<NOT:$<BOOL:${WIN32}>>:-strong>)
  target_compile_options(mirolta_options INTERFACE
    $<$<NOT:$<BOOL:$<TARGET_PROPERTY:MIROLTA_HOT>>>:${protector}>)
endif()

# Options of the module's own code: no exceptions, no run-time type information, no type punning.
add_library(mirolta_module_options INTERFACE)
target_compile_options(mirolta_module_options INTERFACE
  -fno-exceptions -fno-rtti -Wstrict-aliasing=2)
target_link_libraries(mirolta_module_options INTERFACE mirolta_options)

# mirolta_layer(NAME DIRECTORY SOURCES file... [KNOWS target...])
# A static library of position-independent code; users of the layer may include its directory.
function(mirolta_layer name directory)
  cmake_parse_arguments(LAYER "" "" "SOURCES;KNOWS" ${ARGN})
  list(TRANSFORM LAYER_SOURCES PREPEND ${directory}/)
  add_library(${name} STATIC ${LAYER_SOURCES})
  set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  if(name MATCHES "_kernels$|^bignum_core$")
    set_target_properties(${name} PROPERTIES MIROLTA_HOT ON)
  endif()
  target_include_directories(${name} PUBLIC ${directory})
  target_link_libraries(${name} PUBLIC ${LAYER_KNOWS} PRIVATE mirolta_module_options)
  # The module for 64-bit Windows is as fast as the native one, and small only beside the layers and where
  # no loop is: registration, and the stream objects around the engines. The big numbers' loops are in their kernels.
  # Where the portable loops do all the work they are worth their size in builds that are small
  # otherwise. On 32-bit x86 the loops over registers are unrolled as in release builds.
  if(WIN32 AND CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64" AND NOT name MATCHES "^(module_core|stream_objects)$")
    target_compile_options(${name} PRIVATE
      $<$<CONFIG:MinSizeRel>:-O$<IF:$<STREQUAL:${name},bignum_core>,2,3>>)
  elseif(name MATCHES "_kernels$" AND NOT CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "^i[3-6]86$")
      target_compile_options(${name} PRIVATE $<$<CONFIG:MinSizeRel>:-O3>)
    else()
      target_compile_options(${name} PRIVATE $<$<CONFIG:MinSizeRel>:-O2>)
    endif()
  endif()
endfunction()

# mirolta_library(TARGET NAME FILE)
# What users link and programs load: the target Mirolta::NAME, here as after installation, with the
# public headers.
function(mirolta_library target name file)
  add_library(Mirolta::${name} ALIAS ${target})
  set_target_properties(${target} PROPERTIES
    EXPORT_NAME ${name} OUTPUT_NAME ${file}
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  target_compile_features(${target} INTERFACE cxx_std_17)
  target_include_directories(${target} INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
endfunction()

# mirolta_run_path(TARGET FOLDER BUILD_FOLDER): where a file finds the libraries, relative to itself:
# installed and in the build. Where they are the same the build needs no other; the one that CMake
# prepares for a change names the current folder too.
function(mirolta_run_path target folder build_folder)
  set_target_properties(${target} PROPERTIES
    BUILD_RPATH_USE_ORIGIN ON INSTALL_RPATH "$ORIGIN${folder}")
  if(folder STREQUAL build_folder AND NOT CMAKE_SKIP_INSTALL_RPATH)
    set_target_properties(${target} PROPERTIES BUILD_WITH_INSTALL_RPATH ON)
  endif()
endfunction()
