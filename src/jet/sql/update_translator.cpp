#include "jet/sql/update_translator.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "jet/errors.h"
#include "jet/sql/expression_translator.h"
#include "jet/sql/field_value.h"
#include "jet/sql/scope.h"
#include "jet/sql/source_translator.h"
#include "jet/storage_sql.h"

namespace jet::sql {
namespace {

bool HasSelect(const ExpressionPtr& expression) {
  return expression->select != nullptr ||
         std::any_of(expression->arguments.begin(), expression->arguments.end(), HasSelect);
}

std::string WhereSql(const ExpressionPtr& where, ExpressionTranslator& translator) {
  return where ? " WHERE " + translator.Condition(*where) : std::string();
}

struct NewValue {
  const FieldInfo* field;
  std::string sql;
};

// The fields of one table that an UPDATE sets.
struct Changes {
  const ScopeTable* table;
  std::vector<NewValue> values;
};

std::vector<Changes> TranslateAssignments(const Update& update, Scope& scope,
                                          ExpressionTranslator& translator) {
  std::vector<Changes> changes;
  for (const Assignment& assignment : update.assignments) {
    const Scope::Found found = scope.Find(assignment.qualifier, assignment.field);
    if (found.column == nullptr) {
      scope.NoteUnknown(assignment.field);
      continue;
    }
    if (found.table->table == nullptr || HasSelect(assignment.value)) Fail(kNotUpdatable);
    const FieldInfo& field = *found.column->field;
    if (field.IsAutonumber()) Fail(kFieldNotUpdatable, field.definition.name);
    auto place = std::find_if(changes.begin(), changes.end(),
                              [&](const Changes& c) { return c.table == found.table; });
    if (place == changes.end()) place = changes.insert(place, {found.table, {}});
    for (const NewValue& other : place->values) {
      if (other.field == &field) Fail(kFieldDefinedTwice, field.definition.name);
    }
    place->values.push_back({&field, translator.Assigned(*assignment.value, field)});
  }
  return changes;
}

const std::string kJoined = "jet_joined";

// An UPDATE of a join. The row numbers (k0, k1 …) and new values (v0, v1 …) are collected before
// anything changes, in the order of the tables' rows. If several rows of the join set the same row
// of a table, the last one wins; a row missing from an outer join is inserted.
class JoinedUpdate {
 public:
  JoinedUpdate(const std::vector<Changes>& changes, bool may_lack_rows)
      : may_lack_rows_(may_lack_rows) {
    for (std::size_t i = 0; i < changes.size(); ++i)
      AddTarget(changes[i], "k" + std::to_string(i));
  }

  ActionPlan Plan(const std::string& from, const std::string& order) && {
    std::vector<std::string> steps = {
        "CREATE TEMP TABLE " + kJoined + "(" + joined_.columns + ")",
        "INSERT INTO " + kJoined + " SELECT " + joined_.values + from + " ORDER BY " + order};
    steps.insert(steps.end(), steps_.begin(), steps_.end());
    steps.push_back("DROP TABLE " + kJoined);
    return {std::move(steps), 1};
  }

 private:
  void AddTarget(const Changes& changes, const std::string& key) {
    const TableInfo& table = *changes.table->table;
    joined_.Add(key, changes.table->row);
    std::string sets;
    Assignments added;
    std::vector<const FieldInfo*> given;
    for (const NewValue& value : changes.values) {
      const std::string name = "v" + std::to_string(next_value_++);
      joined_.Add(name, value.sql);
      Append(sets, value.field->column + " = s." + name);
      added.Add(value.field->column, name);
      given.push_back(value.field);
    }
    steps_.push_back("UPDATE " + table.StorageName() + " SET " + sets + " FROM " + kJoined +
                     " AS s WHERE " + table.StorageName() + ".rowid = s." + key);
    if (!may_lack_rows_) return;
    for (const FieldInfo& field : table.fields) {
      if (std::find(given.begin(), given.end(), &field) != given.end()) continue;
      const std::string value = OmittedSql(table, field);
      if (!value.empty()) added.Add(field.column, value);
    }
    steps_.push_back("INSERT INTO " + table.StorageName() + "(" + added.columns + ") SELECT " +
                     added.values + " FROM " + kJoined + " WHERE " + key + " IS NULL");
  }

  bool may_lack_rows_;
  Assignments joined_;
  std::vector<std::string> steps_;
  std::size_t next_value_ = 0;
};

std::string RowOrderOf(const Scope& scope) {
  std::string order;
  for (const ScopeTable& table : scope.Tables()) {
    if (!table.row.empty()) Append(order, table.row);
  }
  return order;
}

// The table of "t.*", or the only table. Other items must be known fields.
const ScopeTable* DeleteTarget(const Delete& statement, const Scope& scope,
                               ExpressionTranslator& translator) {
  const ScopeTable* target = nullptr;
  for (const OutputItem& item : statement.items) {
    if (!item.is_star) translator.Raw(*item.expression);
    if (item.star_qualifier.empty()) continue;
    const ScopeTable* const named = scope.FindTable(item.star_qualifier);
    if (named == nullptr) Fail(kInputTableNotFound, item.star_qualifier);
    if (target != nullptr && target != named) FailUnsupported("DELETE из нескольких таблиц");
    target = named;
  }
  if (target == nullptr && scope.Tables().size() > 1)
    Fail(kSyntaxInDelete, "не указана таблица, из которой удаляются записи");
  return target == nullptr ? &scope.Tables().front() : target;
}

bool IsOneTable(const std::vector<SourcePtr>& from) {
  return from.size() == 1 && !from.front()->join && !from.front()->select;
}

}  // namespace

ActionPlan TranslateUpdate(const Update& update, TableFinder& tables, std::string_view statement) {
  Scope scope(tables);
  SourceTranslator sources(scope, statement);
  const std::string from = sources.Sources(update.from);
  if (sources.MetComputedRows()) Fail(kNotUpdatable);
  ExpressionTranslator translator(scope, statement);
  const std::vector<Changes> changes = TranslateAssignments(update, scope, translator);
  const std::string where = WhereSql(update.where, translator);
  scope.FailOnUnknown();
  if (!IsOneTable(update.from))
    return JoinedUpdate(changes, sources.MetOuterJoin())
        .Plan(" FROM " + from + where, RowOrderOf(scope));
  std::string sets;
  for (const NewValue& value : changes.front().values)
    Append(sets, value.field->column + " = " + value.sql);
  return {{"UPDATE " + from + " SET " + sets + where}};
}

ActionPlan TranslateDelete(const Delete& statement, TableFinder& tables, std::string_view text) {
  Scope scope(tables);
  SourceTranslator sources(scope, text);
  const std::string from = sources.Sources(statement.from);
  const bool is_one_table = IsOneTable(statement.from);
  ExpressionTranslator translator(scope, text);
  const ScopeTable* const target = DeleteTarget(statement, scope, translator);
  if (!target->table || sources.MetComputedRows()) Fail(kCannotDelete);
  const std::string where = WhereSql(statement.where, translator);
  scope.FailOnUnknown();
  if (is_one_table) return {{"DELETE FROM " + from + where}};
  return {{"DELETE FROM " + target->table->StorageName() + " WHERE rowid IN (SELECT " +
           target->row + " FROM " + from + where + ")"}};
}

}  // namespace jet::sql
