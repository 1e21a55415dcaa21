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
if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
  # What is built does not depend on the folder it is built in.
  target_compile_options(tmw_settings INTERFACE
    -ffile-prefix-map=${PROJECT_BINARY_DIR}=build -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
endif()
if(WIN32)
  # Level 2 and unused sections left out: a fifth smaller than level 3, and no slower but for the rooms
  # that unpack and hash, which ask for it themselves. Link-time optimisation fails in GCC 12 when
  # symbols are kept.
  set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
  # Windows 7 is the oldest system; static linking keeps the updater one self-contained file.
  target_compile_definitions(tmw_settings INTERFACE
    COMPANION_CALL=__stdcall UNICODE WINVER=0x0601 _WIN32_WINNT=0x0601 _FILE_OFFSET_BITS=64
    $<$<EQUAL:${CMAKE_SIZEOF_VOID_P},4>:__MINGW_USE_VC2005_COMPAT>)  # times of 64 bits
  # -g1: functions and lines for the symbol files.
  target_compile_options(tmw_settings INTERFACE
    -fstack-protector-strong -g1 -ffunction-sections -fdata-sections)
  target_link_options(tmw_settings INTERFACE -static -fstack-protector-strong
    -Wl,--gc-sections,--no-insert-timestamp
    -Wl,--tsaware,--dynamicbase,--nxcompat,--major-subsystem-version=6,--minor-subsystem-version=1
    $<IF:$<EQUAL:${CMAKE_SIZEOF_VOID_P},4>,-Wl$<COMMA>--large-address-aware,-Wl$<COMMA>--high-entropy-va>)
else()
  target_compile_definitions(tmw_settings INTERFACE COMPANION_CALL= _FILE_OFFSET_BITS=64)
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

# tmw_describe(NAME DESCRIPTION): gives a program or library the version resource and the manifest that
# Windows reads.
function(tmw_describe name description)
  get_target_property(kind ${name} TYPE)
  # The system looks for the manifest of a library under the number 2.
  if(kind STREQUAL "EXECUTABLE")
    set(TMW_FILE_TYPE VFT_APP)
    set(TMW_MANIFEST_NUMBER 1)
  else()
    set(TMW_FILE_TYPE VFT_DLL)
    set(TMW_MANIFEST_NUMBER 2)
  endif()
  get_target_property(TMW_NAME ${name} OUTPUT_NAME)
  if(NOT TMW_NAME)
    set(TMW_NAME ${name})
  endif()
  set(TMW_FILE_NAME ${TMW_NAME}$<IF:$<STREQUAL:${kind},EXECUTABLE>,.exe,.dll>)
  set(TMW_DESCRIPTION ${description})
  set(resources ${PROJECT_SOURCE_DIR}/src/platform/windows/resources)
  set(TMW_MANIFEST ${CMAKE_CURRENT_BINARY_DIR}/${name}.manifest)
  configure_file(${resources}/manifest.in ${TMW_MANIFEST} @ONLY)
  set(resource ${CMAKE_CURRENT_BINARY_DIR}/${name}_version.rc)
  configure_file(${resources}/version.rc.in ${resource}.in @ONLY)
  file(GENERATE OUTPUT ${resource} INPUT ${resource}.in)
  enable_language(RC)
  # Without it windres takes the bytes of UTF-8 for characters.
  set_source_files_properties(${resource} PROPERTIES
    COMPILE_OPTIONS --codepage=65001 OBJECT_DEPENDS ${TMW_MANIFEST})
  target_sources(${name} PRIVATE ${resource})
endfunction()

# tmw_ship(NAME DESCRIPTION): a program or library that users get. On Windows it is described, and its
# symbols lie in <build>/symbols, for the addresses of a crash.
function(tmw_ship name description)
  if(NOT WIN32)
    return()
  endif()
  tmw_describe(${name} ${description})
  # The tools below write the time into the header otherwise.
  set(without_time ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0)
  set(symbols ${PROJECT_BINARY_DIR}/symbols/$<TARGET_FILE_NAME:${name}>.debug)
  add_custom_command(TARGET ${name} POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/symbols
    COMMAND ${without_time} ${CMAKE_OBJCOPY} --only-keep-debug $<TARGET_FILE:${name}> ${symbols}
    COMMAND ${without_time} ${CMAKE_STRIP} --strip-all $<TARGET_FILE:${name}>
    COMMAND ${without_time} ${CMAKE_OBJCOPY} --add-gnu-debuglink=${symbols} $<TARGET_FILE:${name}>
    VERBATIM)
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
