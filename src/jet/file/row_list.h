#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "jet/file/data_page.h"
#include "jet/file/database_reader.h"
#include "jet/file/row_view.h"
#include "jet/file/table_layout.h"

namespace jet::file {

// The rows of a table as they lie in the file, to be read in any order. The list keeps no reader:
// each call is given the one that reads the file at that time. Fails with ports::DatabaseError
// 3049.
class RowList {
 public:
  explicit RowList(TableLayout layout) : layout_(std::move(layout)), shape_(ShapeOf(layout_)) {}

  const TableLayout& Layout() const { return layout_; }

  // Lists the rows as they lie in the file, or in the order of an index. Returns false if the index
  // may not have an entry for every row, or not in the order in which this engine would put them.
  void List(DatabaseReader& reader);
  bool ListBy(DatabaseReader& reader, const IndexLayout& index);

  std::size_t Size() const { return rows_.size(); }
  ports::DatabaseValue Value(DatabaseReader& reader, std::size_t row, const ColumnLayout& column);

  // The places, from 1, that the listed rows have among all as they lie in the file.
  std::vector<std::int64_t> Places(DatabaseReader& reader) const;

 private:
  void Fetch(DatabaseReader& reader, std::size_t row);

  TableLayout layout_;
  RowShape shape_;
  std::vector<RowPointer> rows_;
  std::optional<DataPage> page_;  // the last one read
  std::optional<PlacedRow> current_;
  std::size_t current_row_ = SIZE_MAX;
};

}  // namespace jet::file
