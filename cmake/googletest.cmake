# GoogleTest is built from Debian's source package: one way for Linux, the sanitizers and Windows.
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
set(gtest_disable_pthreads OFF CACHE BOOL "" FORCE)
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
if(TMW_SANITIZE)
  target_compile_options(gtest PRIVATE -fsanitize=${TMW_SANITIZE})
endif()
