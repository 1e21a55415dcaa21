#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "jet/file/page_view.h"
#include "jet/file/table_layout.h"

namespace jet::file {

// One record against the shape of its table's records. Both must outlive the view.
class RowView {
 public:
  // Throws Damage when the record's parts contradict each other.
  RowView(ByteView record, const RowShape& shape);

  // The stored bytes of a column, nothing for Null. A Boolean gives one byte, 0 or 1, always.
  std::optional<std::string_view> Stored(const ColumnLayout& column) const;

  ByteView Record() const { return record_; }

  // Columns that the table had when the record was written, deleted ones included.
  std::size_t ColumnCount() const { return column_count_; }

 private:
  bool HasBit(std::size_t column_id) const;

  ByteView record_;
  std::size_t column_count_;
  std::size_t mask_ = 0;            // offsets of the parts
  std::size_t fixed_end_ = 0;       // where the fixed part must have ended
  std::size_t variable_count_ = 0;  // values in the variable part
};

}  // namespace jet::file
