#include "jet/sql/query_translator.h"

#include <utility>

#include "foundation/text.h"
#include "jet/errors.h"
#include "jet/sql/expression_translator.h"
#include "jet/sql/parser.h"
#include "jet/sql/scope.h"

namespace jet::sql {
namespace {

// "t3 AS a0"
std::string FromSql(const ScopeTable& table) {
  return table.table->StorageName() + " AS " + table.sql_alias;
}

const ScopeTable& AddTable(Scope& scope, const std::string& name, std::string_view alias,
                           TableFinder& tables) {
  TablePtr table = tables.FindTable(name);
  if (!table) Fail(kInputTableNotFound, name);
  return scope.Add(std::move(table), alias);
}

// The one table that a statement may name so far.
const ScopeTable& AddOnlySource(Scope& scope, const std::vector<SourcePtr>& from,
                                TableFinder& tables, std::string_view verb) {
  const Source& source = *from.front();
  const std::string where = " в инструкции " + std::string(verb);
  if (from.size() > 1) FailUnsupported("несколько таблиц" + where);
  if (source.join) FailUnsupported("JOIN" + where);
  if (source.select) FailUnsupported("SELECT в предложении FROM" + where);
  return AddTable(scope, source.table, source.alias, tables);
}

void RefuseUnserved(const Select& select) {
  if (select.predicate == SelectPredicate::kDistinct) FailUnsupported("SELECT DISTINCT");
  if (select.top) FailUnsupported("SELECT TOP");
  if (!select.into.empty()) FailUnsupported("SELECT … INTO");
  if (!select.group_by.empty()) FailUnsupported("GROUP BY");
  if (select.having) FailUnsupported("HAVING");
  if (select.united_with) FailUnsupported("UNION");
  if (select.from.empty()) FailUnsupported("SELECT без FROM");
}

std::string WhereSql(const ExpressionPtr& where, ExpressionTranslator& translator) {
  return where ? " WHERE " + translator.Condition(*where) : std::string();
}

// The columns of a SELECT and their values in the storage's SQL.
class OutputList {
 public:
  OutputList(Scope& scope, ExpressionTranslator& translator)
      : scope_(scope), translator_(translator) {}

  void Add(const OutputItem& item) {
    if (!item.is_star) {
      AddExpression(item);
      return;
    }
    const ScopeTable* const table = item.star_qualifier.empty()
                                        ? &scope_.Tables().front()
                                        : scope_.FindTable(item.star_qualifier);
    if (table == nullptr) Fail(kInputTableNotFound, item.star_qualifier);
    met_star_ = true;
    for (const FieldInfo& field : table->table->fields)
      Put({field.definition.name, &field, TypeOfField(field.definition.type)},
          table->sql_alias + "." + field.column);
  }

  bool MetStar() const { return met_star_; }
  const std::string& Sql() const { return sql_; }
  std::vector<OutputColumn> TakeColumns() { return std::move(columns_); }

 private:
  void AddExpression(const OutputItem& item) {
    const Expression& expression = *item.expression;
    TypedSql value = translator_.Value(expression);
    OutputColumn column{item.alias, nullptr, value.type};
    if (expression.kind == ExpressionKind::kName) {
      const Scope::Found found = scope_.Find(expression.qualifier, expression.text);
      if (found.field != nullptr) {
        column.field = found.field;
        value.sql = found.table->sql_alias + "." + found.field->column;
        if (column.name.empty()) column.name = found.field->definition.name;
      }
    }
    if (column.name.empty()) column.name = "Expr" + std::to_string(1000 + unnamed_++);
    Put(std::move(column), value.sql);
  }

  void Put(OutputColumn column, const std::string& sql) {
    sql_ += (sql_.empty() ? "" : ", ") + sql;
    columns_.push_back(std::move(column));
  }

