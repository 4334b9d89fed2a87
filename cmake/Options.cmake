# All options of the project; docs/systems.md lists them.
option(MIROLTA_HOST "Build the script host, which needs Duktape" ${PROJECT_IS_TOP_LEVEL})
option(MIROLTA_INSTALL "Install what is built, as part of the installation of the whole build"
  ${PROJECT_IS_TOP_LEVEL})
option(MIROLTA_TESTS "Build the tests, which need the packages of scripts/packages.txt" OFF)
option(MIROLTA_WINE_TESTS "Run the tests of the Windows builds too" OFF)
option(MIROLTA_FUZZ "Build the harnesses of fuzz/ for the compiler's fuzzer, which clang has" OFF)
option(MIROLTA_BENCH "Build the benchmark, which needs the peers it measures" OFF)
option(MIROLTA_PORTABLE_ONLY "Leave out every processor-specific kernel" OFF)
option(MIROLTA_UP_TO_AVX2 "Choose no kernel that needs more than AVX2, AES and SHA instructions" OFF)
set(MIROLTA_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize takes them")
