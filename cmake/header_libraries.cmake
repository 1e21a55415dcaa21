# Libraries of headers. They are copied into the build folder because a cross compiler must not look
# into the system's own include folder.
find_path(TMW_JSON_HEADERS nlohmann/json.hpp PATHS /usr/include REQUIRED
  NO_CMAKE_FIND_ROOT_PATH)
file(COPY ${TMW_JSON_HEADERS}/nlohmann DESTINATION ${CMAKE_BINARY_DIR}/json)
add_library(tmw_json INTERFACE)
target_include_directories(tmw_json SYSTEM INTERFACE ${CMAKE_BINARY_DIR}/json)

find_path(TMW_CXXOPTS_HEADERS cxxopts.hpp PATHS /usr/include REQUIRED
  NO_CMAKE_FIND_ROOT_PATH)
file(COPY ${TMW_CXXOPTS_HEADERS}/cxxopts.hpp DESTINATION ${CMAKE_BINARY_DIR}/cxxopts)
add_library(tmw_cxxopts INTERFACE)
target_include_directories(tmw_cxxopts SYSTEM INTERFACE ${CMAKE_BINARY_DIR}/cxxopts)
target_compile_definitions(tmw_cxxopts INTERFACE CXXOPTS_NO_REGEX)
