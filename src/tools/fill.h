#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tools {

// The text with the first value in place of %1, the second in place of %2, up to %9. A mark without
// a value stays.
std::string Fill(std::string_view text, const std::vector<std::string>& values);

}  // namespace tools
