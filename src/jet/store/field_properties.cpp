#include "jet/store/field_properties.h"

#include <algorithm>
#include <utility>

#include "foundation/encodings.h"
#include "foundation/text.h"
#include "jet/file/stored_value.h"
#include "jet/file/table_layout.h"

namespace jet {
namespace {

file::ColumnLayout ColumnOfType(std::uint8_t type) {
  file::ColumnLayout column;
  column.type = static_cast<file::ColumnType>(type);
  return column;
}

}  // namespace

bool IsPartOfDefinition(std::string_view property) {
  namespace names = field_property;
  return tmw::EqualIgnoringCase(property, names::kRequired) ||
         tmw::EqualIgnoringCase(property, names::kAllowZeroLength) ||
         tmw::EqualIgnoringCase(property, names::kDefaultValue);
}

const file::PropertySet* FindProperties(const std::vector<file::PropertySet>& sets,
                                        std::string_view column) {
  const auto found = std::find_if(sets.begin(), sets.end(), [column](const auto& set) {
    return set.kind == file::properties::kOfColumn && tmw::EqualIgnoringCase(set.owner, column);
  });
  return found == sets.end() ? nullptr : &*found;
}

const file::StoredProperty* FindProperty(const file::PropertySet* set, std::string_view name) {
  if (set == nullptr) return nullptr;
  const auto found = std::find_if(
      set->properties.begin(), set->properties.end(),
      [name](const auto& property) { return tmw::EqualIgnoringCase(property.name, name); });
  return found == set->properties.end() ? nullptr : &*found;
}

ports::DatabaseValue PropertyValue(const file::StoredProperty& property) {
  const file::ColumnLayout column = ColumnOfType(property.type);
  // A value of the wrong length belongs to a type of other programs.
  const std::size_t width = file::ValueWidth(column.type);
  const bool is_known = file::IsKnown(column.type) && column.type != file::ColumnType::kNumeric &&
                        (width == 0 || property.value.size() == width);
  if (!is_known) return ports::NullValue{};
  return file::ToValue(column, property.value);
}

file::StoredProperty StoredPropertyOf(std::string name, ports::DataType type,
                                      const ports::DatabaseValue& value) {
  file::StoredProperty property;
  property.name = std::move(name);
  property.type = static_cast<std::uint8_t>(type);
  property.value = file::ToStored(ColumnOfType(property.type), value).value_or(std::string());
  return property;
}

FieldProperties LoadProperties(const std::shared_ptr<Connection>& storage, std::int64_t table) {
  FieldProperties properties;
  Statement rows(storage,
                 "SELECT field_id, name, type, flag, value FROM _jet_property WHERE table_id = ?1"
                 " ORDER BY field_id, lower_name");
  rows.Bind(1, table);
  while (rows.Step())
    properties[rows.Integer(0)].push_back(ReadProperty(rows, 1));
  return properties;
}

Statement& BindProperty(Statement& insert, std::int64_t table, std::int64_t field,
                        const file::StoredProperty& property) {
  insert.Bind(1, table).Bind(2, field);
  insert.BindCopy(3, tmw::LowerCase(property.name)).Bind(4, std::string_view(property.name));
  insert.Bind(5, std::int64_t{property.type}).Bind(6, std::int64_t{property.flag});
  return insert.BindBytes(7, property.value);
}

file::StoredProperty ReadProperty(const Statement& row, int first_column) {
  file::StoredProperty property;
  property.name = row.Text(first_column);
  property.type = static_cast<std::uint8_t>(row.Integer(first_column + 1));
  property.flag = static_cast<std::uint8_t>(row.Integer(first_column + 2));
  property.value = row.Bytes(first_column + 3);
  return property;
}

}  // namespace jet
