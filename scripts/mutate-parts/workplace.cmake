# How a copy of the project is built in which scripts/mutate works; CMake includes it where the project begins. With
# NORVIK_TELL_FUNCTIONS the test programs tell which functions of src/ each test case enters.
set(mutate_parts ${CMAKE_CURRENT_LIST_DIR})

# When all targets are there.
function(norvik_prepare_workplace)
  target_compile_options(norvik_module_compile INTERFACE -w)   # a change may leave a variable unused
  if(NOT NORVIK_TELL_FUNCTIONS)
    return()
  endif()
  add_library(function_trace STATIC ${mutate_parts}/function_trace.cpp)
  target_link_libraries(function_trace PRIVATE norvik_compile)
  target_compile_options(norvik_module_compile INTERFACE -g1 -finstrument-functions)
  target_link_libraries(norvik_module_compile INTERFACE function_trace)
  target_sources(test_support INTERFACE ${mutate_parts}/test_trace.cpp)
  # The DLL keeps what names its functions.
  get_target_property(options norvik LINK_OPTIONS)
  list(REMOVE_ITEM options -s)
  set_property(TARGET norvik PROPERTY LINK_OPTIONS ${options})
endfunction()

cmake_language(DEFER DIRECTORY ${CMAKE_SOURCE_DIR} CALL norvik_prepare_workplace)
