#include "tools/fill.h"

#include <cstddef>

namespace tools {

std::string Fill(std::string_view text, const std::vector<std::string>& values) {
  std::string filled;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char mark = text[i] == '%' && i + 1 < text.size() ? text[i + 1] : '0';
    if (mark < '1' || mark > '9' || static_cast<std::size_t>(mark - '0') > values.size()) {
      filled += text[i];
    } else {
      filled += values[static_cast<std::size_t>(mark - '1')];
      ++i;
    }
  }
  return filled;
}

}  // namespace tools
