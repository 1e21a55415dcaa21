#include "jet/sql/query_translator.h"

#include <utility>

#include "jet/errors.h"
#include "jet/sql/scope.h"
#include "jet/storage_sql.h"

namespace jet::sql {

SelectPlan PlanTable(TablePtr table, const IndexInfo* index) {
  SelectPlan plan;
  const std::string name = table->StorageName();
  std::string columns;
  for (const FieldInfo& field : table->fields) {
    Append(columns, field.column);
    plan.columns.push_back({field.definition.name, &field, TypeOfField(field.definition.type)});
  }
  plan.keys_sql = "SELECT rowid FROM " + name;
  if (index != nullptr && index->definition.ignore_nulls)
    plan.keys_sql += " WHERE " + IndexedRows(*table, *index);
  plan.keys_sql += " ORDER BY ";
  if (index != nullptr) plan.keys_sql += IndexOrder(*table, *index) + ", ";
  plan.keys_sql += "rowid";
  plan.row_sql = "SELECT " + columns + " FROM " + name + " WHERE rowid = ?1";
  plan.table = std::move(table);
  return plan;
}

SelectPlan TranslateSelect(const Select& select, TableFinder& tables, std::string_view statement) {
  if (!select.into.empty()) Fail(kInvalidOperation, Excerpt(statement));
  const Scope scope(tables);
  SelectSql rows = TranslateNested(select, scope.Beside(), statement, RowOrder::kKept);
  scope.FailOnUnknown();
  SelectPlan plan;
  plan.table = std::move(rows.table);
  plan.all_tables = scope.StoredTables();
  plan.columns = std::move(rows.columns);
  if (plan.table) {
    plan.keys_sql = std::move(rows.keys_sql);
    plan.row_sql = std::move(rows.row_sql);
  } else {
    plan.rows_sql = std::move(rows.sql);
  }
  return plan;
}

}  // namespace jet::sql
