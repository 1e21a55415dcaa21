#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "jetsql/text_input.h"

namespace jetsql {

// Reads rows by RFC 4180: values between separators, lines ended by CR LF or LF, a value in double
// quotes may hold all of them, with its quotes doubled. Nothing between two separators is Null, ""
// is an empty text.
class CsvReader {
 public:
  using Row = std::vector<std::optional<std::string>>;

  CsvReader(TextSource source, char separator)
      : source_(std::move(source)), separator_(separator) {}

  // Returns false behind the last row. An empty line is skipped, but below a first row of one value
  // it is a row of Null. Raises an error for a quote that is not closed, or is followed by text.
  bool Next(Row& row);

  // The line on which the last row began, from 1.
  std::size_t Line() const { return row_line_; }

 private:
  static constexpr int kEnd = -1;

  int Peek();
  int Take();
  void ReadValue(std::optional<std::string>& value);
  std::string ReadQuoted();

  TextSource source_;
  char separator_;
  std::string piece_;
  std::size_t position_ = 0;
  std::size_t line_ = 1;
  std::size_t row_line_ = 0;
  bool has_one_column_ = false;
};

}  // namespace jetsql
