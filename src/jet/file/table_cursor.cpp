#include "jet/file/table_cursor.h"

namespace jet::file {

std::optional<PlacedRow> RecordAt(PageSource& source, const TableLayout& table,
                                  const DataPage& page, std::size_t row) {
  const PageNumber number = page.Page().Page();
  const RowPointer home{number, static_cast<std::uint8_t>(row)};
  const DataPage::Row here = page.At(row);
  if (here.state == RowState::kLive) return PlacedRow{home, home, page, {number, here.bytes}};
  if (here.state != RowState::kMoved) return std::nullopt;
  const auto target =
      RowPointer::FromWord(ByteView(number, here.bytes).Get(Field<std::uint32_t>{0}));
  const PointedRow there = ReadRow(source, target, table.page, number);
  if (there.row.state != RowState::kHidden) page.Page().Fail(texts::kLostRow);
  return PlacedRow{home, target, there.page, {target.page, there.row.bytes}};
}

TableCursor::TableCursor(PageSource& source, const TableLayout& table)
    : source_(&source),
      table_(&table),
      shape_(ShapeOf(table)),
      pages_(source, table.rows_map, table.page) {}

bool TableCursor::NextPage() {
  const auto number = pages_.Next(next_page_);
  if (!number) return false;
  next_page_ = *number + 1;
  const PageView page = source_->Read(*number, table_->page);
  page.Expect(PageKind::kData);
  page.ExpectOwner(table_->page);
  page_.emplace(page);
  if (page_->RowCount() > limits::kRowsOnPage) page.Fail(texts::kManyRows);
  next_row_ = 0;
  return true;
}

bool TableCursor::Next() {
  for (;;) {
    while (page_ && next_row_ < page_->RowCount()) {
      current_ = RecordAt(*source_, *table_, *page_, next_row_++);
      if (current_) return true;
    }
    if (!NextPage()) return false;
  }
}

}  // namespace jet::file
