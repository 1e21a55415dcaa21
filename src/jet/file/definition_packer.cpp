#include "jet/file/definition_packer.h"

#include <algorithm>
#include <cstdint>

#include "foundation/encodings.h"

namespace jet::file {
namespace {

constexpr std::size_t kPagePayload = kPageSize - definition::kHead;

// A block of a definition while it is filled: all zero at first.
class Block {
 public:
  explicit Block(std::size_t width) : bytes_(width, '\0') {}

  template <typename T>
  Block& Set(Field<T> field, T value, std::size_t base = 0) {
    StoreLittle(bytes_.data() + base + field.offset, value);
    return *this;
  }

  const std::string& Bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

template <typename T>
T Count(std::size_t count) {
  return static_cast<T>(count);
}

Block FixedBlock(const TableLayout& table) {
  Block block(definition::kFixedLength);
  block.Set(definition::kFirstMarker, definition::kMarker)
      .Set(definition::kRowCount, table.row_count)
      .Set(definition::kLastAutonumber, table.last_autonumber)
      .Set(definition::kAutonumberStep, table.autonumber_step)
      .Set(definition::kTableKind, table.kind)
      .Set(definition::kColumnIds, table.column_ids)
      .Set(definition::kVariableColumns, table.variable_columns)
      .Set(definition::kColumns, Count<std::uint16_t>(table.columns.size()))
      .Set(definition::kLogicalIndexes, Count<std::uint32_t>(table.logical_indexes.size()))
      .Set(definition::kRealIndexes, Count<std::uint32_t>(table.indexes.size()))
      .Set(definition::kRowsMap, table.rows_map.ToWord())
      .Set(definition::kSpaceMap, table.space_map.ToWord());
  return block;
}

Block ColumnBlock(const ColumnLayout& column) {
  namespace at = definition::column;
  Block block(at::kWidth);
  block.Set(at::kType, static_cast<std::uint8_t>(column.type))
      .Set(at::kMarker, definition::kMarker)
      .Set(at::kId, column.id)
      .Set(at::kVariableSlot, column.variable_slot)
      .Set(at::kOrdinal, column.ordinal)
      .Set(at::kSortOrder, column.sort_order)
      .Set(at::kFlags, column.flags)
      .Set(at::kExtraFlags, column.extra_flags)
      .Set(at::kFixedOffset, column.fixed_offset)
      .Set(at::kSize, column.size);
  return block;
}

Block IndexBlock(const IndexLayout& index) {
  namespace at = definition::real_index;
  Block block(at::kWidth);
  block.Set(at::kMarker, definition::kIndexMarker);
  for (std::size_t i = 0; i < at::kKeyColumnCount; ++i) {
    const std::size_t base = at::kKeyColumns + i * at::kKeyColumnWidth;
    if (i < index.columns.size()) {
      const KeyColumn& column = index.columns[i];
      block.Set(at::kKeyColumnId, column.column_id, base)
          .Set(at::kKeyDirection, column.is_descending ? at::kDescending : at::kAscending, base);
    } else {
      block.Set(at::kKeyColumnId, at::kNoColumn, base);
    }
  }
  block.Set(at::kPagesMap, index.pages_map.ToWord())
      .Set(at::kRoot, index.root)
      .Set(at::kFlags, index.flags);
  return block;
}

Block LogicalIndexBlock(const LogicalIndexLayout& index) {
  namespace at = definition::logical_index;
  Block block(at::kWidth);
  block.Set(at::kMarker, definition::kMarker)
      .Set(at::kNumber, index.number)
      .Set(at::kRealIndex, index.real_index)
      .Set(at::kKind, index.kind);
  if (index.relation) {
    const RelationEnd& end = *index.relation;
    block.Set(at::kRelationSide, end.side)
        .Set(at::kOtherNumber, end.other_number)
        .Set(at::kOtherTable, end.other_table)
        .Set(at::kCascadeUpdate, std::uint8_t{end.cascades_updates})
        .Set(at::kCascadeDelete, std::uint8_t{end.cascades_deletions});
  } else {
    block.Set(at::kOtherNumber, at::kNoOther)
        .Set(at::kCascadeUpdate, at::kNoCascade)
        .Set(at::kCascadeDelete, at::kNoCascade);
  }
  return block;
}

void AppendName(std::string& contents, std::string_view name) {
  const std::string bytes = tmw::Utf16ToBytes(tmw::Utf8ToUtf16(name));
  AppendLittle(contents, static_cast<std::uint16_t>(bytes.size()));
  contents += bytes;
}

void AppendLongColumns(std::string& contents, const TableLayout& table) {
  namespace at = definition::long_column;
  for (const ColumnLayout& column : table.columns) {
    if (!column.long_maps) continue;
    Block block(at::kWidth);
    block.Set(at::kColumnId, column.id)
        .Set(at::kPagesMap, column.long_maps->pages.ToWord())
        .Set(at::kSpaceMap, column.long_maps->space.ToWord());
    contents += block.Bytes();
  }
  AppendLittle(contents, at::kNoMoreColumns);
}

}  // namespace

std::string PackDefinition(const TableLayout& table) {
  std::string contents = FixedBlock(table).Bytes();
  for (const IndexLayout& index : table.indexes) {
    namespace at = definition::statistics;
    contents += Block(at::kWidth)
                    .Set(at::kUnknown, index.unknown_statistics)
                    .Set(at::kEntries, index.entry_statistics)
                    .Bytes();
  }
  for (const ColumnLayout& column : table.columns)
    contents += ColumnBlock(column).Bytes();
  for (const ColumnLayout& column : table.columns)
    AppendName(contents, column.name);
  for (const IndexLayout& index : table.indexes)
    contents += IndexBlock(index).Bytes();
  for (const LogicalIndexLayout& index : table.logical_indexes)
    contents += LogicalIndexBlock(index).Bytes();
  for (const LogicalIndexLayout& index : table.logical_indexes)
    AppendName(contents, index.name);
  AppendLongColumns(contents, table);
  StoreLittle(contents.data() + definition::kLength.offset,
              static_cast<std::uint32_t>(contents.size() + definition::kHead));
  return contents;
}

std::size_t DefinitionPageCount(std::size_t contents_length) {
  return (contents_length + definition::kReserve + kPagePayload - 1) / kPagePayload;
}

void PutDefinition(PageSink& sink, std::span<const PageNumber> pages, std::string_view contents) {
  const std::size_t length = contents.size() + definition::kReserve;
  for (std::size_t i = 0; i < pages.size(); ++i) {
    const std::size_t begin = i * kPagePayload;
    PageBuffer page(PageKind::kDefinition);
    page.Put(definition::kHead, contents.substr(std::min(begin, contents.size()), kPagePayload));
    page.Set(page::kFree,
             static_cast<std::uint16_t>(kPagePayload - std::min(length - begin, kPagePayload)));
    if (i + 1 < pages.size()) page.Set(definition::kNextPage, pages[i + 1]);
    sink.Put(pages[i], page);
  }
}

}  // namespace jet::file
