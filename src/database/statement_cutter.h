#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tmw {

// The statements of a text, cut at ";" outside of '…', "…" and […], without blanks and line breaks
// around them; empty ones are left out. A quote that is never closed reaches to the text's end.
std::vector<std::string> CutStatements(std::string_view text);

}  // namespace tmw
