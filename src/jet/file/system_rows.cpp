#include "jet/file/system_rows.h"

#include <algorithm>

#include "jet/file/bytes.h"
#include "jet/file/packed_text.h"

namespace jet::file {
namespace {

std::vector<const ColumnLayout*> FindColumns(const TableLayout& layout, const SystemTable& table) {
  std::vector<const ColumnLayout*> columns;
  for (const SystemColumn& wanted : table.columns) {
    const auto found =
        std::find_if(layout.columns.begin(), layout.columns.end(),
                     [&wanted](const ColumnLayout& column) { return column.name == wanted.name; });
    if (found == layout.columns.end() || found->type != wanted.type)
      throw Damage(layout.page, texts::kBadSystemTable);
    columns.push_back(&*found);
  }
  return columns;
}

}  // namespace

TableLayout ReadLayout(PageSource& source, PageNumber page, PageNumber from) {
  return ParseDefinition(ReadDefinitionChain(source, page, from));
}

SystemRows::SystemRows(PageSource& source, PageNumber definition, const SystemTable& table)
    : layout_(ReadLayout(source, definition, header::kPage)),
      columns_(FindColumns(layout_, table)),
      cursor_(source, layout_) {}

bool SystemRows::Next() {
  if (!cursor_.Next()) return false;
  if (++row_count_ > limits::kSystemRows) throw Damage(layout_.page, texts::kManyObjects);
  return true;
}

std::optional<std::string_view> SystemRows::Stored(std::uint16_t column) const {
  return cursor_.Row().Stored(*columns_[column]);
}

std::uint32_t SystemRows::Number(std::uint16_t column) const {
  const auto stored = Stored(column);
  if (!stored) return 0;
  switch (stored->size()) {
    case 1:
      return LoadLittle<std::uint8_t>(stored->data());
    case 2:
      return static_cast<std::uint32_t>(LoadLittle<std::int16_t>(stored->data()));
    case 4:
      return LoadLittle<std::uint32_t>(stored->data());
    default:
      throw Damage(Home().page, texts::kBadRecord);
  }
}

std::string SystemRows::Text(std::uint16_t column) const {
  const auto stored = Stored(column);
  return stored ? UnpackText(*stored) : std::string();
}

}  // namespace jet::file
