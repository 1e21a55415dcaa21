#include "jet/store/compaction.h"

#include <cstdint>
#include <map>
#include <memory>

#include "jet/errors.h"
#include "jet/storage_sql.h"
#include "jet/store/autonumbers.h"
#include "jet/store/catalogue.h"
#include "jet/store/definitions.h"
#include "jet/store/functions.h"
#include "jet/store/relations.h"
#include "jet/store/storage_file.h"

namespace jet {
namespace {

// Creates a table under its old number and copies its rows, in the order of the primary key or as
// stored; the indexes are built afterwards.
void CopyTable(Connection& target, const TableInfo& table) {
  const std::string name = table.StorageName();
  std::string columns;
  std::string definitions;
  for (const FieldInfo& field : table.fields) {
    Append(columns, field.column);
    Append(definitions, field.column);
    if (IsTextType(field.definition.type)) definitions += kCollate;
  }
  target.Run("CREATE TABLE " + name + "(" + definitions + ")");
  const IndexInfo* const primary = table.PrimaryIndex();
  target.Run("INSERT INTO main." + name + " SELECT " + columns + " FROM source." + name +
             " ORDER BY " + (primary == nullptr ? "" : IndexOrder(table, *primary) + ", ") +
             "rowid");
  for (const IndexInfo& index : table.indexes)
    target.Run(CreateIndexSql(table, index));
  // Numbering continues after the highest number in use.
  for (const FieldInfo& field : table.fields) {
    if (!field.IsAutonumber()) continue;
    target.Run("UPDATE _jet_table SET next_number = (SELECT coalesce(max(" + field.column +
               "), 0) + 1 FROM " + name + ") WHERE id = " + std::to_string(table.id));
  }
}

void CopyAll(const std::shared_ptr<Connection>& source, Connection& target) {
  Catalogue catalogue(source);
  for (const char* const name : {"_jet_table", "_jet_field", "_jet_index", "_jet_index_field",
                                 "_jet_property", "_jet_relation", "_jet_relation_field"}) {
    std::string sql = "INSERT INTO main.";
    target.Run(sql.append(name).append(" SELECT * FROM source.").append(name));
  }
  std::map<std::int64_t, TablePtr> tables;
  for (const ports::TableSummary& summary : catalogue.Tables()) {
    const TablePtr table = catalogue.FindTable(summary.name);
    CopyTable(target, *table);
    tables.emplace(table->id, table);
  }
  // Created last, because the rows have been checked in the source.
  for (const Relation& relation : LoadRelations(source))
    target.Run(RelationTriggers(relation, *tables.at(relation.table_id),
                                *tables.at(relation.referenced_id)));
}

}  // namespace

void Compact(const std::string& source, const std::string& target) {
  const StorageFile from = OpenStorage(source, true, true);
  StorageFile to = CreateStorage(target);
  try {
    Autonumbers numbers(to.connection);
    FunctionContext functions{*to.connection, numbers};
    RegisterFunctions(functions);
    Autonumbers source_numbers(from.connection);
    FunctionContext source_functions{*from.connection, source_numbers};
    RegisterFunctions(source_functions);
    to.connection->Run("ATTACH " + TextLiteral(source) + " AS source");
    to.connection->Run("BEGIN");
    CopyAll(from.connection, *to.connection);
    to.connection->Run("COMMIT");
    to.connection->Run("DETACH source");
    to.connection->Close();
    from.connection->Close();
  } catch (...) {
    to.connection->Close();
    from.connection->Close();
    to.lock.reset();
    RemoveStorage(target);
    throw;
  }
}

}  // namespace jet
