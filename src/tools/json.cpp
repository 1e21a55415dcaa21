#include "tools/json.h"

namespace tools {

std::string JsonLine(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace tools
