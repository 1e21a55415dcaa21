#include "database/statement_cutter.h"

#include <cstddef>
#include <utility>

#include "foundation/text.h"

namespace tmw {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

void AddStatement(std::string_view text, std::vector<std::string>& statements) {
  std::string statement = TrimCharacters(text, kBlanks);
  if (!statement.empty()) statements.push_back(std::move(statement));
}

}  // namespace

std::vector<std::string> CutStatements(std::string_view text) {
  std::vector<std::string> statements;
  char closing = '\0';  // what ends the quote that the position is in
  std::size_t start = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (closing != '\0') {
      if (c == closing) closing = '\0';
    } else if (c == '"' || c == '\'') {
      closing = c;
    } else if (c == '[') {
      closing = ']';
    } else if (c == ';') {
      AddStatement(text.substr(start, i - start), statements);
      start = i + 1;
    }
  }
  AddStatement(text.substr(start), statements);
  return statements;
}

}  // namespace tmw
