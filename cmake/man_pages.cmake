# The manual pages: made of what a program answers to --help and of the sections that docs/man holds
# about it, so that page and program cannot differ.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
find_program(GZIP gzip REQUIRED)

# tmw_man_page(PROGRAM RESULT): a rule that makes <build>/man/<program>.1.gz. RESULT names the file.
function(tmw_man_page program result)
  set(page ${PROJECT_BINARY_DIR}/man/${program}.1)
  set(sections ${PROJECT_SOURCE_DIR}/docs/man/${program}.txt)
  set(maker ${PROJECT_SOURCE_DIR}/packaging/make_man_page.py)
  add_custom_command(OUTPUT ${page}.gz
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/man
    COMMAND Python3::Interpreter ${maker} $<TARGET_FILE:${program}> ${sections} ${PROJECT_VERSION} ${page}
    COMMAND ${GZIP} -9nf ${page}
    DEPENDS ${program} ${sections} ${maker}
    VERBATIM)
  add_custom_target(${program}_man ALL DEPENDS ${page}.gz)
  set(${result} ${page}.gz PARENT_SCOPE)
endfunction()
