# zlib_of_system: on Windows linked in whole, so that there is no second file that could be missing.
if(WIN32)
  find_library(TMW_ZLIB NAMES libz.a REQUIRED)
  find_path(TMW_ZLIB_INCLUDE zlib.h REQUIRED)
  add_library(zlib_of_system STATIC IMPORTED GLOBAL)
  set_target_properties(zlib_of_system PROPERTIES
    IMPORTED_LOCATION ${TMW_ZLIB}
    INTERFACE_INCLUDE_DIRECTORIES ${TMW_ZLIB_INCLUDE})
else()
  find_package(ZLIB REQUIRED)
  add_library(zlib_of_system INTERFACE)
  target_link_libraries(zlib_of_system INTERFACE ZLIB::ZLIB)
endif()
