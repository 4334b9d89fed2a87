cmake_minimum_required(VERSION 3.25)
# Runs HOST with ARGUMENTS (separated by |); checks the exit STATUS, that standard error matches PATTERN
# and that nothing is printed.
string(REPLACE "|" ";" arguments "${ARGUMENTS}")
execute_process(COMMAND ${HOST} ${arguments}
  RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE errors)
if(NOT status STREQUAL STATUS OR NOT errors MATCHES "${PATTERN}" OR NOT output STREQUAL "")
  message(FATAL_ERROR "status ${status}, expected ${STATUS}\noutput:\n${output}errors:\n${errors}")
endif()
