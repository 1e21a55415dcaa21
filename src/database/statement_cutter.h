#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tmw {

// Splits a text into statements at each ";" outside '…', "…" and […]. Blanks and line breaks around
// them and empty statements are dropped. A quote that is never closed extends to the end.
std::vector<std::string> CutStatements(std::string_view text);

// The words of one statement, between blanks; a name in […] or `…` is one, without its brackets.
std::vector<std::string> StatementWords(std::string_view statement);

}  // namespace tmw
