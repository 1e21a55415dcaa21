#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ports/database_types.h"

namespace tmw {

// Reads a table's text, whose format table_export.h describes, from front to back. A fault in it
// raises error 1001 with the reason; Line() then is the line of the fault.
class TableTextReader {
 public:
  // Returns the next piece of a text, of any length; an empty one at the end.
  using Source = std::function<std::string()>;

  // The text must outlive the reader.
  explicit TableTextReader(std::string_view text) : text_(text) {}
  // Keeps no more of the text in memory than a piece and a line.
  explicit TableTextReader(Source source) : source_(std::move(source)) {}
  TableTextReader(const TableTextReader&) = delete;
  TableTextReader& operator=(const TableTextReader&) = delete;

  // Reads the structure; to be called first.
  ports::TableDefinition ReadStructure();

  // To be called after the structure. Returns true if rows follow.
  bool ReadRowsOpener();

  // Reads the DB strings of the next row, one per field of the table, valid until the next call.
  // Returns false at the end of the rows.
  bool ReadRow(std::vector<std::string_view>& values);

  // To be called after the rows, or after the structure if there are none.
  void ReadEnd();

  // The number of the line read last, from 1; 0 before the first.
  std::size_t Line() const { return line_; }
  // The number of the line that describes index i.
  std::size_t IndexLine(std::size_t i) const { return index_lines_[i]; }

 private:
  bool ReadPiece();
  std::string_view Peek(const char* expected);
  std::string_view Take(const char* expected);
  void ReadField(std::string_view line, ports::TableDefinition& table) const;
  void ReadIndex(std::string_view line, ports::TableDefinition& table) const;

  Source source_;
  std::string held_;       // read from the source, not consumed yet
  std::string_view text_;  // the whole text, or what is held
  std::size_t position_ = 0;
  std::size_t line_ = 0;
  std::size_t field_count_ = 0;
  std::vector<std::size_t> index_lines_;
};

}  // namespace tmw
