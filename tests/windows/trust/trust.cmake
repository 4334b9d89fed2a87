# The tests of trust as Windows programs. What they need of the portable runtime has a form of its own here,
# in headers of the same names.
set(windows_trust ${CMAKE_CURRENT_LIST_DIR})
foreach(unit failing_calls import_patch program_as_module registry_in_memory test_hooks)
  list(APPEND trust_support ${windows_trust}/${unit}.cpp)
endforeach()
set(trust_heap trust_heap.cpp ${windows_trust}/system_heap.cpp)
set(trust_stack wiping_stack.cpp ${windows_trust}/other_stack.cpp)

function(mirolta_windows_trust_test name)
  target_include_directories(${name} BEFORE PRIVATE ${windows_trust})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/trust)
endfunction()
