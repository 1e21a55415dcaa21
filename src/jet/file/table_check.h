#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "jet/file/long_value_check.h"
#include "jet/file/page_census.h"
#include "jet/file/row_set.h"
#include "jet/file/table_cursor.h"

namespace jet::file {

// The records of one table: its pages, rows and values. Goes on behind every fault.
class TableCheck {
 public:
  // The pages of the definition belong to the owner already. The layout must outlive the check.
  TableCheck(CheckContext& context, const std::string& table, const TableLayout& layout,
             PageCensus::Owner owner);

  void Run();

  // Live and moved rows, by the places that pointers lead to.
  const RowSet& Rows() const { return rows_; }

 private:
  void CheckLimits();
  void CheckPages();
  void CheckPage(PageNumber number);
  void CheckRow(const DataPage& page, std::size_t row);
  void CheckRecord(ByteView record);
  void CheckValue(const RowView& row, const ColumnLayout& column);
  void CheckHiddenRows();
  void CheckCounts();

  CheckContext& context_;
  const TableLayout& layout_;
  RowShape shape_;
  std::string name_;
  PageCensus::Owner owner_;
  RowSet rows_;
  RowSet hidden_;
  std::vector<RowPointer> targets_;  // of moved rows
  std::map<std::uint16_t, std::unique_ptr<LongValueCheck>> long_columns_;
  std::int64_t highest_autonumber_ = 0;
};

}  // namespace jet::file
