# clang's MemorySanitizer with the libraries that scripts/memory-libraries.sh builds: it would report as uninitialised
# what a library without its instrumentation has written.
set(CMAKE_CXX_COMPILER clang++)
get_filename_component(libraries build/memory-libraries ABSOLUTE BASE_DIR ${CMAKE_CURRENT_LIST_DIR}/..)
list(APPEND CMAKE_PREFIX_PATH ${libraries})
set(OPENSSL_ROOT_DIR ${libraries})
set(CMAKE_CXX_FLAGS_INIT
  "-fsanitize=memory -fsanitize-memory-track-origins -stdlib=libc++ -isystem ${libraries}/include/c++/v1")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-L${libraries}/lib -Wl,-rpath,${libraries}/lib -fno-sanitize-link-runtime")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${CMAKE_SHARED_LINKER_FLAGS_INIT}")
# The sanitizer's part for C only: its part for C++ defines operator new, which tests define themselves.
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libclang_rt.msan-${CMAKE_HOST_SYSTEM_PROCESSOR}.a
  OUTPUT_VARIABLE runtime OUTPUT_STRIP_TRAILING_WHITESPACE)
set(CMAKE_EXE_LINKER_FLAGS_INIT "${CMAKE_SHARED_LINKER_FLAGS_INIT} -Wl,--whole-archive ${runtime} \
-Wl,--no-whole-archive -Wl,--dynamic-list=${runtime}.syms -lpthread -lrt -lm -ldl -lresolv")
