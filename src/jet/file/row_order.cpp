#include "jet/file/row_order.h"

#include <string>
#include <vector>

#include "jet/file/data_page.h"
#include "jet/file/index_walker.h"
#include "jet/file/limits.h"
#include "jet/file/long_value_reader.h"

namespace jet::file {

const IndexLayout* PrimaryKey(const TableLayout& table) {
  for (const LogicalIndexLayout& index : table.logical_indexes) {
    if (index.kind == definition::logical_index::kPrimary) return &table.indexes[index.real_index];
  }
  return nullptr;
}

bool LiesInOrder(PageSource& source, const TableLayout& table, const IndexLayout& index) {
  IndexWalker walker(source, table, index);
  RowPointer last;
  while (walker.Next()) {
    const RowPointer row = walker.Entry().row;
    if (row < last) return false;
    last = row;
  }
  return true;
}

OrderedRows::OrderedRows(PageSource& source, const TableLayout& table, const IndexLayout& index,
                         ScratchFile& scratch)
    : source_(&source),
      table_(&table),
      shape_(ShapeOf(table)),
      keys_(limits::kSortMemory / 2, scratch) {
  // A row without an entry is a row all the same.
  IndexLayout complete = index;
  complete.flags &= static_cast<std::uint8_t>(~definition::real_index::kIgnoreNulls);
  const IndexKey key(table, complete);
  std::vector<std::optional<std::string_view>> values(table.columns.size());
  std::string entry;
  std::vector<std::string> beginnings(table.columns.size());  // of long values
  TableCursor cursor(source, table);
  while (cursor.Next()) {
    const RowView row = cursor.Row();
    for (const std::size_t place : key.Places()) {
      values[place] = row.Stored(table.columns[place]);
      if (!values[place] || !IsLong(table.columns[place].type)) continue;
      LongValueReader reader(source, ByteView(row.Record().Page(), *values[place]));
      beginnings[place] = reader.Next().value_or(std::string_view{});
      values[place] = beginnings[place];
    }
    key.Make(values, entry);
    AppendBig(entry, cursor.Home().ToWord());
    keys_.Add(entry);
  }
  keys_.Sort();
}

bool OrderedRows::Next() {
  std::string_view entry;
  if (!keys_.Next(entry)) return false;
  const RowPointer row = IndexEntry::FromLeaf(entry).row;
  const DataPage page(source_->Read(row.page, table_->page));
  current_ = RecordAt(*source_, *table_, page, row.row);
  if (!current_) page.Page().Fail(texts::kNoSuchRow);
  return true;
}

}  // namespace jet::file
