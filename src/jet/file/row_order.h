#pragma once

#include <optional>

#include "jet/file/index_key.h"
#include "jet/file/key_sorter.h"
#include "jet/file/table_cursor.h"

namespace jet::file {

// The tree of the table's primary key; null without one.
const IndexLayout* PrimaryKey(const TableLayout& table);

// Whether the index says that the rows lie in its order. Throws Damage.
bool LiesInOrder(PageSource& source, const TableLayout& table, const IndexLayout& index);

// The records of a table in the order of an index, which is not looked into: the keys are made of
// the records.
class OrderedRows {
 public:
  // Reads the whole table. Source, layout and file must outlive the rows. Throws Damage.
  OrderedRows(PageSource& source, const TableLayout& table, const IndexLayout& index,
              ScratchFile& scratch);

  // Steps to the next record; false behind the last one. Throws Damage.
  bool Next();

  RowView Row() const { return {current_->record, shape_}; }

 private:
  PageSource* source_;
  const TableLayout* table_;
  RowShape shape_;
  KeySorter keys_;
  std::optional<PlacedRow> current_;
};

}  // namespace jet::file
