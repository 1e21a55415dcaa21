#include "jet/file/layout_limits.h"

#include <cstddef>
#include <string>

#include "foundation/encodings.h"
#include "jet/errors.h"
#include "jet/file/limits.h"

namespace jet::file {
namespace {

void JudgeColumn(const ColumnLayout& column) {
  JudgeName(column.name);
  const bool is_too_wide =
      (column.type == ColumnType::kText && column.size > 2 * limits::kTextUnits) ||
      (column.type == ColumnType::kBinary && column.size > limits::kBinaryLength);
  if (is_too_wide) Fail(kFieldTooSmall, " (\"" + column.name + "\")");
}

}  // namespace

void JudgeName(std::string_view name) {
  if (name.empty() || tmw::Utf8ToUtf16(name).size() > limits::kNameUnits) Fail(kInvalidName, name);
}

void JudgeLayout(std::string_view table_name, const TableLayout& table) {
  JudgeName(table_name);
  if (table.columns.size() > limits::kColumns || table.column_ids > limits::kColumns)
    Fail(kTooManyFields, " (\"" + std::string(table_name) + "\")");
  for (const ColumnLayout& column : table.columns)
    JudgeColumn(column);
  if (ShapeOf(table).declared_length > limits::kRecordLength) Fail(kRecordTooLong, table_name);
  if (table.indexes.size() > limits::kIndexesWritten ||
      table.logical_indexes.size() > limits::kIndexesWritten)
    Fail(kTooManyIndexes, table_name);
  for (const LogicalIndexLayout& index : table.logical_indexes) {
    JudgeName(index.name);
    if (table.indexes.at(index.real_index).columns.size() > limits::kIndexColumns)
      Fail(kTooManyIndexFields, index.name, table_name);
  }
}

}  // namespace jet::file
