#include "jet/store/database.h"

#include <algorithm>
#include <utility>

#include "jet/errors.h"
#include "jet/store/file_recordset.h"
#include "jet/store/recordset.h"
#include "jet/store/relations.h"
#include "jet/store/statement_runner.h"
#include "jet/values/sort_key.h"

namespace jet {
TablePtr Database::Require(const std::string& name) {
  return RequireTable(*session_, name, kItemNotFound);
}

const ports::TableSummary* Database::FindUnreadable(const std::string& name) {
  const ports::TableSummary* const summary = session_->Tables().FindSummary(name);
  return summary == nullptr || IsReadable(*summary) ? nullptr : summary;
}

std::vector<ports::TableSummary> Database::Tables() {
  std::vector<ports::TableSummary> tables = session_->Tables().Tables();
  // Each key is made only once: databases have hundreds of tables and are opened often.
  std::vector<std::pair<std::string, ports::TableSummary>> keyed;
  keyed.reserve(tables.size());
  for (ports::TableSummary& table : tables)
    keyed.emplace_back(SortKey(table.name), std::move(table));
  std::sort(keyed.begin(), keyed.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
  std::transform(keyed.begin(), keyed.end(), tables.begin(),
                 [](auto& entry) { return std::move(entry.second); });
  return tables;
}

ports::TableDefinition Database::Table(const std::string& name) {
  ports::TableDefinition definition;
  if (const ports::TableSummary* const unreadable = FindUnreadable(name)) {
    definition.name = unreadable->name;
    definition.attributes = unreadable->attributes;
    return definition;
  }
  const TablePtr table = Require(name);
  definition.name = table->name;
  definition.attributes = table->attributes;
  for (const FieldInfo& field : table->fields)
    definition.fields.push_back(field.definition);
  for (const IndexInfo& index : table->indexes)
    definition.indexes.push_back(index.definition);
  return definition;
}

void Database::CreateTable(const ports::TableDefinition& table) {
  session_->Change([&] { definitions_.CreateTable(table); });
}

void Database::DeleteTable(const std::string& name) {
  if (FindUnreadable(name) != nullptr) Fail(kInvalidOperation, name);
  session_->Change([&] { definitions_.DropTable(*Require(name)); });
}

void Database::CreateField(const std::string& table, const ports::FieldDefinition& field) {
  session_->Change([&] { definitions_.AddField(*Require(table), field); });
}

void Database::CreateIndex(const std::string& table, const ports::IndexDefinition& index) {
  session_->Change([&] { definitions_.CreateIndex(*Require(table), index); });
}

std::vector<ports::RelationDefinition> Database::Relations() {
  session_->NeedRelations();
  return jet::Relations(*session_).List();
}

void Database::CreateRelation(const ports::RelationDefinition& relation) {
  session_->Change([&] { jet::Relations(*session_).Create(relation); });
}

void Database::DeleteRelation(const std::string& name) {
  session_->Change([&] { jet::Relations(*session_).Delete(name); });
}

void Database::SetFieldProperty(const std::string& table, const std::string& field,
                                const std::string& property, ports::DataType type,
                                const ports::DatabaseValue& value) {
  session_->Change([&] {
    const TablePtr info = Require(table);
    definitions_.SetProperty(*info, RequireField(*info, field, kItemNotFound), property, type,
                             value);
  });
}

std::optional<ports::DatabaseValue> Database::FieldProperty(const std::string& table,
                                                            const std::string& field,
                                                            const std::string& property) {
  const TablePtr info = Require(table);
  return definitions_.Property(RequireField(*info, field, kItemNotFound), property);
}

// A failed statement is always undone as a whole: silently skipping rows would lose data.
std::int64_t Database::Execute(const std::string& sql, bool /*fail_on_error*/) {
  return RunStatement(*session_, sql);
}

std::unique_ptr<ports::DatabaseRecordset> Database::OpenRecordset(const std::string& source,
                                                                  ports::RecordsetType type) {
  session_->EnterLevels();
  if (type == ports::RecordsetType::kTable) {
    TablePtr table = session_->Tables().FindTable(source);
    std::optional<file::RowList> rows;
    if (table) rows = session_->RowsInFile(*table);
    if (rows) return std::make_unique<FileRecordset>(session_, std::move(table), *std::move(rows));
  }
  if (TablePtr table = session_->LoadedTables().FindTable(source)) {
    return std::make_unique<Recordset>(session_, sql::PlanTable(std::move(table), nullptr), type);
  }
  const bool may_be_statement = source.find_first_of(" \t\r\n") != std::string::npos;
  if (type == ports::RecordsetType::kTable || !may_be_statement) Fail(kInputTableNotFound, source);
  return std::make_unique<Recordset>(session_, PlanSelect(*session_, source), type);
}

}  // namespace jet