  Scope& scope_;
  ExpressionTranslator& translator_;
  std::vector<OutputColumn> columns_;
  std::string sql_;
  int unnamed_ = 0;
  bool met_star_ = false;
};

std::string OrderSql(const Select& select, ExpressionTranslator& translator) {
  std::string order;
  for (const OrderItem& item : select.order_by) {
    order += order.empty() ? " ORDER BY " : ", ";
    const Expression* expression = item.expression.get();
    // A number is the position of an output column, a name may be an output's alias.
    if (expression->kind == ExpressionKind::kInteger) {
      const auto position = static_cast<std::size_t>(expression->number);
      if (position < 1 || position > select.items.size() || select.items[position - 1].is_star)
        Fail(kSyntaxInOrderBy, "нет столбца " + std::to_string(position));
      expression = select.items[position - 1].expression.get();
    } else if (expression->kind == ExpressionKind::kName && expression->qualifier.empty()) {
      for (const OutputItem& output : select.items) {
        if (output.expression && tmw::EqualIgnoringCase(output.alias, expression->text))
          expression = output.expression.get();
      }
    }
    const TypedSql value = translator.Value(*expression);
    order += value.sql;
    if (value.type == ValueType::kText || value.type == ValueType::kUnknown)
      order += " COLLATE JET";
    if (item.descending) order += " DESC";
  }
  return order;
}

void CheckAssignable(const FieldInfo& field) {
  if (field.IsAutonumber()) Fail(kFieldNotUpdatable, field.definition.name);
}

// What a row that an INSERT makes has in a field that the statement does not name; empty when the
// storage's own Null will do.
std::string OmittedValue(const TableInfo& table, const FieldInfo& field) {
  if (field.IsAutonumber()) return "jet_next_number(" + std::to_string(table.id) + ")";
  if (!field.default_text.empty()) return TranslateDefault(field);
  const bool must_be_checked = field.target.required || field.target.in_primary_key;
  if (field.definition.type != platform::DataType::kBoolean && !must_be_checked) return {};
  Expression null;
  Scope scope;
  return ExpressionTranslator(scope, {}).Assigned(null, field);
}

std::vector<const FieldInfo*> InsertedFields(const Insert& insert, const TableInfo& table) {
  std::vector<const FieldInfo*> fields;
  for (const std::string& name : insert.fields) {
    const FieldInfo* const field = table.FindField(name);
    if (field == nullptr) Fail(kUnknownInsertField, name);
    for (const FieldInfo* const other : fields) {
      if (other == field) Fail(kFieldDefinedTwice, name);
    }
    fields.push_back(field);
  }
  if (insert.fields.empty()) {
    for (const FieldInfo& field : table.fields)
      fields.push_back(&field);
  }
  return fields;
}

}  // namespace

std::string TranslateDefault(const FieldInfo& field) {
  Scope scope;
  const ExpressionPtr expression = ParseExpression(field.default_text);
  std::string sql = ExpressionTranslator(scope, field.default_text).Assigned(*expression, field);
  scope.FailOnUnknown();
  return sql;
}

SelectPlan PlanTable(TablePtr table, const IndexInfo* index) {
  SelectPlan plan;
  const std::string name = table->StorageName();
  std::string columns;
  for (const FieldInfo& field : table->fields) {
    columns += (columns.empty() ? "" : ", ") + field.column;
    plan.columns.push_back({field.definition.name, &field, TypeOfField(field.definition.type)});
  }
  plan.keys_sql = "SELECT rowid FROM " + name;
  if (index != nullptr && index->definition.ignore_nulls) {
    std::string present;
    for (const std::size_t position : index->positions)
      present += (present.empty() ? "" : " OR ") + table->fields[position].column + " IS NOT NULL";
    plan.keys_sql += " WHERE " + present;
  }
  plan.keys_sql += " ORDER BY ";
  if (index != nullptr) plan.keys_sql += IndexOrder(*table, *index) + ", ";
  plan.keys_sql += "rowid";
  plan.row_sql = "SELECT " + columns + " FROM " + name + " WHERE rowid = ?1";
  plan.table = std::move(table);
  return plan;
}

SelectPlan TranslateSelect(const Select& select, TableFinder& tables, std::string_view statement) {
  RefuseUnserved(select);
  Scope scope;
  const ScopeTable& source = AddOnlySource(scope, select.from, tables, "SELECT");
  ExpressionTranslator row_translator(scope, statement);
  const std::string where = WhereSql(select.where, row_translator);
  ExpressionTranslator translator(scope, statement);
  translator.AllowAggregates();
  OutputList outputs(scope, translator);
  for (const OutputItem& item : select.items)
    outputs.Add(item);
  const std::string order = OrderSql(select, row_translator);
  scope.FailOnUnknown();

  SelectPlan plan;
  const std::string from = " FROM " + FromSql(source);
  if (translator.MetAggregate()) {
    if (outputs.MetStar() || translator.MetLoneField() || !order.empty())
      Fail(kNotInAggregate, Excerpt(statement));
    plan.rows_sql = "SELECT " + outputs.Sql() + from + where;
  } else {
    const std::string row = source.sql_alias + ".rowid";
    plan.keys_sql =
        "SELECT " + row + from + where + (order.empty() ? " ORDER BY " : order + ", ") + row;
    plan.row_sql = "SELECT " + outputs.Sql() + from + " WHERE " + row + " = ?1";
  }
  plan.table = source.table;
  plan.columns = outputs.TakeColumns();
  return plan;
}

ActionPlan TranslateInsert(const Insert& insert, TableFinder& tables, std::string_view statement) {
  if (insert.select) FailUnsupported("INSERT INTO … SELECT");
  TablePtr table = tables.FindTable(insert.table);
  if (!table) Fail(kInputTableNotFound, insert.table);
  const std::vector<const FieldInfo*> fields = InsertedFields(insert, *table);
  if (fields.size() != insert.values.size()) Fail(kValueCountDiffers);
  Scope scope;
  ExpressionTranslator translator(scope, statement);
  std::string columns;
  std::string values;
  const auto put = [&](const std::string& column, const std::string& value) {
    columns += (columns.empty() ? "" : ", ") + column;
    values += (values.empty() ? "" : ", ") + value;
  };
  for (const FieldInfo& field : table->fields) {
    const Expression* given = nullptr;
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (fields[i] == &field) given = insert.values[i].get();
    }
    std::string value =
        given != nullptr ? translator.Assigned(*given, field) : OmittedValue(*table, field);
    if (given != nullptr && field.IsAutonumber())
      value = "jet_used_number(" + std::to_string(table->id) + ", " + value + ")";
    if (!value.empty()) put(field.column, value);
  }
  scope.FailOnUnknown();
  std::string sql = "INSERT INTO " + table->StorageName();
  sql += columns.empty() ? " DEFAULT VALUES" : "(" + columns + ") VALUES (" + values + ")";
  return {std::move(table), std::move(sql)};
}

