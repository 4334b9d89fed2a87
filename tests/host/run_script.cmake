cmake_minimum_required(VERSION 3.25)
# Runs SCRIPT on HOST in the empty folder SCRATCH, without input, and compares the exit status, standard output
# (exactly, with the .expected file beside the script) and standard error.
#
# Comments of the script give what differs from status 0, no arguments and no errors:
#   // runs: PATH           run this script of EXAMPLES instead
#   // arguments: A|B       the arguments, separated by |
#   // file: NAME|TEXT      a file to create before the run
#   // status: N
#   // errors: PATTERN      a regular expression for all of standard error
#   // wine: REASON         of no matter here (tests/worlds/both_scripts.py)
# EXPECTED names another file with the output. If there is NAME.errors beside the script, standard error
# must be its text, with the name of the script in place of its path.

file(STRINGS ${SCRIPT} lines REGEX "^// [a-z]+: " ENCODING UTF-8)
set(script ${SCRIPT})
set(arguments "")
set(expected_status 0)
set(pattern "^$")
file(REMOVE_RECURSE ${SCRATCH})
file(MAKE_DIRECTORY ${SCRATCH})
foreach(line IN LISTS lines)
  string(REGEX MATCH "^// ([a-z]+): (.*)$" matched "${line}")
  set(value "${CMAKE_MATCH_2}")
  if(CMAKE_MATCH_1 STREQUAL "runs")
    set(script ${EXAMPLES}/${value})
  elseif(CMAKE_MATCH_1 STREQUAL "arguments")
    string(REPLACE "|" ";" arguments "${value}")
  elseif(CMAKE_MATCH_1 STREQUAL "file")
    string(REGEX MATCH "^([^|]*)[|](.*)$" matched "${value}")
    file(WRITE "${SCRATCH}/${CMAKE_MATCH_1}" "${CMAKE_MATCH_2}")
  elseif(CMAKE_MATCH_1 STREQUAL "status")
    set(expected_status ${value})
  elseif(CMAKE_MATCH_1 STREQUAL "errors")
    set(pattern "^${value}\n$")
  elseif(NOT CMAKE_MATCH_1 STREQUAL "wine")
    message(FATAL_ERROR "unknown line: ${line}")
  endif()
endforeach()

execute_process(COMMAND ${HOST} ${script} ${arguments} WORKING_DIRECTORY ${SCRATCH}
  INPUT_FILE /dev/null RESULT_VARIABLE status OUTPUT_FILE ${SCRATCH}/.output ERROR_VARIABLE errors)
file(READ ${SCRATCH}/.output output)
set(expected_file "${EXPECTED}")
if(NOT EXPECTED)
  string(REGEX REPLACE "\\.js$" ".expected" expected_file ${SCRIPT})
endif()
file(READ ${expected_file} expected)
if(NOT status STREQUAL expected_status)
  message(FATAL_ERROR "status ${status}, expected ${expected_status}\n${output}${errors}")
endif()
if(NOT output STREQUAL expected)
  message(FATAL_ERROR "standard output differs from ${expected_file}:\n${output}${errors}")
endif()
string(REGEX REPLACE "\\.js$" ".errors" errors_file ${SCRIPT})
if(EXISTS ${errors_file})
  file(READ ${errors_file} expected)
  get_filename_component(name ${script} NAME)
  string(REPLACE "${script}" "${name}" errors "${errors}")
  if(NOT errors STREQUAL expected)
    message(FATAL_ERROR "standard error differs from ${errors_file}:\n${errors}")
  endif()
elseif(NOT errors MATCHES "${pattern}")
  message(FATAL_ERROR "standard error does not match ${pattern}:\n${errors}")
endif()
