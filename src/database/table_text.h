#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ports/database_types.h"

namespace tmw {

// Reads a table's text front to back; table_export.h has its form. Whatever does not follow it is
// error 1001 with the reason; Line() then is the line to blame.
class TableTextReader {
 public:
  // Gives the next piece of a text, whatever its length; an empty one at the end.
  using Source = std::function<std::string()>;

  // The text must outlive the reader.
  explicit TableTextReader(std::string_view text) : text_(text) {}
  // Holds no more of the text than a piece and a line.
  explicit TableTextReader(Source source) : source_(std::move(source)) {}
  TableTextReader(const TableTextReader&) = delete;
  TableTextReader& operator=(const TableTextReader&) = delete;

  // The structure; to be called first.
  ports::TableDefinition ReadStructure();

  // Behind the structure: true when rows follow.
  bool ReadRowsOpener();

  // The next row's DB strings, as many as the table has fields, valid until the next call; false at
  // the rows' end.
  bool ReadRow(std::vector<std::string_view>& values);

  // Behind the rows, or the structure when there are none.
  void ReadEnd();

  // The number of the line read last, from 1; 0 before the first.
  std::size_t Line() const { return line_; }
  // The line that describes the table's index number i.
  std::size_t IndexLine(std::size_t i) const { return index_lines_[i]; }

 private:
  bool ReadPiece();
  std::string_view Peek(const char* expected);
  std::string_view Take(const char* expected);
  void ReadField(std::string_view line, ports::TableDefinition& table) const;
  void ReadIndex(std::string_view line, ports::TableDefinition& table) const;

  Source source_;
  std::string held_;       // what has been read of the source and not yet been passed
  std::string_view text_;  // the whole text, or what is held
  std::size_t position_ = 0;
  std::size_t line_ = 0;
  std::size_t field_count_ = 0;
  std::vector<std::size_t> index_lines_;
};

}  // namespace tmw
