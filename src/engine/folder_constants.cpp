#include "engine/folder_constants.h"

#include <cstddef>

#include "engine/engine_texts.h"
#include "foundation/error_handling.h"
#include "services/run_module.h"

namespace tmw {

std::string ParseConsts(const std::string& text,
                        const std::map<std::string, std::string>& constants) try {
  std::string result = text;
  std::size_t position = 0;
  while (position < result.size()) {
    const std::size_t open = result.find('{', position);
    if (open == std::string::npos) break;
    if (result.compare(open, 2, "{{") == 0) {
      const std::size_t close = result.find("}}", open + 2);
      if (close == std::string::npos) break;
      result.replace(open, close + 2 - open, "{" + result.substr(open + 2, close - open - 2) + "}");
      position = close;
      continue;
    }
    const std::size_t close = result.find('}', open + 1);
    if (close == std::string::npos) break;
    const std::string name = result.substr(open + 1, close - open - 1);
    const auto found = constants.find(name);
    if (found == constants.end()) RaiseProgramError(engine_texts::UnknownConstant(name));
    result.replace(open, close + 1 - open, found->second);
    position = open + found->second.size();
  }
  return result;
} catch (...) {
  ReRaiseError(kRunModule, "ParseConsts");
}

}  // namespace tmw
