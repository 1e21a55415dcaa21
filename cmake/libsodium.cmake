# libsodium: Debian's library on Linux, built from Debian's source package for Windows. Expects the
# triplet that sqlite.cmake has set.
add_library(tmw_sodium INTERFACE)
if(WIN32)
  set(TMW_SODIUM_FOLDER ${CMAKE_BINARY_DIR}/libsodium)
  if(NOT EXISTS ${TMW_SODIUM_FOLDER}/libsodium.a)
    message(STATUS "Building libsodium for ${TMW_TRIPLET}")
    execute_process(
      COMMAND ${PROJECT_SOURCE_DIR}/scripts/build-libsodium-mingw.sh ${TMW_TRIPLET} ${TMW_SODIUM_FOLDER}
      COMMAND_ERROR_IS_FATAL ANY)
  endif()
  target_compile_definitions(tmw_sodium INTERFACE SODIUM_STATIC)
  target_include_directories(tmw_sodium SYSTEM INTERFACE ${TMW_SODIUM_FOLDER}/include)
  target_link_libraries(tmw_sodium INTERFACE ${TMW_SODIUM_FOLDER}/libsodium.a)
else()
  find_path(TMW_SODIUM_HEADERS sodium.h REQUIRED)
  find_library(TMW_SODIUM_LIBRARY sodium REQUIRED)
  target_link_libraries(tmw_sodium INTERFACE ${TMW_SODIUM_LIBRARY})
endif()
