#include "jet/file/definition_parser.h"

#include <set>
#include <string>
#include <string_view>

#include "foundation/encodings.h"
#include "jet/file/limits.h"

namespace jet::file {
namespace {

// Walks through the blocks of a definition in the order in which they stand.
class Walk {
 public:
  explicit Walk(const DefinitionChain& chain) : view_(chain.View()) {}

  ByteView Take(std::size_t length) {
    const ByteView block = view_.Part(position_, length);
    position_ += length;
    return block;
  }

  ByteView TakeMarked(std::size_t length, Field<std::uint32_t> field, std::uint32_t marker) {
    const ByteView block = Take(length);
    if (block.Get(field) != marker) view_.Fail(texts::kMissingMarker);
    return block;
  }

  std::string TakeName() {
    const std::size_t length = Take(definition::kNameLengthWidth).Get(Field<std::uint16_t>{0});
    if (length == 0 || length % 2 != 0 || length / 2 > limits::kNameUnits)
      view_.Fail(texts::kBadName);
    return tmw::Utf16ToUtf8(tmw::BytesToUtf16(Take(length).Bytes()));
  }

  bool AtEnd() const { return position_ == view_.Length(); }
  [[noreturn]] void Fail(const char* what) const { view_.Fail(what); }

 private:
  ByteView view_;
  std::size_t position_ = 0;
};

struct Counts {
  std::size_t columns;
  std::size_t indexes;
  std::size_t logical_indexes;
};

Counts ParseFixedBlock(Walk& walk, TableLayout& table) {
  const ByteView block =
      walk.TakeMarked(definition::kFixedLength, definition::kFirstMarker, definition::kMarker);
  table.row_count = block.Get(definition::kRowCount);
  table.last_autonumber = block.Get(definition::kLastAutonumber);
  table.autonumber_step = block.Get(definition::kAutonumberStep);
  table.kind = block.Get(definition::kTableKind);
  table.column_ids = block.Get(definition::kColumnIds);
  table.variable_columns = block.Get(definition::kVariableColumns);
  table.rows_map = RowPointer::FromWord(block.Get(definition::kRowsMap));
  table.space_map = RowPointer::FromWord(block.Get(definition::kSpaceMap));
  const Counts counts{block.Get(definition::kColumns), block.Get(definition::kRealIndexes),
                      block.Get(definition::kLogicalIndexes)};
  if (table.kind != definition::kUserTable && table.kind != definition::kSystemTable)
    walk.Fail(texts::kBadTableKind);
  if (counts.columns > table.column_ids || table.column_ids > limits::kColumns ||
      table.variable_columns > table.column_ids || counts.indexes > limits::kIndexesRead ||
      counts.logical_indexes > limits::kIndexesRead)
    walk.Fail(texts::kBadCounts);
  return counts;
}

ColumnLayout ParseColumn(Walk& walk) {
  namespace column = definition::column;
  const ByteView block = walk.TakeMarked(column::kWidth, column::kMarker, definition::kMarker);
  ColumnLayout result;
  result.type = static_cast<ColumnType>(block.Get(column::kType));
  result.id = block.Get(column::kId);
  result.variable_slot = block.Get(column::kVariableSlot);
  result.ordinal = block.Get(column::kOrdinal);
  result.sort_order = block.Get(column::kSortOrder);
  result.flags = block.Get(column::kFlags);
  result.extra_flags = block.Get(column::kExtraFlags);
  result.size = block.Get(column::kSize);
  // The place of a variable column in the fixed part is not judged: anything may stand there.
  if (result.IsFixed()) result.fixed_offset = block.Get(column::kFixedOffset);
  return result;
}

void JudgeColumn(const Walk& walk, const TableLayout& table, const ColumnLayout& column) {
  if (!IsKnown(column.type)) walk.Fail(texts::kUnknownColumnType);
  if (column.id >= table.column_ids) walk.Fail(texts::kBadColumn);
  const std::size_t width = ValueWidth(column.type);
  if (width != 0 && column.size != width) walk.Fail(texts::kBadColumn);
  if (column.type == ColumnType::kBoolean) return;
  if (!column.IsFixed()) {
    if (column.variable_slot >= table.variable_columns) walk.Fail(texts::kBadColumn);
  } else if (IsLong(column.type) ||
             std::size_t{column.fixed_offset} + column.size > limits::kRecordLength) {
    walk.Fail(texts::kBadColumn);
  }
}

void ParseColumns(Walk& walk, std::size_t count, TableLayout& table) {
  std::set<std::uint16_t> ids;
  std::set<std::uint16_t> slots;
  for (std::size_t i = 0; i < count; ++i) {
    ColumnLayout column = ParseColumn(walk);
    JudgeColumn(walk, table, column);
    const bool has_own_slot = column.IsFixed() || column.type == ColumnType::kBoolean ||
                              slots.insert(column.variable_slot).second;
    if (!ids.insert(column.id).second || !has_own_slot) walk.Fail(texts::kColumnTwice);
    table.columns.push_back(std::move(column));
  }
  for (ColumnLayout& column : table.columns)
    column.name = walk.TakeName();
}

IndexLayout ParseIndex(Walk& walk, const TableLayout& table) {
  namespace real_index = definition::real_index;
  const ByteView block =
      walk.TakeMarked(real_index::kWidth, real_index::kMarker, definition::kIndexMarker);
  IndexLayout index;
  for (std::size_t i = 0; i < real_index::kKeyColumnCount; ++i) {
    const std::size_t base = real_index::kKeyColumns + i * real_index::kKeyColumnWidth;
    const std::uint16_t id = block.Get(real_index::kKeyColumnId, base);
    if (id == real_index::kNoColumn) continue;
    if (table.FindColumn(id) == nullptr) walk.Fail(texts::kIndexOfNoColumn);
    const std::uint8_t direction = block.Get(real_index::kKeyDirection, base);
    index.columns.push_back({id, direction != real_index::kAscending});
  }
  if (index.columns.empty()) walk.Fail(texts::kIndexOfNoColumn);
  index.pages_map = RowPointer::FromWord(block.Get(real_index::kPagesMap));
  index.root = block.Get(real_index::kRoot);
  index.flags = block.Get(real_index::kFlags);
  return index;
}

LogicalIndexLayout ParseLogicalIndex(Walk& walk, const TableLayout& table) {
  namespace logical_index = definition::logical_index;
  const ByteView block =
      walk.TakeMarked(logical_index::kWidth, logical_index::kMarker, definition::kMarker);
  LogicalIndexLayout index;
  index.number = block.Get(logical_index::kNumber);
  index.real_index = block.Get(logical_index::kRealIndex);
  index.kind = block.Get(logical_index::kKind);
  if (index.real_index >= table.indexes.size()) walk.Fail(texts::kIndexOfNoTree);
  const std::uint32_t other = block.Get(logical_index::kOtherNumber);
  if (other != logical_index::kNoOther) {
    index.relation = RelationEnd{other, block.Get(logical_index::kOtherTable),
                                 block.Get(logical_index::kRelationSide),
                                 block.Get(logical_index::kCascadeUpdate) != 0,
                                 block.Get(logical_index::kCascadeDelete) != 0};
  }
  return index;
}

void ParseLongColumns(Walk& walk, TableLayout& table) {
  namespace long_column = definition::long_column;
  for (;;) {
    const std::uint16_t id = walk.Take(long_column::kEndWidth).Get(long_column::kColumnId);
    if (id == long_column::kNoMoreColumns) return;
    const ByteView maps = walk.Take(long_column::kWidth - long_column::kEndWidth);
    const auto word = [&maps](Field<std::uint32_t> field) {
      return RowPointer::FromWord(
          maps.Get(Field<std::uint32_t>{field.offset - long_column::kEndWidth}));
    };
    for (ColumnLayout& column : table.columns) {
      if (column.id == id)
        column.long_maps =
            LongColumnMaps{word(long_column::kPagesMap), word(long_column::kSpaceMap)};
    }
  }
}

}  // namespace

TableLayout ParseDefinition(const DefinitionChain& chain) {
  Walk walk(chain);
  TableLayout table;
  table.page = chain.pages.front();
  const Counts counts = ParseFixedBlock(walk, table);
  const ByteView statistics = walk.Take(counts.indexes * definition::statistics::kWidth);
  ParseColumns(walk, counts.columns, table);
  for (std::size_t i = 0; i < counts.indexes; ++i) {
    IndexLayout index = ParseIndex(walk, table);
    const std::size_t base = i * definition::statistics::kWidth;
    index.entry_statistics = statistics.Get(definition::statistics::kEntries, base);
    index.unknown_statistics = statistics.Get(definition::statistics::kUnknown, base);
    table.indexes.push_back(std::move(index));
  }
  for (std::size_t i = 0; i < counts.logical_indexes; ++i)
    table.logical_indexes.push_back(ParseLogicalIndex(walk, table));
  for (LogicalIndexLayout& index : table.logical_indexes)
    index.name = walk.TakeName();
  ParseLongColumns(walk, table);
  if (!walk.AtEnd()) walk.Fail(texts::kBadDefinitionEnd);
  return table;
}

}  // namespace jet::file
