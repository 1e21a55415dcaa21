#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace jetsql {

// The statements of a script, cut at ";" outside of quotes and square brackets, trimmed; empty ones
// are left out.
std::vector<std::string> CutStatements(std::string_view script);

// A statement that gives rows.
bool IsSelect(std::string_view statement);

}  // namespace jetsql
