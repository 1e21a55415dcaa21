#include "platform/windows/dao/dao_definitions.h"

#include <algorithm>

#include "platform/windows/dao/dao_values.h"

namespace platform {
namespace {

constexpr std::int32_t kDescendingField = 1;

}  // namespace

DaoObject Refreshed(const DaoObject& owner, const wchar_t* name) {
  DaoObject collection = owner.GetObject(name);
  collection.Call(L"Refresh");
  return collection;
}

ports::FieldDefinition ReadField(const DaoObject& field) {
  ports::FieldDefinition definition;
  definition.name = TextOf(field.Get(L"Name"));
  definition.type = static_cast<ports::DataType>(LongOf(field.Get(L"Type")));
  definition.size = LongOf(field.Get(L"Size"));
  definition.attributes = LongOf(field.Get(L"Attributes"));
  definition.required = BooleanOf(field.Get(L"Required"));
  definition.allow_zero_length = BooleanOf(field.Get(L"AllowZeroLength"));
  definition.default_value = TextOf(field.Get(L"DefaultValue"));
  return definition;
}

ports::IndexDefinition ReadIndex(const DaoObject& index) {
  ports::IndexDefinition definition;
  definition.name = TextOf(index.Get(L"Name"));
  definition.primary = BooleanOf(index.Get(L"Primary"));
  definition.unique = BooleanOf(index.Get(L"Unique"));
  definition.required = BooleanOf(index.Get(L"Required"));
  definition.ignore_nulls = BooleanOf(index.Get(L"IgnoreNulls"));
  definition.foreign = BooleanOf(index.Get(L"Foreign"));
  const DaoObject fields = index.GetObject(L"Fields");
  for (std::int32_t i = 0; i < fields.Count(); ++i) {
    const DaoObject field = fields.Item(i);
    const bool descending = (LongOf(field.Get(L"Attributes")) & kDescendingField) != 0;
    definition.fields.push_back({TextOf(field.Get(L"Name")), descending});
  }
  return definition;
}

ports::TableDefinition ReadTable(const DaoObject& table) {
  ports::TableDefinition definition;
  definition.name = TextOf(table.Get(L"Name"));
  definition.attributes = static_cast<std::uint32_t>(LongOf(table.Get(L"Attributes")));
  const DaoObject fields = Refreshed(table, L"Fields");
  for (std::int32_t i = 0; i < fields.Count(); ++i)
    definition.fields.push_back(ReadField(fields.Item(i)));
  const DaoObject indexes = Refreshed(table, L"Indexes");
  for (std::int32_t i = 0; i < indexes.Count(); ++i)
    definition.indexes.push_back(ReadIndex(indexes.Item(i)));
  return definition;
}

ports::RelationDefinition ReadRelation(const DaoObject& relation) {
  ports::RelationDefinition definition;
  definition.name = TextOf(relation.Get(L"Name"));
  definition.table = TextOf(relation.Get(L"Table"));
  definition.foreign_table = TextOf(relation.Get(L"ForeignTable"));
  definition.attributes = LongOf(relation.Get(L"Attributes"));
  const DaoObject fields = relation.GetObject(L"Fields");
  for (std::int32_t i = 0; i < fields.Count(); ++i) {
    const DaoObject field = fields.Item(i);
    definition.fields.push_back({TextOf(field.Get(L"Name")), TextOf(field.Get(L"ForeignName"))});
  }
  return definition;
}

std::int16_t PositionBehind(const DaoObject& fields) {
  std::int32_t last = -1;
  for (std::int32_t i = 0; i < fields.Count(); ++i)
    last = std::max(last, LongOf(fields.Item(i).Get(L"OrdinalPosition")));
  return static_cast<std::int16_t>(last + 1);
}

// Properties that a type does not have are left alone: setting them fails.
DaoObject MakeField(const DaoObject& table, const ports::FieldDefinition& definition,
                    std::int16_t position) {
  DaoObject::Arguments arguments = {definition.name, static_cast<std::int32_t>(definition.type)};
  const bool has_size =
      definition.type == ports::DataType::kText || definition.type == ports::DataType::kBinary;
  if (has_size) arguments.emplace_back(definition.size == 0 ? 255 : definition.size);
  DaoObject field = table.CallObject(L"CreateField", arguments);
  if (definition.attributes != 0) {
    field.Put(L"Attributes", LongOf(field.Get(L"Attributes")) | definition.attributes);
  }
  field.Put(L"OrdinalPosition", position);
  field.Put(L"Required", definition.required);
  if (definition.type == ports::DataType::kText || definition.type == ports::DataType::kMemo)
    field.Put(L"AllowZeroLength", definition.allow_zero_length);
  if (!definition.default_value.empty()) field.Put(L"DefaultValue", definition.default_value);
  return field;
}

DaoObject MakeRelation(const DaoObject& database, const ports::RelationDefinition& definition) {
  DaoObject relation = database.CallObject(
      L"CreateRelation",
      {definition.name, definition.table, definition.foreign_table, definition.attributes});
  const DaoObject fields = relation.GetObject(L"Fields");
  for (const ports::RelationFieldPair& pair : definition.fields) {
    const DaoObject field = relation.CallObject(L"CreateField", {pair.name});
    field.Put(L"ForeignName", pair.foreign_name);
    fields.Append(field);
  }
  return relation;
}

DaoObject MakeIndex(const DaoObject& table, const ports::IndexDefinition& definition) {
  DaoObject index = table.CallObject(L"CreateIndex", {definition.name});
  if (definition.primary) index.Put(L"Primary", true);
  if (definition.unique) index.Put(L"Unique", true);
  if (definition.required) index.Put(L"Required", true);
  if (definition.ignore_nulls) index.Put(L"IgnoreNulls", true);
  const DaoObject fields = index.GetObject(L"Fields");
  for (const ports::IndexFieldDefinition& part : definition.fields) {
    const DaoObject field = index.CallObject(L"CreateField", {part.name});
    if (part.descending) field.Put(L"Attributes", kDescendingField);
    fields.Append(field);
  }
  return index;
}

}  // namespace platform
