#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "jet/file/definition_parser.h"
#include "jet/file/system_tables.h"
#include "jet/file/table_cursor.h"

namespace jet::file {

// The definition that begins on the page.
TableLayout ReadLayout(PageSource& source, PageNumber page, PageNumber from);

// The records of a system table, columns named by their ids in the list of system_tables.h. Real
// files may give them other ids and types of their own are not expected, so columns are found by
// name.
class SystemRows {
 public:
  // Throws Damage when the table lacks a column or has one of another type. The source must
  // outlive the rows.
  SystemRows(PageSource& source, PageNumber definition, const SystemTable& table);
  SystemRows(const SystemRows&) = delete;
  SystemRows& operator=(const SystemRows&) = delete;

  // Throws Damage, also when there are more rows than any real file has.
  bool Next();

  RowPointer Home() const { return cursor_.Home(); }
  std::optional<std::string_view> Stored(std::uint16_t column) const;

  // 0 and "" for Null.
  std::uint32_t Number(std::uint16_t column) const;
  std::string Text(std::uint16_t column) const;

  const TableLayout& Layout() const { return layout_; }

 private:
  TableLayout layout_;
  std::vector<const ColumnLayout*> columns_;
  TableCursor cursor_;
  std::size_t row_count_ = 0;
};

}  // namespace jet::file
