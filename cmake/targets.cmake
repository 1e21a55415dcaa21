# Settings that every target of ours shares, and the functions that make targets.

if(WIN32)
  set(TMW_OS windows)
else()
  set(TMW_OS linux)
endif()

add_library(tmw_settings INTERFACE)
target_include_directories(tmw_settings INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_options(tmw_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 reports operator+ of a literal and a std::string as overlapping (GCC bug 105651).
  target_compile_options(tmw_settings INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()
if(WIN32)
  # Windows 7 is the oldest system; static linking keeps the updater one self-contained file.
  target_compile_definitions(tmw_settings INTERFACE
    UNICODE WINVER=0x0601 _WIN32_WINNT=0x0601 _FILE_OFFSET_BITS=64
    $<$<EQUAL:${CMAKE_SIZEOF_VOID_P},4>:__MINGW_USE_VC2005_COMPAT>)  # times of 64 bits
  target_link_options(tmw_settings INTERFACE -static
    -Wl,--tsaware,--major-subsystem-version=6,--minor-subsystem-version=1)
else()
  target_compile_definitions(tmw_settings INTERFACE _FILE_OFFSET_BITS=64)
endif()
if(TMW_SANITIZE)
  target_compile_options(tmw_settings INTERFACE
    -fsanitize=${TMW_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tmw_settings INTERFACE -fsanitize=${TMW_SANITIZE})
endif()

# tmw_library(NAME SOURCES ... [PUBLIC libs] [PRIVATE libs]): a static library of one room.
function(tmw_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC tmw_settings ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
endfunction()

# tmw_program(NAME SOURCES ... [LIBS ...])
function(tmw_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE tmw_settings ${ARG_LIBS})
endfunction()

# tmw_test(NAME SOURCES ... [LIBS ...] [TIMEOUT seconds] [MAY_SKIP] [COMPANION]): one test program of
# one room. A skipped case fails the run unless the test is marked MAY_SKIP. COMPANION: the companion
# library lies beside the program, as it does in an installation.
function(tmw_test name)
  cmake_parse_arguments(ARG "MAY_SKIP;COMPANION" "TIMEOUT" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE tmw_settings test_support ${ARG_LIBS})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  if(ARG_COMPANION)
    add_dependencies(${name} companion_for_tests)
  endif()
  add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 300)
  endif()
  # No windows on the screen of whoever runs the tests, and no lines in their log.
  set_tests_properties(${name} PROPERTIES
    TIMEOUT ${ARG_TIMEOUT} ENVIRONMENT_MODIFICATION
    "TMW_FRONT_END=set:terminal;XDG_STATE_HOME=set:${CMAKE_BINARY_DIR}/tests/state")
  if(NOT ARG_MAY_SKIP)
    set_tests_properties(${name} PROPERTIES FAIL_REGULAR_EXPRESSION "\\[  SKIPPED ")
  endif()
endfunction()
