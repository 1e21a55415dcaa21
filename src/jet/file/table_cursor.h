#pragma once

#include <cstddef>
#include <optional>

#include "jet/file/data_page.h"
#include "jet/file/row_view.h"
#include "jet/file/usage_map.h"

namespace jet::file {

// A record with the page that keeps its bytes.
struct PlacedRow {
  RowPointer home;    // where pointers to the row lead, also when it was moved
  RowPointer stands;  // where its record is
  DataPage page;      // where the record stands
  ByteView record;
};

// The record of a live row or of one that was moved; nothing for other rows. Throws Damage when a
// moved row does not stand where its pointer says.
std::optional<PlacedRow> RecordAt(PageSource& source, const TableLayout& table,
                                  const DataPage& page, std::size_t row);

// The records of a table in the order in which they lie in the file.
class TableCursor {
 public:
  // The source and the layout must outlive the cursor.
  TableCursor(PageSource& source, const TableLayout& table);

  // Steps to the next record; false behind the last one. Throws Damage.
  bool Next();

  RowPointer Home() const { return current_->home; }
  RowView Row() const { return {current_->record, shape_}; }

 private:
  bool NextPage();

  PageSource* source_;
  const TableLayout* table_;
  RowShape shape_;
  UsageMap pages_;
  PageNumber next_page_ = 0;
  std::optional<DataPage> page_;
  std::size_t next_row_ = 0;
  std::optional<PlacedRow> current_;
};

}  // namespace jet::file
