#pragma once

#include <cstddef>
#include <string>

#include "jetsql/text_input.h"

namespace jetsql {

// One statement of a script and where it begins.
struct ScriptStatement {
  std::string text;
  std::size_t line = 1;
  std::size_t column = 1;  // in characters
};

// Reads a script by statements, which end at each ";" outside '…', "…" and […]. Lines that begin
// with "--" between statements are comments. No more than a piece and a statement is in memory.
class StatementReader {
 public:
  explicit StatementReader(TextSource source) : source_(std::move(source)) {}

  // Returns false behind the last statement. Empty statements are skipped.
  bool Next(ScriptStatement& statement);

 private:
  bool Take(char& c);
  void SkipLine();

  TextSource source_;
  std::string piece_;
  std::size_t position_ = 0;
  std::size_t line_ = 1;
  std::size_t column_ = 0;
};

}  // namespace jetsql
