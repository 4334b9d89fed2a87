# cmake -DSOURCE=folder -DBUILD=folder -DGENERATOR=name -P user_build_test.cmake
# Configures as one who knows nothing of the presets does. The module's targets need no package: none
# is found here.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${BUILD})
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${BUILD} -G ${GENERATOR} ${ARGUMENTS}
    -DMIROLTA_HOST=OFF -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON -DCMAKE_DISABLE_FIND_PACKAGE_OpenSSL=ON
    -DCMAKE_DISABLE_FIND_PACKAGE_Python3=ON -DCMAKE_FIND_ROOT_PATH=/nowhere
    -DCMAKE_FIND_ROOT_PATH_MODE_LIBRARY=ONLY -DCMAKE_FIND_ROOT_PATH_MODE_INCLUDE=ONLY
  RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "no configuration: ${output}")
endif()
file(STRINGS ${BUILD}/CMakeCache.txt type REGEX "^CMAKE_BUILD_TYPE:")
if(NOT type MATCHES "=Release$")
  message(FATAL_ERROR "${type} is not the release build")
endif()
file(STRINGS ${BUILD}/compile_commands.json commands REGEX "\"command\"")
list(LENGTH commands count)
if(count LESS 50)
  message(FATAL_ERROR "only ${count} commands")
endif()
if(commands MATCHES "-Werror")
  message(FATAL_ERROR "a warning would stop the build")
endif()
if(NOT commands MATCHES "-O3")
  message(FATAL_ERROR "it is not optimised")
endif()
message("${count} commands, none with -Werror")
