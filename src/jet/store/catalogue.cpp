#include "jet/store/catalogue.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "foundation/encodings.h"
#include "jet/values/sort_key.h"

namespace jet {
namespace {

constexpr std::int64_t kPrimary = 1;
constexpr std::int64_t kUnique = 2;
constexpr std::int64_t kRequired = 4;
constexpr std::int64_t kIgnoreNulls = 8;
constexpr std::int64_t kForeign = 16;

void CreateCatalogue(Connection& connection) {
  connection.Run(
      "BEGIN;"
      "CREATE TABLE _jet_database(is_changed INTEGER, has_relations INTEGER);"
      "INSERT INTO _jet_database VALUES(0, 0);"
      "CREATE TABLE _jet_table(id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT,"
      " attributes INTEGER, next_number INTEGER, state INTEGER);"
      "CREATE TABLE _jet_field(id INTEGER PRIMARY KEY AUTOINCREMENT, table_id INTEGER,"
      " ordinal INTEGER, name TEXT, type INTEGER, size INTEGER, attributes INTEGER, required "
      "INTEGER,"
      " allow_zero_length INTEGER, default_text TEXT);"
      "CREATE INDEX _jet_field_of_table ON _jet_field(table_id, ordinal);"
      "CREATE TABLE _jet_index(id INTEGER PRIMARY KEY AUTOINCREMENT, table_id INTEGER,"
      " name TEXT, flags INTEGER);"
      "CREATE INDEX _jet_index_of_table ON _jet_index(table_id);"
      "CREATE TABLE _jet_index_field(index_id INTEGER, ordinal INTEGER, field_id INTEGER,"
      " descending INTEGER, PRIMARY KEY(index_id, ordinal)) WITHOUT ROWID;"
      "CREATE TABLE _jet_property(table_id INTEGER, field_id INTEGER, lower_name TEXT, name TEXT,"
      " type INTEGER, flag INTEGER, value BLOB, PRIMARY KEY(field_id, lower_name)) WITHOUT ROWID;"
      "CREATE TABLE _jet_relation(id INTEGER PRIMARY KEY, name TEXT, table_id INTEGER,"
      " referenced_id INTEGER, attributes INTEGER, index_id INTEGER);"
      "CREATE TABLE _jet_relation_field(relation_id INTEGER, ordinal INTEGER, field_id INTEGER,"
      " referenced_field_id INTEGER, PRIMARY KEY(relation_id, ordinal)) WITHOUT ROWID;"
      "CREATE TABLE _jet_carried_relation(name TEXT);"
      "INSERT INTO sqlite_sequence SELECT column1, " +
      std::to_string(loaded_id::kFirstMade - 1) +
      " FROM (VALUES('_jet_table'), ('_jet_field'), ('_jet_index'));"
      "COMMIT");
}

}  // namespace

bool InNameOrder(const std::string& a, const std::string& b) {
  const int order = CompareTexts(a, b);
  return order != 0 ? order < 0 : a < b;
}

std::optional<std::size_t> ObjectOf(std::int64_t table) {
  if (table >= loaded_id::kFirstMade) return std::nullopt;
  return static_cast<std::size_t>(table - 1);
}

std::optional<std::uint16_t> ColumnOf(std::int64_t field) {
  if (field >= loaded_id::kFirstMade) return std::nullopt;
  return static_cast<std::uint16_t>(field % loaded_id::kPerTable);
}

bool IsReadable(const ports::TableSummary& table) {
  return (table.attributes & (ports::kSystemObject | ports::kLinkedTable)) == 0;
}

std::int64_t IndexFlags(const ports::IndexDefinition& index) {
  return (index.primary ? kPrimary : 0) | (index.unique ? kUnique : 0) |
         (index.required ? kRequired : 0) | (index.ignore_nulls ? kIgnoreNulls : 0) |
         (index.foreign ? kForeign : 0);
}

std::shared_ptr<Connection> MakeWorkingStore() {
  auto storage = std::make_shared<Connection>();
  storage->Open();
  CreateCatalogue(*storage);
  return storage;
}

void Catalogue::Forget() {
  latest_ = nullptr;
  tables_.clear();
  names_loaded_ = false;
}

void Catalogue::LoadNames() {
  if (names_loaded_) return;
  Statement rows(connection_, "SELECT id, name, attributes, state FROM _jet_table");
  while (rows.Step()) {
    Entry entry;
    entry.id = rows.Integer(0);
    entry.summary.name = rows.Text(1);
    entry.summary.attributes = static_cast<std::uint32_t>(rows.Integer(2));
    entry.state = static_cast<TableState>(rows.Integer(3));
    tables_.emplace(tmw::LowerCase(entry.summary.name), std::move(entry));
  }
  names_loaded_ = true;
}

TablePtr Catalogue::FindTable(std::string_view name) {
  LoadNames();
  if (latest_ == nullptr || latest_->summary.name != name) {
    const auto found = tables_.find(tmw::LowerCase(name));
    if (found == tables_.end()) return nullptr;
    latest_ = &found->second;
  }
  Entry& entry = *latest_;
  if (!IsReadable(entry.summary)) return nullptr;
  if (!entry.loaded) entry.loaded = LoadTable(entry);
  return entry.loaded;
}

TablePtr Catalogue::FindTable(std::int64_t id) {
  LoadNames();
  const auto found = std::find_if(tables_.begin(), tables_.end(),
                                  [id](const auto& entry) { return entry.second.id == id; });
  return found == tables_.end() ? nullptr : FindTable(found->second.summary.name);
}

const ports::TableSummary* Catalogue::FindSummary(std::string_view name) {
  LoadNames();
  const auto found = tables_.find(tmw::LowerCase(name));
  return found == tables_.end() ? nullptr : &found->second.summary;
}

std::vector<ports::TableSummary> Catalogue::Tables() {
  LoadNames();
  std::vector<ports::TableSummary> tables;
  tables.reserve(tables_.size());
  for (const auto& [lower, entry] : tables_)
    tables.push_back(entry.summary);
  return tables;
}

TablePtr Catalogue::LoadTable(Entry& entry) {
  if (entry.state == TableState::kInFile) {
    definer_.Define(entry.id);
    entry.state = TableState::kDefined;
  }
  auto table = std::make_shared<TableInfo>();
  table->id = entry.id;
  table->name = entry.summary.name;
  table->attributes = entry.summary.attributes;
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
    if (definition.type == ports::DataType::kDecimal) {
      std::tie(definition.precision, definition.scale) = DecimalParts(definition.size);
      definition.size = FieldSize(definition.type, 0, definition.name);
    }
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
