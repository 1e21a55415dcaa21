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

std::vector<std::string> StatementWords(std::string_view statement) {
  std::vector<std::string> words;
  for (std::size_t i = 0; i < statement.size();) {
    const char c = statement[i];
    if (kBlanks.find(c) != std::string_view::npos) {
      ++i;
      continue;
    }
    const bool is_name = c == '[' || c == '`';
    const std::size_t start = is_name ? i + 1 : i;
    const std::size_t end = is_name ? statement.find(c == '[' ? ']' : '`', start)
                                    : statement.find_first_of(" \t\r\n[`", start);
    words.emplace_back(statement.substr(start, end - start));
    if (end == std::string_view::npos) break;
    i = is_name ? end + 1 : end;
  }
  return words;
}

}  // namespace tmw
