# How a copy of the project is built in which scripts/mutate works; CMake includes it where the project begins. With
# NORVIK_TELL_FUNCTIONS the test programs tell which functions of src/ each test case enters.
set(mutate_parts ${CMAKE_CURRENT_LIST_DIR})

# When all targets are there.
function(norvik_prepare_workplace)
  foreach(compile norvik_module_compile norvik_program_compile)
    target_compile_options(${compile} INTERFACE -w)   # a change may leave a variable unused
  endforeach()
  if(NOT NORVIK_TELL_FUNCTIONS)
    return()
  endif()
  add_library(function_trace STATIC ${mutate_parts}/function_trace.cpp)
  target_link_libraries(function_trace PRIVATE norvik_compile)
  foreach(compile norvik_module_compile norvik_program_compile)
    target_compile_options(${compile} INTERFACE -g1 -finstrument-functions
      -finstrument-functions-exclude-file-list=include/c++,/packages/)   # libraries that are headers only
    target_link_libraries(${compile} INTERFACE function_trace)
  endforeach()
  target_sources(test_support INTERFACE ${mutate_parts}/test_trace.cpp)
  # What is no test program keeps what names its functions.
  foreach(image norvik norvik_tool norvik_open)
    get_target_property(options ${image} LINK_OPTIONS)
    list(REMOVE_ITEM options -s)
    set_property(TARGET ${image} PROPERTY LINK_OPTIONS ${options})
  endforeach()
endfunction()

cmake_language(DEFER DIRECTORY ${CMAKE_SOURCE_DIR} CALL norvik_prepare_workplace)