ActionPlan TranslateUpdate(const Update& update, TableFinder& tables, std::string_view statement) {
  Scope scope;
  const ScopeTable& target = AddOnlySource(scope, update.from, tables, "UPDATE");
  ExpressionTranslator translator(scope, statement);
  std::string assignments;
  for (const Assignment& assignment : update.assignments) {
    const Scope::Found found = scope.Find(assignment.qualifier, assignment.field);
    if (found.field == nullptr) {
      scope.NoteUnknown(assignment.field);
      continue;
    }
    CheckAssignable(*found.field);
    assignments += (assignments.empty() ? "" : ", ") + found.field->column + " = " +
                   translator.Assigned(*assignment.value, *found.field);
  }
  const std::string where = WhereSql(update.where, translator);
  scope.FailOnUnknown();
  return {target.table, "UPDATE " + FromSql(target) + " SET " + assignments + where};
}

ActionPlan TranslateDelete(const Delete& statement, TableFinder& tables, std::string_view text) {
  Scope scope;
  const ScopeTable& target = AddOnlySource(scope, statement.from, tables, "DELETE");
  if (!statement.target.empty() && scope.FindTable(statement.target) == nullptr)
    Fail(kInputTableNotFound, statement.target);
  ExpressionTranslator translator(scope, text);
  const std::string where = WhereSql(statement.where, translator);
  scope.FailOnUnknown();
  return {target.table, "DELETE FROM " + FromSql(target) + where};
}

}  // namespace jet::sql
