#include "jetsql/script.h"

#include <cstddef>

#include "foundation/text.h"

namespace jetsql {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

void AddStatement(std::string_view text, std::vector<std::string>& statements) {
  std::string statement = tmw::TrimCharacters(text, kBlanks);
  if (!statement.empty()) statements.push_back(std::move(statement));
}

}  // namespace

std::vector<std::string> CutStatements(std::string_view script) {
  std::vector<std::string> statements;
  char closing = '\0';  // what ends the quoted stretch that the position is in
  std::size_t start = 0;
  for (std::size_t i = 0; i < script.size(); ++i) {
    const char c = script[i];
    if (closing != '\0') {
      if (c == closing) closing = '\0';
    } else if (c == '"' || c == '\'') {
      closing = c;
    } else if (c == '[') {
      closing = ']';
    } else if (c == ';') {
      AddStatement(script.substr(start, i - start), statements);
      start = i + 1;
    }
  }
  AddStatement(script.substr(start), statements);
  return statements;
}

bool IsSelect(std::string_view statement) {
  constexpr std::string_view kSelect = "select";
  return tmw::EqualIgnoringCase(statement.substr(0, kSelect.size()), kSelect);
}

}  // namespace jetsql
