#include "jet/store/catalogue.h"

#include <algorithm>
#include <utility>

#include "foundation/encodings.h"
#include "foundation/text.h"
#include "jet/values/sort_key.h"

namespace jet {
namespace {

constexpr std::int64_t kApplicationId = 0x544D4A54;  // "TMJT"
constexpr std::int64_t kLayoutVersion = 3;
constexpr const char* kSystemNames[] = {"MSysACEs", "MSysObjects", "MSysQueries",
                                        "MSysRelationships"};

constexpr std::int64_t kPrimary = 1;
constexpr std::int64_t kUnique = 2;
constexpr std::int64_t kRequired = 4;
constexpr std::int64_t kIgnoreNulls = 8;
constexpr std::int64_t kForeign = 16;

}  // namespace

bool InNameOrder(const std::string& a, const std::string& b) {
  const int order = CompareTexts(a, b);
  return order != 0 ? order < 0 : a < b;
}

std::vector<ports::TableSummary> SystemTables() {
  std::vector<ports::TableSummary> tables;
  for (const char* const name : kSystemNames)
    tables.push_back({name, ports::kSystemObject});
  return tables;
}

bool IsSystemTable(std::string_view name) {
  return std::any_of(std::begin(kSystemNames), std::end(kSystemNames),
                     [&](const char* known) { return tmw::EqualIgnoringCase(known, name); });
}

std::int64_t IndexFlags(const ports::IndexDefinition& index) {
  return (index.primary ? kPrimary : 0) | (index.unique ? kUnique : 0) |
         (index.required ? kRequired : 0) | (index.ignore_nulls ? kIgnoreNulls : 0) |
         (index.foreign ? kForeign : 0);
}

void CreateCatalogue(Connection& connection) {
  connection.Run("PRAGMA encoding = 'UTF-8'");
  connection.Run("PRAGMA application_id = " + std::to_string(kApplicationId));
  connection.Run("PRAGMA user_version = " + std::to_string(kLayoutVersion));
  connection.Run(
      "BEGIN;"
      "CREATE TABLE _jet_table(id INTEGER PRIMARY KEY, name TEXT, attributes INTEGER,"
      " next_number INTEGER);"
      "CREATE TABLE _jet_field(id INTEGER PRIMARY KEY, table_id INTEGER, ordinal INTEGER,"
      " name TEXT, type INTEGER, size INTEGER, attributes INTEGER, required INTEGER,"
      " allow_zero_length INTEGER, default_text TEXT);"
      "CREATE INDEX _jet_field_of_table ON _jet_field(table_id, ordinal);"
      "CREATE TABLE _jet_index(id INTEGER PRIMARY KEY, table_id INTEGER, name TEXT,"
      " flags INTEGER);"
      "CREATE INDEX _jet_index_of_table ON _jet_index(table_id);"
      "CREATE TABLE _jet_index_field(index_id INTEGER, ordinal INTEGER, field_id INTEGER,"
      " descending INTEGER, PRIMARY KEY(index_id, ordinal)) WITHOUT ROWID;"
      "CREATE TABLE _jet_property(table_id INTEGER, field_id INTEGER, name TEXT, type INTEGER,"
      " value, PRIMARY KEY(field_id, name)) WITHOUT ROWID;"
      "CREATE TABLE _jet_relation(id INTEGER PRIMARY KEY, name TEXT, table_id INTEGER,"
      " referenced_id INTEGER, attributes INTEGER, index_id INTEGER);"
      "CREATE TABLE _jet_relation_field(relation_id INTEGER, ordinal INTEGER, field_id INTEGER,"
      " referenced_field_id INTEGER, PRIMARY KEY(relation_id, ordinal)) WITHOUT ROWID;"
      "COMMIT");
}

bool HasCatalogue(Connection& connection) {
  return connection.ReadInteger("PRAGMA application_id") == kApplicationId &&
         connection.ReadInteger("PRAGMA user_version") == kLayoutVersion;
}

void Catalogue::Forget() {
  tables_.clear();
  names_loaded_ = false;
}

void Catalogue::LoadNames() {
  if (names_loaded_) return;
  Statement rows(connection_, "SELECT id, name, attributes FROM _jet_table");
  while (rows.Step()) {
    Entry entry;
    entry.id = rows.Integer(0);
    entry.name = rows.Text(1);
    entry.attributes = static_cast<std::uint32_t>(rows.Integer(2));
    tables_.emplace(tmw::LowerCase(entry.name), std::move(entry));
  }
  names_loaded_ = true;
}

TablePtr Catalogue::FindTable(std::string_view name) {
  LoadNames();
  const auto found = tables_.find(tmw::LowerCase(name));
  if (found == tables_.end()) return nullptr;
  if (!found->second.loaded) found->second.loaded = LoadTable(found->second);
  return found->second.loaded;
}

std::vector<ports::TableSummary> Catalogue::Tables() {
  LoadNames();
  std::vector<ports::TableSummary> tables;
  for (const auto& [lower, entry] : tables_)
    tables.push_back({entry.name, entry.attributes});
  return tables;
}

TablePtr Catalogue::LoadTable(const Entry& entry) {
  auto table = std::make_shared<TableInfo>();
  table->id = entry.id;
  table->name = entry.name;
  table->attributes = entry.attributes;
  LoadFields(*table);
  LoadIndexes(*table);
  return table;
}

void Catalogue::LoadFields(TableInfo& table) {
  Statement rows(
      connection_,
      "SELECT id, name, type, size, attributes, required, allow_zero_length, default_text"
      " FROM _jet_field WHERE table_id = ?1 ORDER BY ordinal");
  rows.Bind(1, table.id);
  while (rows.Step()) {
    FieldInfo field;
    field.id = rows.Integer(0);
    field.column = "c" + std::to_string(field.id);
    ports::FieldDefinition& definition = field.definition;
    definition.name = rows.Text(1);
    definition.type = static_cast<ports::DataType>(rows.Integer(2));
    definition.size = static_cast<std::int32_t>(rows.Integer(3));
    definition.attributes = static_cast<std::int32_t>(rows.Integer(4));
    definition.required = rows.Integer(5) != 0;
    definition.allow_zero_length = rows.Integer(6) != 0;
    definition.default_value = rows.Text(7);
    field.lower_name = tmw::LowerCase(definition.name);
    field.target = TargetOf(definition, false);
    table.fields.push_back(std::move(field));
  }
}

void Catalogue::LoadIndexes(TableInfo& table) {
  Statement rows(connection_, "SELECT id, name, flags FROM _jet_index WHERE table_id = ?1");
  rows.Bind(1, table.id);
  while (rows.Step()) {
    IndexInfo index;
    index.id = rows.Integer(0);
    index.definition.name = rows.Text(1);
    index.lower_name = tmw::LowerCase(index.definition.name);
    const std::int64_t flags = rows.Integer(2);
    index.definition.primary = (flags & kPrimary) != 0;
    index.definition.unique = (flags & kUnique) != 0;
    index.definition.required = (flags & kRequired) != 0;
    index.definition.ignore_nulls = (flags & kIgnoreNulls) != 0;
    index.definition.foreign = (flags & kForeign) != 0;
    table.indexes.push_back(std::move(index));
  }
  Statement parts(connection_,
                  "SELECT field_id, descending FROM _jet_index_field"
                  " WHERE index_id = ?1 ORDER BY ordinal");
  for (IndexInfo& index : table.indexes) {
    parts.Bind(1, index.id);
    while (parts.Step()) {
      const auto field = std::find_if(
          table.fields.begin(), table.fields.end(),
          [id = parts.Integer(0)](const FieldInfo& candidate) { return candidate.id == id; });
      index.positions.push_back(static_cast<std::size_t>(field - table.fields.begin()));
      index.definition.fields.push_back({field->definition.name, parts.Integer(1) != 0});
      if (index.definition.required) field->target.in_primary_key = true;
    }
    parts.Reset();
  }
  std::sort(table.indexes.begin(), table.indexes.end(), [](const auto& a, const auto& b) {
    return InNameOrder(a.definition.name, b.definition.name);
  });
}

}  // namespace jet
