#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "ports/database.h"

namespace tmw {

class HeldRelations;
class TableTextReader;

// Imports a table from its text: the table of that name is replaced. After a faulty text the table
// may be empty or missing: import into a copy, or into an engine whose transactions take
// definitions back. Errors name the file, the line and the reason.
class ImpTable {
 public:
  // The table that is expected; a text that describes another one is refused. Empty: any.
  void SetTableName(std::string name) { table_name_ = std::move(name); }
  const std::string& TableName() const { return table_name_; }

  // Those of the table are taken out before it is replaced, for the caller to put back. Without
  // this a table that relations name may not be replaceable.
  void SetRelations(HeldRelations& relations) { relations_ = &relations; }

  // The file is UTF-16, as dictionaries are delivered, UTF-8 with its mark, or code page 1251. A
  // ".table" file must carry rows, a ".tablestruct" file must not: its table becomes empty.
  void ImportFromFile(const std::string& path, ports::Database& database);

  // The same for a text in UTF-8 that comes in pieces (TableTextReader::Source); the label names it
  // in errors. With rows the text must carry them, without them it must not.
  void ImportFromSource(std::function<std::string()> source, bool has_rows,
                        const std::string& label, ports::Database& database);

  // A text that carries rows.
  void ImportFromString(const std::string& text, ports::Database& database);

  // Of the text imported last.
  std::int64_t RowCount() const { return row_count_; }

 private:
  void Import(TableTextReader& reader, bool has_rows, const std::string& label,
              ports::Database& database);
  void Replace(TableTextReader& reader, bool has_rows, ports::Database& database);
  void Fill(TableTextReader& reader, const ports::TableDefinition& table,
            ports::Database& database);

  std::string table_name_;
  HeldRelations* relations_ = nullptr;
  std::int64_t row_count_ = 0;
  std::size_t blamed_line_ = 0;  // for errors; 0: the line that was read last
};

}  // namespace tmw
