#include "platform/windows/dao/dao_database.h"

#include <algorithm>

#include "foundation/encodings.h"
#include "platform/windows/dao/dao_definitions.h"
#include "platform/windows/dao/dao_recordset.h"
#include "platform/windows/dao/dao_values.h"

namespace platform {
namespace {

constexpr std::int32_t kFailOnError = 128;
constexpr std::int32_t kOpenTable = 1;
constexpr std::int32_t kOpenDynaset = 2;
constexpr std::int32_t kPropertyNotFound = 3270;

}  // namespace

DaoDatabase::~DaoDatabase() {
  if (!is_open_) return;
  try {
    Close();
  } catch (const ports::DatabaseError&) {  // NOLINT(bugprone-empty-catch): too late to report
  }
}

DaoObject DaoDatabase::TableObject(const std::string& name) const {
  return Refreshed(database_, L"TableDefs").Item(name);
}

DaoObject DaoDatabase::FieldObject(const std::string& table, const std::string& field) const {
  return Refreshed(TableObject(table), L"Fields").Item(field);
}

std::vector<ports::TableSummary> DaoDatabase::Tables() {
  std::vector<ports::TableSummary> tables;
  const DaoObject collection = Refreshed(database_, L"TableDefs");
  for (std::int32_t i = 0; i < collection.Count(); ++i) {
    const DaoObject table = collection.Item(i);
    tables.push_back(
        {TextOf(table.Get(L"Name")), static_cast<std::uint32_t>(LongOf(table.Get(L"Attributes")))});
  }
  return tables;
}

ports::TableDefinition DaoDatabase::Table(const std::string& name) {
  return ReadTable(TableObject(name));
}

void DaoDatabase::CreateTable(const ports::TableDefinition& definition) {
  const DaoObject table = database_.CallObject(L"CreateTableDef", {definition.name});
  const DaoObject fields = table.GetObject(L"Fields");
  std::int16_t position = 0;
  for (const ports::FieldDefinition& field : definition.fields)
    fields.Append(MakeField(table, field, position++));
  const DaoObject indexes = table.GetObject(L"Indexes");
  for (const ports::IndexDefinition& index : definition.indexes)
    indexes.Append(MakeIndex(table, index));
  database_.GetObject(L"TableDefs").Append(table);
}

void DaoDatabase::DeleteTable(const std::string& name) {
  Refreshed(database_, L"TableDefs").Call(L"Delete", {name});
}

void DaoDatabase::CreateField(const std::string& table, const ports::FieldDefinition& field) {
  const DaoObject definition = TableObject(table);
  const DaoObject fields = Refreshed(definition, L"Fields");
  fields.Append(MakeField(definition, field, PositionBehind(fields)));
}

void DaoDatabase::CreateIndex(const std::string& table, const ports::IndexDefinition& index) {
  const DaoObject definition = TableObject(table);
  definition.GetObject(L"Indexes").Append(MakeIndex(definition, index));
}

std::vector<ports::RelationDefinition> DaoDatabase::Relations() {
  std::vector<ports::RelationDefinition> relations;
  const DaoObject collection = Refreshed(database_, L"Relations");
  for (std::int32_t i = 0; i < collection.Count(); ++i)
    relations.push_back(ReadRelation(collection.Item(i)));
  std::sort(relations.begin(), relations.end(), [](const auto& a, const auto& b) {
    return tmw::LowerCase(a.name) < tmw::LowerCase(b.name);
  });
  return relations;
}

void DaoDatabase::CreateRelation(const ports::RelationDefinition& relation) {
  database_.GetObject(L"Relations").Append(MakeRelation(database_, relation));
}

void DaoDatabase::DeleteRelation(const std::string& name) {
  Refreshed(database_, L"Relations").Call(L"Delete", {name});
}

void DaoDatabase::SetFieldProperty(const std::string& table, const std::string& field,
                                   const std::string& property, ports::DataType type,
                                   const ports::DatabaseValue& value) {
  const DaoObject target = FieldObject(table, field);
  const DaoObject properties = target.GetObject(L"Properties");
  try {
    properties.Item(property).Put(L"Value", value);
  } catch (const ports::DatabaseError& error) {
    if (error.Number != kPropertyNotFound && error.Number != ports::kItemNotFound) throw;
    properties.Append(
        target.CallObject(L"CreateProperty", {property, static_cast<std::int32_t>(type), value}));
  }
}

std::optional<ports::DatabaseValue> DaoDatabase::FieldProperty(const std::string& table,
                                                               const std::string& field,
                                                               const std::string& property) {
  const DaoObject properties = FieldObject(table, field).GetObject(L"Properties");
  try {
    return properties.Item(property).Get(L"Value");
  } catch (const ports::DatabaseError& error) {
    if (error.Number != kPropertyNotFound && error.Number != ports::kItemNotFound) throw;
    return std::nullopt;
  }
}

std::int64_t DaoDatabase::Execute(const std::string& sql, bool fail_on_error) {
  DaoObject::Arguments arguments = {sql};
  if (fail_on_error) arguments.emplace_back(kFailOnError);
  database_.Call(L"Execute", arguments);
  return LongOf(database_.Get(L"RecordsAffected"));
}

std::unique_ptr<ports::DatabaseRecordset> DaoDatabase::OpenRecordset(const std::string& source,
                                                                     ports::RecordsetType type) {
  const std::int32_t kind = type == ports::RecordsetType::kTable ? kOpenTable : kOpenDynaset;
  return std::make_unique<DaoRecordset>(database_.CallObject(L"OpenRecordset", {source, kind}));
}

void DaoDatabase::Close() {
  is_open_ = false;
  database_.Call(L"Close");
}

}  // namespace platform
