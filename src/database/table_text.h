#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/database_types.h"

namespace tmw {

// Reads a table's text front to back; table_export.h has its form. Whatever does not follow it is
// error 1001 with the reason; Line() then is the line to blame.
class TableTextReader {
 public:
  // The text must outlive the reader.
  explicit TableTextReader(std::string_view text) : text_(text) {}

  // The structure; to be called first.
  platform::TableDefinition ReadStructure();

  // Behind the structure: true when rows follow.
  bool ReadRowsOpener();

  // The next row's DB strings, as many as the table has fields; false at the rows' end.
  bool ReadRow(std::vector<std::string_view>& values);

  // Behind the rows, or the structure when there are none.
  void ReadEnd();

  // The number of the line read last, from 1; 0 before the first.
  std::size_t Line() const { return line_; }
  // The line that describes the table's index number i.
  std::size_t IndexLine(std::size_t i) const { return index_lines_[i]; }

 private:
  std::string_view Peek(const char* expected) const;
  std::string_view Take(const char* expected);
  void ReadField(std::string_view line, platform::TableDefinition& table) const;
  void ReadIndex(std::string_view line, platform::TableDefinition& table) const;

  std::string_view text_;
  std::size_t position_ = 0;
  std::size_t line_ = 0;
  std::size_t field_count_ = 0;
  std::vector<std::size_t> index_lines_;
};

}  // namespace tmw
