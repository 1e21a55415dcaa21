#include "jet/store/table_loader.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "jet/errors.h"
#include "jet/file/system_tables.h"
#include "jet/store/definitions.h"
#include "jet/store/field_properties.h"
#include "jet/store/file_definitions.h"
#include "jet/store/row_limit.h"
#include "jet/store/stored_values.h"

namespace jet {
namespace {

using file::CatalogueObject;

// Attributes that a table's flags and those of the definition port have in common.
constexpr std::uint32_t kSharedFlags = ports::kSystemObject | ports::kHiddenObject;
constexpr std::uint32_t kAttachedTable = 0x40000000;
constexpr std::uint32_t kAttachedOdbcTable = 0x20000000;

std::uint32_t AttributesOf(const CatalogueObject& object) {
  std::uint32_t attributes = object.flags & kSharedFlags;
  if (object.type == file::object_type::kLinkedTable) attributes |= kAttachedTable;
  if (object.type == file::object_type::kOdbcTable) attributes |= kAttachedOdbcTable;
  return attributes;
}

}  // namespace

LoadingStep::LoadingStep(Connection& storage) : storage_(storage) {
  storage_.Run("SAVEPOINT loading");
}

LoadingStep::~LoadingStep() {
  if (is_done_) return;
  try {
    storage_.Run("ROLLBACK TO loading; RELEASE loading");
  } catch (const ports::DatabaseError&) {  // NOLINT(bugprone-empty-catch): undone with the rest
  }
}

void LoadingStep::Finish() {
  storage_.Run("RELEASE loading");
  is_done_ = true;
}

void ListTables(const std::shared_ptr<Connection>& storage, const file::DatabaseReader& reader) {
  LoadingStep step(*storage);
  Statement insert(storage,
                   "INSERT INTO _jet_table(id, name, attributes, state) VALUES(?1, ?2, ?3, ?4)");
  const auto& objects = reader.Objects();
  for (std::size_t i = 0; i < objects.size(); ++i) {
    if (!file::IsTable(objects[i])) continue;
    insert.Bind(1, static_cast<std::int64_t>(i) + 1).Bind(2, std::string_view(objects[i].name));
    insert.Bind(3, std::int64_t{AttributesOf(objects[i])});
    insert.Bind(4, static_cast<std::int64_t>(TableState::kInFile)).Run();
  }
  step.Finish();
}

void TableLoader::Define(std::int64_t table) {
  const CatalogueObject& object = container_.Reader().Objects().at(*ObjectOf(table));
  const file::TableLayout layout = container_.Reader().Definition(object);
  const Connection::Unnoticed unnoticed(*storage_);
  LoadingStep step(*storage_);
  InsertFields(table, layout, container_.Reader().Properties(object));
  InsertIndexes(table, layout);
  const std::int64_t last_number = static_cast<std::int32_t>(layout.last_autonumber);
  storage_->Run("UPDATE _jet_table SET next_number = " + std::to_string(last_number + 1) +
                " WHERE id = " + std::to_string(table));
  SetState(table, TableState::kDefined);
  step.Finish();
}

void TableLoader::InsertFields(std::int64_t table, const file::TableLayout& layout,
                               const std::vector<file::PropertySet>& properties) {
  Statement insert = Prepare(
      "INSERT INTO _jet_field(id, table_id, ordinal, name, type, size, attributes, required,"
      " allow_zero_length, default_text) VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10)");
  Statement property = Prepare("INSERT INTO _jet_property VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7)");
  std::int64_t ordinal = 0;
  for (const std::size_t position : file::FieldOrder(layout)) {
    const file::ColumnLayout& column = layout.columns[position];
    const file::PropertySet* const set = FindProperties(properties, column.name);
    const ports::FieldDefinition field = FieldOf(column, set);
    const std::int64_t id = table * loaded_id::kPerTable + column.id;
    insert.Bind(1, id).Bind(2, table).Bind(3, ordinal++).Bind(4, std::string_view(field.name));
    insert.Bind(5, static_cast<std::int64_t>(field.type)).Bind(6, std::int64_t{StoredSize(field)});
    insert.Bind(7, std::int64_t{field.attributes}).Bind(8, std::int64_t{field.required ? 1 : 0});
    insert.Bind(9, std::int64_t{field.allow_zero_length ? 1 : 0});
    insert.Bind(10, std::string_view(field.default_value)).Run();
    if (set == nullptr) continue;
    for (const file::StoredProperty& stored : set->properties) {
      if (!IsPartOfDefinition(stored.name)) BindProperty(property, table, id, stored).Run();
    }
  }
}

void TableLoader::InsertIndexes(std::int64_t table, const file::TableLayout& layout) {
  Statement insert = Prepare("INSERT INTO _jet_index VALUES(?1, ?2, ?3, ?4)");
  Statement part = Prepare("INSERT INTO _jet_index_field VALUES(?1, ?2, ?3, ?4)");
  std::int64_t id = table * loaded_id::kPerTable;
  for (const file::LogicalIndexLayout& logical : layout.logical_indexes) {
    ++id;
    if (!IsListed(logical)) continue;
    const ports::IndexDefinition index = IndexOf(layout, logical);
    insert.Bind(1, id).Bind(2, table).Bind(3, std::string_view(index.name));
    insert.Bind(4, IndexFlags(index)).Run();
    std::int64_t ordinal = 0;
    for (const file::KeyColumn& column : layout.indexes[logical.real_index].columns) {
      part.Bind(1, id).Bind(2, ordinal++);
      part.Bind(3, table * loaded_id::kPerTable + column.column_id);
      part.Bind(4, std::int64_t{column.is_descending ? 1 : 0}).Run();
    }
  }
}

std::optional<TableState> TableLoader::StateOf(std::int64_t table) {
  Statement row = Prepare("SELECT state FROM _jet_table WHERE id = ?1");
  if (!row.Bind(1, table).Step()) return std::nullopt;
  return static_cast<TableState>(row.Integer(0));
}

void TableLoader::LoadRows(const TablePtr& table) {
  const auto state = StateOf(table->id);
  if (!state || *state >= TableState::kLoaded) return;
  const Connection::Unnoticed unnoticed(*storage_);
  LoadingStep step(*storage_);
  // The definition may have been taken back with the transaction that asked for it.
  if (*state == TableState::kInFile) Define(table->id);
  InsertRows(*table, container_.Reader().Definition(
                         container_.Reader().Objects().at(*ObjectOf(table->id))));
  SetState(table->id, TableState::kLoaded);
  step.Finish();
}

void TableLoader::Load(const TablePtr& table) {
  if (loaded_.contains(table->id)) return;
  LoadRows(table);
  if (!StateOf(table->id)) return;
  BuildIndexes(*table);
  loaded_.emplace(table->id, table);
}

void TableLoader::LimitRows(const TableInfo& table) {
  const auto object = ObjectOf(table.id);
  std::optional<file::TableLayout> source;
  if (object) source = container_.Reader().Definition(container_.Reader().Objects().at(*object));
  storage_->Run(RowLimitTriggers(
      table, LayoutOf(table, source ? &*source : nullptr, LoadProperties(storage_, table.id), 0)));
}

std::optional<std::int64_t> TableLoader::CountInFile(const TableInfo& table) {
  const auto state = StateOf(table.id);
  if (!state || *state >= TableState::kLoaded) return std::nullopt;
  const file::TableLayout layout =
      container_.Reader().Definition(container_.Reader().Objects().at(*ObjectOf(table.id)));
  std::int64_t count = 0;
  for (file::TableRows rows = container_.Reader().Rows(layout); rows.Next();)
    ++count;
  return count;
}

std::optional<file::RowList> TableLoader::RowsInFile(const TableInfo& table) {
  const auto state = StateOf(table.id);
  if (!state || *state >= TableState::kLoaded || lost_.contains(table.id)) return std::nullopt;
  return file::RowList(
      container_.Reader().Definition(container_.Reader().Objects().at(*ObjectOf(table.id))));
}

void TableLoader::Forget() {
  lost_.merge(loaded_);
  loaded_.clear();
}

void TableLoader::Restore() {
  for (const auto& [id, table] : std::exchange(lost_, {}))
    Load(table);
}

void TableLoader::SetState(std::int64_t table, TableState state) {
  storage_->Run("UPDATE _jet_table SET state = " + std::to_string(static_cast<int>(state)) +
                " WHERE id = " + std::to_string(table));
}

void TableLoader::InsertRows(const TableInfo& table, const file::TableLayout& layout) {
  std::string columns;
  std::string parameters;
  std::vector<const file::ColumnLayout*> sources;
  for (const FieldInfo& field : table.fields) {
    columns += (columns.empty() ? "" : ", ") + ColumnSql(field.column, field.definition.type);
    parameters += parameters.empty() ? "?" : ", ?";
    sources.push_back(layout.FindColumn(*ColumnOf(field.id)));
  }
  storage_->Run("CREATE TABLE " + table.StorageName() + "(" + columns + ")");
  Statement insert = Prepare("INSERT INTO " + table.StorageName() + " VALUES(" + parameters + ")");
  file::TableRows rows = container_.Reader().Rows(layout);
  std::vector<ports::DatabaseValue> values(sources.size());
  while (rows.Next()) {
    for (std::size_t i = 0; i < sources.size(); ++i) {
      values[i] = rows.Value(*sources[i]);
      BindValue(insert, static_cast<int>(i) + 1, values[i], table.fields[i].definition.type);
    }
    insert.Run();
  }
}

void TableLoader::BuildIndexes(const TableInfo& table) {
  Statement missing = Prepare(
      "SELECT id FROM _jet_index WHERE table_id = ?1 AND NOT EXISTS"
      " (SELECT 1 FROM sqlite_master WHERE type = 'index' AND sqlite_master.name = 'i' || id)");
  std::set<std::int64_t> ids;
  for (missing.Bind(1, table.id); missing.Step();)
    ids.insert(missing.Integer(0));
  missing.Reset();
  for (const IndexInfo& index : table.indexes) {
    if (!ids.contains(index.id)) continue;
    try {
      storage_->Run(CreateIndexSql(table, index));
    } catch (const ports::DatabaseError& error) {
      if (error.Number != kDuplicateValue) throw;
      Fail(kDatabaseDamaged, container_.Reader().FileName(),
           "в таблице \"" + table.name + "\" повторяются значения уникального индекса \"" +
               index.definition.name + "\"");
    }
  }
}

}  // namespace jet
