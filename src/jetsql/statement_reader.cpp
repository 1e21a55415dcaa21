#include "jetsql/statement_reader.h"

#include <string_view>

#include "foundation/encodings.h"

namespace jetsql {
namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

}  // namespace

bool StatementReader::Take(char& c) {
  if (position_ == piece_.size()) {
    piece_ = source_();
    position_ = 0;
    if (piece_.empty()) return false;
  }
  c = piece_[position_++];
  if (c == '\n') {
    ++line_;
    column_ = 0;
  } else if (!tmw::ContinuesCharacter(c)) {
    ++column_;
  }
  return true;
}

void StatementReader::SkipLine() {
  char c = '\0';
  while (Take(c) && c != '\n') {
  }
}

bool StatementReader::Next(ScriptStatement& statement) {
  statement.text.clear();
  char closing = '\0';  // what ends the quote that the position is in
  char c = '\0';
  while (Take(c)) {
    if (statement.text.empty()) {
      if (IsBlank(c) || c == ';') continue;
      statement.line = line_;
      statement.column = column_;
    }
    if (closing != '\0') {
      if (c == closing) closing = '\0';
    } else if (c == '"' || c == '\'') {
      closing = c;
    } else if (c == '[') {
      closing = ']';
    } else if (c == ';') {
      break;
    }
    statement.text += c;
    if (statement.text == "--") {
      statement.text.clear();
      SkipLine();
    }
  }
  while (!statement.text.empty() && IsBlank(statement.text.back()))
    statement.text.pop_back();
  return !statement.text.empty();
}

}  // namespace jetsql
