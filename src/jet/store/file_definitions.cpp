#include "jet/store/file_definitions.h"

#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <variant>

#include "foundation/text.h"
#include "jet/file/layout_builder.h"
#include "jet/store/catalogue.h"

namespace jet {
namespace {

namespace column_flags = file::definition::column;
using file::ColumnLayout;
using file::ColumnType;
using ports::DataType;

// Attributes that only files of other programs have.
constexpr std::int32_t kFixedField = 1;
constexpr std::int32_t kSystemField = 0x2000;
constexpr std::int32_t kHyperlinkField = 0x8000;
constexpr const char* kUnicodeCompression = "UnicodeCompression";

std::int32_t AttributesOf(const ColumnLayout& column) {
  std::int32_t attributes = 0;
  if (column.IsAutonumber()) attributes |= ports::kAutoIncrementField;
  if ((column.flags & column_flags::kHyperlink) != 0) attributes |= kHyperlinkField;
  if ((column.flags & column_flags::kSystem) != 0) attributes |= kSystemField;
  const bool may_vary = column.type == ColumnType::kText || column.type == ColumnType::kBinary;
  if (may_vary && column.IsFixed()) attributes |= kFixedField;
  return attributes;
}

std::int32_t SizeOf(const ColumnLayout& column) {
  switch (column.type) {
    case ColumnType::kText:
      return column.size / 2;
    case ColumnType::kBoolean:
      return 1;
    case ColumnType::kOle:
    case ColumnType::kMemo:
      return 0;
    default:
      return column.size;
  }
}

template <typename T>
T PropertyOr(const file::PropertySet* set, std::string_view name, T otherwise) {
  const file::StoredProperty* const property = FindProperty(set, name);
  if (property == nullptr) return otherwise;
  const ports::DatabaseValue value = PropertyValue(*property);
  const T* const held = std::get_if<T>(&value);
  return held == nullptr ? otherwise : *held;
}

ColumnType TypeInFile(DataType type) {
  return type == DataType::kDecimal ? ColumnType::kNumeric : static_cast<ColumnType>(type);
}

bool IsCompressed(const FieldInfo& field, const ColumnLayout* source,
                  const FieldProperties& properties) {
  const auto set = properties.find(field.id);
  if (set != properties.end()) {
    for (const file::StoredProperty& property : set->second) {
      if (!tmw::EqualIgnoringCase(property.name, kUnicodeCompression)) continue;
      const ports::DatabaseValue value = PropertyValue(property);
      const bool* const held = std::get_if<bool>(&value);
      if (held != nullptr) return *held;
    }
  }
  return source != nullptr && (source->extra_flags & column_flags::kCompressed) != 0;
}

const ColumnLayout* SourceOf(const FieldInfo& field, const file::TableLayout* table) {
  const auto column = ColumnOf(field.id);
  return table == nullptr || !column ? nullptr : table->FindColumn(*column);
}

ColumnLayout MakeColumn(const FieldInfo& field, const ColumnLayout* source,
                        const FieldProperties& properties, std::uint32_t sort_order) {
  const ports::FieldDefinition& definition = field.definition;
  const int unit = definition.type == DataType::kText ? 2 : 1;
  ColumnLayout column =
      file::NewColumn(definition.name, TypeInFile(definition.type),
                      static_cast<std::uint16_t>(definition.size * unit), sort_order);
  if (definition.type == DataType::kDecimal)
    column.sort_order = static_cast<std::uint32_t>(StoredSize(definition));
  const bool may_vary = column.type == ColumnType::kText || column.type == ColumnType::kBinary;
  if (may_vary && (definition.attributes & kFixedField) != 0) column.flags |= column_flags::kFixed;
  if ((definition.attributes & kHyperlinkField) != 0) column.flags |= column_flags::kHyperlink;
  if (source != nullptr) {
    column.type = source->type;
    column.size = source->size;
    column.sort_order = source->sort_order;
    column.flags = source->flags;
    column.extra_flags = source->extra_flags;
  }
  if (field.IsAutonumber()) column.flags |= column_flags::kAutonumber;
  if (IsCompressed(field, source, properties) && IsTextType(definition.type)) {
    column.extra_flags |= column_flags::kCompressed;
  } else {
    column.extra_flags &= static_cast<std::uint8_t>(~column_flags::kCompressed);
  }
  return column;
}

file::StoredProperty DefinitionProperty(const char* name, DataType type,
                                        const ports::DatabaseValue& value) {
  file::StoredProperty property = StoredPropertyOf(name, type, value);
  property.flag = 1;
  return property;
}

}  // namespace

DataType FieldType(ColumnType type) {
  switch (type) {
    case ColumnType::kNumeric:
      return DataType::kDecimal;
    case ColumnType::kWideBinary:
      return DataType::kBinary;
    default:
      return static_cast<DataType>(type);
  }
}

ports::FieldDefinition FieldOf(const ColumnLayout& column, const file::PropertySet* properties) {
  ports::FieldDefinition field;
  field.name = column.name;
  field.type = FieldType(column.type);
  field.size = SizeOf(column);
  if (field.type == DataType::kDecimal)
    std::tie(field.precision, field.scale) = DecimalParts(column.sort_order & 0xFFFF);
  field.attributes = AttributesOf(column);
  field.required = PropertyOr(properties, field_property::kRequired, false);
  field.allow_zero_length = PropertyOr(properties, field_property::kAllowZeroLength, false);
  field.default_value = PropertyOr(properties, field_property::kDefaultValue, std::string());
  return field;
}

bool IsListed(const file::LogicalIndexLayout& index) {
  namespace logical = file::definition::logical_index;
  return !index.relation || index.relation->side != logical::kReferencedSide;
}

ports::IndexDefinition IndexOf(const file::TableLayout& table,
                               const file::LogicalIndexLayout& index) {
  const file::IndexLayout& tree = table.indexes.at(index.real_index);
  ports::IndexDefinition definition;
  definition.name = index.name;
  definition.primary = index.kind == file::definition::logical_index::kPrimary;
  definition.foreign = index.relation.has_value();
  definition.unique = tree.IsUnique();
  definition.required = tree.IsRequired();
  definition.ignore_nulls = tree.IgnoresNulls();
  for (const file::KeyColumn& part : tree.columns)
    definition.fields.push_back({table.FindColumn(part.column_id)->name, part.is_descending});
  return definition;
}

file::TableLayout LayoutOf(const TableInfo& table, const file::TableLayout* source,
                           const FieldProperties& properties, std::uint32_t sort_order) {
  namespace index_flags = file::definition::real_index;
  file::TableLayout layout;
  if (source != nullptr) {
    layout.page = source->page;
    layout.autonumber_step = source->autonumber_step;
  }
  for (const FieldInfo& field : table.fields)
    layout.columns.push_back(MakeColumn(field, SourceOf(field, source), properties, sort_order));
  file::PlaceColumns(layout);
  for (const IndexInfo& index : table.indexes) {
    const ports::IndexDefinition& definition = index.definition;
    if (definition.foreign) continue;
    std::vector<file::KeyColumn> columns;
    for (std::size_t i = 0; i < index.positions.size(); ++i)
      columns.push_back({layout.columns[index.positions[i]].id, definition.fields[i].descending});
    const int flags = (definition.unique ? index_flags::kUnique : 0) |
                      (definition.required ? index_flags::kRequired : 0) |
                      (definition.ignore_nulls ? index_flags::kIgnoreNulls : 0);
    file::AddIndex(layout, definition.name, std::move(columns), static_cast<std::uint8_t>(flags),
                   definition.primary);
  }
  return layout;
}

std::vector<file::PropertySet> PropertySetsOf(const TableInfo& table,
                                              const FieldProperties& properties) {
  namespace names = field_property;
  std::vector<file::PropertySet> sets;
  for (const FieldInfo& field : table.fields) {
    const ports::FieldDefinition& definition = field.definition;
    file::PropertySet set;
    set.kind = file::properties::kOfColumn;
    set.owner = definition.name;
    const auto add = [&set](const char* name, DataType type, const ports::DatabaseValue& value) {
      set.properties.push_back(DefinitionProperty(name, type, value));
    };
    if (definition.required) add(names::kRequired, DataType::kBoolean, true);
    const bool is_made_here = !ColumnOf(field.id);
    if (IsTextType(definition.type) && (definition.allow_zero_length || is_made_here))
      add(names::kAllowZeroLength, DataType::kBoolean, definition.allow_zero_length);
    if (!definition.default_value.empty())
      add(names::kDefaultValue, DataType::kMemo, definition.default_value);
    if (const auto found = properties.find(field.id); found != properties.end())
      set.properties.insert(set.properties.end(), found->second.begin(), found->second.end());
    if (!set.properties.empty()) sets.push_back(std::move(set));
  }
  return sets;
}

}  // namespace jet
