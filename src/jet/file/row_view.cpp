#include "jet/file/row_view.h"

#include "jet/file/limits.h"

namespace jet::file {
namespace {

constexpr unsigned kBitsInByte = 8;
constexpr std::string_view kFalse{"\0", 1};
constexpr std::string_view kTrue{"\1", 1};

}  // namespace

RowView::RowView(ByteView record, const RowShape& shape)
    : record_(record), column_count_(record.Get(record::kColumnCount)) {
  const std::size_t width = MaskWidth(column_count_);
  if (column_count_ > shape.column_ids || width + record::kFixedPart > record.Length())
    record.Fail(texts::kBadRecord);
  mask_ = record.Length() - width;
  fixed_end_ = mask_;
  // A record older than the table's first variable column has no variable part.
  if (shape.first_variable >= column_count_) return;
  if (mask_ < record::kFixedPart + record::kOffsetWidth) record.Fail(texts::kBadRecord);
  const std::size_t count_at = mask_ - record::kOffsetWidth;
  variable_count_ = record.Get(Field<std::uint16_t>{count_at});
  const std::size_t table = record::kOffsetWidth * (variable_count_ + 1);
  if (variable_count_ > shape.variable_slots || table + record::kFixedPart > count_at)
    record.Fail(texts::kBadRecord);
  fixed_end_ = count_at - table;
}

bool RowView::HasBit(std::size_t column_id) const {
  const auto byte = static_cast<unsigned char>(record_.Bytes()[mask_ + column_id / kBitsInByte]);
  return (byte & (1U << (column_id % kBitsInByte))) != 0;
}

std::optional<std::string_view> RowView::Stored(const ColumnLayout& column) const {
  const bool has_bit = column.id < column_count_ && HasBit(column.id);
  if (column.type == ColumnType::kBoolean) return has_bit ? kTrue : kFalse;
  if (!has_bit) return std::nullopt;
  if (column.IsFixed()) {
    const std::size_t begin = record::kFixedPart + column.fixed_offset;
    if (begin + column.size > fixed_end_) record_.Fail(texts::kBadRecord);
    return record_.Bytes().substr(begin, column.size);
  }
  if (column.variable_slot >= variable_count_) record_.Fail(texts::kBadRecord);
  // The offsets stand last first, below their count; the end of the last value is the lowest.
  const std::size_t offset_at =
      fixed_end_ + record::kOffsetWidth * (variable_count_ - column.variable_slot);
  const std::size_t begin = record_.Get(Field<std::uint16_t>{offset_at});
  const std::size_t end = record_.Get(Field<std::uint16_t>{offset_at - record::kOffsetWidth});
  if (begin < record::kFixedPart || begin > end || end > fixed_end_)
    record_.Fail(texts::kBadRecord);
  return record_.Bytes().substr(begin, end - begin);
}

}  // namespace jet::file
