#include "jet/file/row_list.h"

#include <algorithm>
#include <map>
#include <utility>

#include "jet/file/door.h"
#include "jet/file/index_walker.h"
#include "jet/file/long_value_reader.h"
#include "jet/file/stored_value.h"

namespace jet::file {
namespace {

constexpr std::uint32_t kGeneralOrder = 0x409;

template <typename Call>
decltype(auto) Guard(const DatabaseReader& reader, Call&& call) {
  return ThroughDoor(kDatabaseDamaged, reader.FileName(), std::forward<Call>(call));
}

std::vector<RowPointer> Listed(DatabaseReader& reader, const TableLayout& layout) {
  return Guard(reader, [&] {
    std::vector<RowPointer> rows;
    for (TableCursor cursor(reader.Pages(), layout); cursor.Next();)
      rows.push_back(cursor.Home());
    return rows;
  });
}

// Texts in another order than the General one lie in an order of their own.
bool HasKnownOrder(const TableLayout& table, const IndexLayout& index) {
  return std::all_of(index.columns.begin(), index.columns.end(), [&table](const KeyColumn& part) {
    const ColumnLayout* const column = table.FindColumn(part.column_id);
    const bool is_text = column != nullptr &&
                         (column->type == ColumnType::kText || column->type == ColumnType::kMemo);
    return column != nullptr && (!is_text || column->sort_order == kGeneralOrder);
  });
}

}  // namespace

void RowList::List(DatabaseReader& reader) {
  rows_ = Listed(reader, layout_);
  current_row_ = SIZE_MAX;
}

bool RowList::ListBy(DatabaseReader& reader, const IndexLayout& index) {
  if (index.IgnoresNulls() || !HasKnownOrder(layout_, index)) return false;
  std::vector<RowPointer> rows;
  try {
    for (IndexWalker walker(reader.Pages(), layout_, index); walker.Next();)
      rows.push_back(walker.Entry().row);
  } catch (const Damage&) {
    return false;
  }
  if (rows.size() != layout_.row_count) return false;
  rows_ = std::move(rows);
  current_row_ = SIZE_MAX;
  return true;
}

void RowList::Fetch(DatabaseReader& reader, std::size_t row) {
  if (row == current_row_) return;
  const RowPointer pointer = rows_.at(row);
  if (!page_ || page_->Page().Page() != pointer.page) {
    const PageView page = reader.Pages().Read(pointer.page, layout_.page);
    page.ExpectOwner(layout_.page);
    page_.emplace(page);
  }
  current_ = RecordAt(reader.Pages(), layout_, *page_, pointer.row);
  if (!current_) page_->Page().Fail(texts::kNoSuchRow);
  current_row_ = row;
}

ports::DatabaseValue RowList::Value(DatabaseReader& reader, std::size_t row,
                                    const ColumnLayout& column) {
  return Guard(reader, [&] {
    Fetch(reader, row);
    const RowView view(current_->record, shape_);
    const auto stored = view.Stored(column);
    if (!stored || !IsLong(column.type)) return ToValue(column, stored);
    return ToValue(column, ReadLongValue(reader.Pages(), {current_->record.Page(), *stored}));
  });
}

std::vector<std::int64_t> RowList::Places(DatabaseReader& reader) const {
  std::map<std::uint32_t, std::int64_t> places;
  std::int64_t place = 0;
  for (const RowPointer row : Listed(reader, layout_))
    places[row.ToWord()] = ++place;
  std::vector<std::int64_t> listed;
  listed.reserve(rows_.size());
  for (const RowPointer row : rows_)
    listed.push_back(places[row.ToWord()]);
  return listed;
}

}  // namespace jet::file
