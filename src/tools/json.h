#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace tools {

// Members come in the order in which they are added.
using Json = nlohmann::ordered_json;

// The value on one line, with the line's end. Malformed UTF-8, which names on the disk may be,
// becomes U+FFFD.
inline std::string JsonLine(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace tools
