#include "jetsql/csv_reader.h"

#include <algorithm>
#include <cstddef>

#include "foundation/program_error.h"
#include "jetsql/jetsql_texts.h"

namespace jetsql {

int CsvReader::Peek() {
  if (position_ == piece_.size()) {
    piece_ = source_();
    position_ = 0;
    if (piece_.empty()) return kEnd;
  }
  return static_cast<unsigned char>(piece_[position_]);
}

int CsvReader::Take() {
  const int c = Peek();
  if (c == kEnd) return c;
  ++position_;
  if (c == '\n') ++line_;
  return c;
}

std::string CsvReader::ReadQuoted() {
  std::string value;
  Take();
  for (;;) {
    const int c = Take();
    if (c == kEnd) tmw::RaiseProgramError(Say(texts::kOpenQuote, {std::to_string(row_line_)}));
    if (c != '"') {
      value += static_cast<char>(c);
    } else if (Peek() == '"') {
      value += static_cast<char>(Take());
    } else {
      break;
    }
  }
  const int next = Peek();
  if (next != kEnd && next != separator_ && next != '\r' && next != '\n')
    tmw::RaiseProgramError(Say(texts::kTextBehindQuote, {std::to_string(line_)}));
  return value;
}

void CsvReader::ReadValue(std::optional<std::string>& value) {
  if (Peek() == '"') {
    value = ReadQuoted();
    return;
  }
  // The memory of the row before is used again.
  if (!value) value.emplace();
  value->clear();
  for (int c = Peek(); c != kEnd && c != separator_ && c != '\r' && c != '\n'; c = Peek()) {
    // As much as is at hand at once.
    const std::size_t begin = position_;
    while (position_ < piece_.size() && piece_[position_] != separator_ &&
           piece_[position_] != '\r' && piece_[position_] != '\n')
      ++position_;
    value->append(piece_, begin, position_ - begin);
  }
  if (value->empty()) value.reset();
}

bool CsvReader::Next(Row& row) {
  while (!has_one_column_ && (Peek() == '\r' || Peek() == '\n'))
    Take();
  if (Peek() == kEnd) return false;
  const bool is_first = row_line_ == 0;
  row_line_ = line_;
  for (std::size_t count = 1;; ++count) {
    row.resize(std::max(row.size(), count));
    ReadValue(row[count - 1]);
    const int c = Take();
    if (c == separator_) continue;
    row.resize(count);
    if (c == '\r' && Peek() == '\n') Take();
    if (is_first) has_one_column_ = row.size() == 1;
    return true;
  }
}

}  // namespace jetsql
