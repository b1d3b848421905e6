# How every target of the project is compiled, and how the programs and the DLL are linked.

add_library(norvik_compile INTERFACE)
target_compile_options(norvik_compile INTERFACE
  -Wall -Wextra -Werror -Wdate-time -Wformat=2 -Wshadow=local
  -fstack-protector-strong
  -ffunction-sections -fdata-sections
  # The same bytes from every folder and on every day.
  -ffile-prefix-map=${CMAKE_SOURCE_DIR}/=
  -ffile-prefix-map=${CMAKE_BINARY_DIR}/=)
target_compile_definitions(norvik_compile INTERFACE
  WINVER=0x0601 _WIN32_WINNT=0x0601 NTDDI_VERSION=0x06010000 _WIN32_IE=0x0800)
target_include_directories(norvik_compile INTERFACE ${CMAKE_SOURCE_DIR}/src)

# The module's own code does without exceptions and type information: a host's process is not ours to unwind. -Os and not
# -O2: see "Size or speed" in ARCHITECTURE.md.
add_library(norvik_module_compile INTERFACE)
target_link_libraries(norvik_module_compile INTERFACE norvik_compile)
target_compile_options(norvik_module_compile INTERFACE -Os -fno-exceptions -fno-rtti
  # What only an exception on its way would read. 64-bit Windows unwinds by its own tables, which stay.
  $<$<EQUAL:${CMAKE_SIZEOF_VOID_P},4>:-fno-asynchronous-unwind-tables>)

add_library(norvik_link INTERFACE)
target_link_options(norvik_link INTERFACE
  -static                       # nothing beside the system's own DLLs is needed at run time
  -fstack-protector-strong
  -Wl,--gc-sections
  -Wl,--no-insert-timestamp
  -Wl,--dynamicbase -Wl,--nxcompat
  $<$<EQUAL:${CMAKE_SIZEOF_VOID_P},8>:-Wl,--high-entropy-va>)

# Test programs of 64 bit are compiled by clang (scripts/compile-test-program). A template argument forgets a system function's
# attributes, and clang does not know the format ms_printf.
add_library(norvik_test_compile INTERFACE)
target_link_libraries(norvik_test_compile INTERFACE norvik_compile)
target_compile_options(norvik_test_compile INTERFACE -Wno-ignored-attributes)

# Test programs have a linker that is ten times as fast.
add_library(norvik_test_link INTERFACE)
target_link_libraries(norvik_test_link INTERFACE norvik_link)
target_link_options(norvik_test_link INTERFACE "SHELL:-wrapper ${CMAKE_SOURCE_DIR}/scripts/link-test-program")

# The programs beside the module are processes of their own, and use the standard library as it is meant.
add_library(norvik_program_compile INTERFACE)
target_link_libraries(norvik_program_compile INTERFACE norvik_compile)
target_compile_options(norvik_program_compile INTERFACE -Os)

# What was linked into a target, library by library, stands in <target>.map beside it: the packages tell of it.
function(norvik_map name)
  target_link_options(${name} PRIVATE -Wl,-Map=${CMAKE_BINARY_DIR}/$<TARGET_FILE_NAME:${name}>.map)
endfunction()

# norvik_folder(NAME [PROGRAM] SOURCES ... USES ... [HEADERS ...]): the static library of one folder below src/, of the module
# or, with PROGRAM, of what stands beside it. USES names the folders and the system libraries that it builds on. HEADERS are
# compiled once for all files of the folder, and stand before each; a folder that names none has those of common or, with
# PROGRAM, of advice. A file includes all the same what it needs: clang-tidy compiles it without them.
function(norvik_folder name)
  cmake_parse_arguments(ARG "PROGRAM" "" "SOURCES;USES;HEADERS" ${ARGN})
  set(compile norvik_module_compile)
  set(headers_of common)
  if(ARG_PROGRAM)
    set(compile norvik_program_compile)
    set(headers_of advice)
  endif()
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${compile} PUBLIC ${ARG_USES})
  if(ARG_HEADERS)
    target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
  else()
    target_precompile_headers(${name} REUSE_FROM ${headers_of})
  endif()
endfunction()

# norvik_program(TARGET NAME DESCRIPTION SUBSYSTEM LIBRARY): the program build/<width>/NAME.exe from Main.cpp and the folder's
# library, with what the system shows of it. SUBSYSTEM is console or windows.
function(norvik_program target file description subsystem library)
  configure_file(${CMAKE_SOURCE_DIR}/cmake/program.rc.in ${target}.rc @ONLY)
  add_executable(${target} Main.cpp ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
  target_link_libraries(${target} PRIVATE ${library} norvik_program_compile norvik_link)
  target_link_options(${target} PRIVATE -s -municode -m${subsystem})
  norvik_map(${target})
  set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/${target}.rc PROPERTIES
    OBJECT_DEPENDS ${CMAKE_SOURCE_DIR}/cmake/program.manifest)
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ${file} RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
endfunction()
