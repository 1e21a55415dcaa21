#include "jet/file/table_layout.h"

#include <algorithm>
#include <numeric>
#include <tuple>

namespace jet::file {

bool IsKnown(ColumnType type) {
  const auto code = static_cast<std::uint8_t>(type);
  constexpr auto kLastOfFirst = static_cast<std::uint8_t>(ColumnType::kMemo);
  return (code >= static_cast<std::uint8_t>(ColumnType::kBoolean) && code <= kLastOfFirst) ||
         type == ColumnType::kGuid || type == ColumnType::kNumeric ||
         type == ColumnType::kWideBinary;
}

bool IsLong(ColumnType type) {
  return type == ColumnType::kOle || type == ColumnType::kMemo;
}

std::size_t ValueWidth(ColumnType type) {
  switch (type) {
    case ColumnType::kByte:
      return 1;
    case ColumnType::kInteger:
      return 2;
    case ColumnType::kLong:
    case ColumnType::kSingle:
      return 4;
    case ColumnType::kCurrency:
    case ColumnType::kDouble:
    case ColumnType::kDate:
      return 8;
    case ColumnType::kGuid:
      return 16;
    case ColumnType::kNumeric:
      return 17;
    default:
      return 0;
  }
}

const ColumnLayout* TableLayout::FindColumn(std::uint16_t id) const {
  for (const ColumnLayout& column : columns) {
    if (column.id == id) return &column;
  }
  return nullptr;
}

std::vector<std::size_t> FieldOrder(const TableLayout& table) {
  std::vector<std::size_t> order(table.columns.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(), [&table](std::size_t a, std::size_t b) {
    const auto key = [&table](std::size_t i) {
      return std::make_tuple(table.columns[i].ordinal, table.columns[i].id);
    };
    return key(a) < key(b);
  });
  return order;
}

RowShape ShapeOf(const TableLayout& table) {
  RowShape shape;
  shape.column_ids = table.column_ids;
  shape.variable_slots = table.variable_columns;
  shape.mask_width = MaskWidth(table.column_ids);
  shape.first_variable = table.column_ids;
  for (const ColumnLayout& column : table.columns) {
    if (!column.IsFixed() && column.type != ColumnType::kBoolean)
      shape.first_variable = std::min<std::size_t>(shape.first_variable, column.id);
    if (column.IsFixed() && column.type != ColumnType::kBoolean)
      shape.fixed_length =
          std::max<std::size_t>(shape.fixed_length, std::size_t{column.fixed_offset} + column.size);
  }
  // Offsets and count of the variable columns; without any, the place of their end and count is
  // counted all the same.
  const std::size_t variable_part = shape.variable_slots == 0
                                        ? 2 * record::kOffsetWidth
                                        : record::kOffsetWidth * (shape.variable_slots + 2);
  shape.declared_length =
      record::kFixedPart + shape.fixed_length + variable_part + shape.mask_width;
  return shape;
}

}  // namespace jet::file
