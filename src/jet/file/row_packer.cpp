#include "jet/file/row_packer.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

#include "jet/file/bytes.h"

namespace jet::file {
namespace {

constexpr std::size_t kNoColumn = SIZE_MAX;
constexpr unsigned kBitsInByte = 8;
// The fixed part of a record that has no variable part is not shorter.
constexpr std::size_t kShortestFixedPart = 2;

}  // namespace

RowPacker::RowPacker(const TableLayout& table)
    : table_(&table), variable_(table.variable_columns, kNoColumn) {
  // Ids above the highest column that is left were those of deleted columns.
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    const ColumnLayout& column = table.columns[i];
    column_ids_ = std::max<std::size_t>(column_ids_, column.id + std::size_t{1});
    if (column.type != ColumnType::kBoolean && !column.IsFixed())
      variable_.at(column.variable_slot) = i;
  }
  mask_width_ = MaskWidth(column_ids_);
  fixed_length_ = ShapeOf(table).fixed_length;
  if (variable_.empty()) fixed_length_ = std::max(fixed_length_, kShortestFixedPart);
}

void RowPacker::PutFixed(const ColumnLayout& column, std::string_view value) {
  if (value.size() > column.size) throw std::logic_error("jet::file::RowPacker: value too wide");
  std::copy(value.begin(), value.end(), record_.begin() + record::kFixedPart + column.fixed_offset);
}

std::string_view RowPacker::Pack(StoredValues values) {
  record_.assign(record::kFixedPart + fixed_length_, '\0');
  StoreLittle(record_.data(), static_cast<std::uint16_t>(column_ids_));
  mask_.assign(mask_width_, '\0');
  for (std::size_t i = 0; i < values.size(); ++i) {
    const ColumnLayout& column = table_->columns[i];
    const bool is_boolean = column.type == ColumnType::kBoolean;
    if (!values[i] || (is_boolean && values[i]->front() == 0)) continue;
    char& mask = mask_[column.id / kBitsInByte];
    mask = static_cast<char>(mask | (1 << (column.id % kBitsInByte)));
    if (column.IsFixed() && !is_boolean) PutFixed(column, *values[i]);
  }
  if (!variable_.empty()) {
    offsets_.clear();
    for (const std::size_t place : variable_) {
      offsets_.push_back(static_cast<std::uint16_t>(record_.size()));
      if (place != kNoColumn && values[place]) record_ += *values[place];
    }
    AppendLittle(record_, static_cast<std::uint16_t>(record_.size()));
    for (auto offset = offsets_.rbegin(); offset != offsets_.rend(); ++offset)
      AppendLittle(record_, *offset);
    AppendLittle(record_, static_cast<std::uint16_t>(offsets_.size()));
  }
  return record_ += mask_;
}

}  // namespace jet::file
