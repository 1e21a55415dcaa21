#include "jet/file/table_check.h"

#include <algorithm>

#include "jet/file/bytes.h"
#include "jet/file/check_texts.h"
#include "jet/file/packed_text.h"

namespace jet::file {
namespace {

std::size_t TextBytes(std::string_view stored) {
  return CountUnits(stored) * sizeof(char16_t);
}

}  // namespace

TableCheck::TableCheck(CheckContext& context, const std::string& table, const TableLayout& layout,
                       PageCensus::Owner owner)
    : context_(context),
      layout_(layout),
      shape_(ShapeOf(layout)),
      name_(check_texts::Table(table)),
      owner_(owner) {
  for (const ColumnLayout& column : layout.columns) {
    if (!IsLong(column.type)) continue;
    long_columns_[column.id] = std::make_unique<LongValueCheck>(
        context, check_texts::LongColumn(column.name, table), layout.page);
  }
}

void TableCheck::Run() {
  CheckLimits();
  for (const ColumnLayout& column : layout_.columns) {
    if (!IsLong(column.type)) continue;
    if (column.long_maps) {
      long_columns_[column.id]->Collect(*column.long_maps);
    } else {
      context_.findings.AddFault(check_texts::kNoLongMaps, name_, layout_.page, column.name);
    }
  }
  CheckPages();
  CheckHiddenRows();
  for (const auto& [id, column] : long_columns_)
    column->Finish();
  CheckCounts();
}

void TableCheck::CheckLimits() {
  if (shape_.declared_length > limits::kRecordLength)
    context_.findings.AddFault(check_texts::kWideDefinition, name_, layout_.page);
  if (layout_.indexes.size() > limits::kIndexesWritten ||
      layout_.logical_indexes.size() > limits::kIndexesWritten)
    context_.findings.AddFault(check_texts::kManyIndexes, name_, layout_.page);
}

void TableCheck::CheckPages() {
  try {
    UsageMap pages = context_.maps.Open(context_.source, layout_.rows_map, layout_.page, name_);
    UsageMap space = context_.maps.Open(context_.source, layout_.space_map, layout_.page, name_);
    PageNumber from = 0;
    while (const auto page = pages.Next(from)) {
      from = *page + 1;
      if (context_.census.Claim(*page, owner_, context_.findings)) {
        CheckPage(*page);
      } else if (*page >= context_.source.PageCount()) {
        break;
      }
    }
    CheckSpaceMap(context_, space, owner_);
  } catch (const Damage& damage) {
    context_.findings.AddDamage(name_, damage);
  }
}

void TableCheck::CheckPage(PageNumber number) {
  try {
    const PageView view = context_.source.Read(number);
    view.Expect(PageKind::kData);
    view.ExpectOwner(layout_.page);
    const DataPage page(view);
    CheckFreeBytes(page, name_, context_.findings);
    if (page.RowCount() > limits::kRowsOnPage)
      context_.findings.AddFault(texts::kManyRows, name_, number);
    for (std::size_t row = 0; row < page.RowCount() && row <= row_pointer::kRowMask; ++row)
      CheckRow(page, row);
  } catch (const Damage& damage) {
    context_.findings.AddDamage(name_, damage);
  }
}

void TableCheck::CheckRow(const DataPage& page, std::size_t row) {
  const RowPointer place{page.Page().Page(), static_cast<std::uint8_t>(row)};
  const DataPage::Row here = page.At(row);
  if (here.state == RowState::kHidden) hidden_.Add(place);
  if (here.state != RowState::kLive && here.state != RowState::kMoved) return;
  rows_.Add(place);
  try {
    const auto placed = RecordAt(context_.source, layout_, page, row);
    if (here.state == RowState::kMoved) targets_.push_back(placed->stands);
    CheckRecord(placed->record);
  } catch (const Damage& damage) {
    context_.findings.AddDamage(name_, damage);
  }
}

void TableCheck::CheckRecord(ByteView record) {
  if (record.Length() > limits::kRecordLength)
    context_.findings.AddFault(check_texts::kLongRecord, name_, record.Page());
  const RowView row(record, shape_);
  for (const ColumnLayout& column : layout_.columns) {
    try {
      CheckValue(row, column);
    } catch (const Damage& damage) {
      context_.findings.AddDamage(check_texts::InColumn(name_, column.name), damage);
    }
  }
}

void TableCheck::CheckValue(const RowView& row, const ColumnLayout& column) {
  const auto stored = row.Stored(column);
  if (!stored) return;
  const PageNumber page = row.Record().Page();
  if (IsLong(column.type)) {
    long_columns_[column.id]->Use({page, *stored});
    return;
  }
  const std::size_t width = ValueWidth(column.type);
  if (width != 0 && stored->size() != width) {
    context_.findings.AddFault(check_texts::kValueWidth, name_, page, column.name);
    return;
  }
  const std::size_t length = column.type == ColumnType::kText ? TextBytes(*stored) : stored->size();
  if (!column.IsFixed() && width == 0 && length > column.size &&
      column.type != ColumnType::kBoolean)
    context_.findings.AddFault(check_texts::kLongText, name_, page, column.name);
  if (column.IsAutonumber() && column.type == ColumnType::kLong)
    highest_autonumber_ =
        std::max<std::int64_t>(highest_autonumber_, LoadLittle<std::int32_t>(stored->data()));
}

void TableCheck::CheckHiddenRows() {
  for (const RowPointer target : targets_) {
    if (!hidden_.Remove(target))
      context_.findings.AddFault(check_texts::kRowTwice, name_, target.page);
  }
  if (hidden_.Size() != 0)
    context_.findings.AddFault(check_texts::kOrphanRow, name_, hidden_.First().page,
                               std::to_string(hidden_.Size()));
}

void TableCheck::CheckCounts() {
  // The engine itself lets the count of a system table lag behind.
  if (rows_.Size() != layout_.row_count)
    context_.findings.Add(
        {layout_.kind == definition::kSystemTable ? Severity::kNote : Severity::kFault,
         check_texts::kRowCount, name_, layout_.page,
         check_texts::TwoNumbers(rows_.Size(), layout_.row_count)});
  const auto last = static_cast<std::int32_t>(layout_.last_autonumber);
  if (highest_autonumber_ > last)
    context_.findings.AddNote(check_texts::kAutonumber, name_, layout_.page,
                              std::to_string(highest_autonumber_));
}

}  // namespace jet::file
