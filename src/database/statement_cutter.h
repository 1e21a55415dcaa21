#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tmw {

// Splits a text into statements at each ";" outside '…', "…" and […]. Blanks and line breaks around
// them and empty statements are dropped. A quote that is never closed extends to the end.
std::vector<std::string> CutStatements(std::string_view text);

}  // namespace tmw
