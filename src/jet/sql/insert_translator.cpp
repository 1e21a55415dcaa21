#include "jet/sql/insert_translator.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "jet/errors.h"
#include "jet/sql/expression_translator.h"
#include "jet/sql/field_value.h"
#include "jet/sql/scope.h"
#include "jet/sql/select_translator.h"
#include "jet/storage_sql.h"

namespace jet::sql {
namespace {

void RefuseRepeated(const std::vector<const FieldInfo*>& fields) {
  std::vector<const FieldInfo*> sorted = fields;
  std::sort(sorted.begin(), sorted.end());
  const auto twice = std::adjacent_find(sorted.begin(), sorted.end());
  if (twice != sorted.end()) Fail(kFieldDefinedTwice, (*twice)->definition.name);
}

std::vector<const FieldInfo*> NamedFields(const std::vector<std::string>& names,
                                          const TableInfo& table) {
  std::vector<const FieldInfo*> fields;
  for (const std::string& name : names)
    fields.push_back(&RequireField(table, name, kUnknownInsertField));
  RefuseRepeated(fields);
  return fields;
}

std::vector<const FieldInfo*> AllFields(const TableInfo& table) {
  std::vector<const FieldInfo*> fields;
  fields.reserve(table.fields.size());
  for (const FieldInfo& field : table.fields)
    fields.push_back(&field);
  return fields;
}

// "INSERT INTO t3(c1, c2)" and the values for it.
class InsertSql {
 public:
  InsertSql(const TableInfo& table, const std::vector<const FieldInfo*>& fields,
            const std::vector<std::string>& values) {
    if (fields.size() != values.size()) Fail(kValueCountDiffers);
    for (const FieldInfo& field : table.fields) {
      const auto place = std::find(fields.begin(), fields.end(), &field);
      const bool is_given = place != fields.end();
      std::string value = is_given ? values[static_cast<std::size_t>(place - fields.begin())]
                                   : OmittedSql(table, field);
      if (is_given && field.IsAutonumber())
        value = CallSql(fn::kUsedNumber, {std::to_string(table.id), value});
      takes_numbers_ = takes_numbers_ || field.IsAutonumber();
      if (!value.empty()) assigned_.Add(field.column, value);
    }
    target_ = "INSERT INTO " + table.StorageName() + "(" + assigned_.columns + ") ";
  }

  // True if autonumbers are assigned, in the order of the rows.
  bool TakesNumbers() const { return takes_numbers_; }
  const std::string& Target() const { return target_; }
  const std::string& Values() const { return assigned_.values; }

 private:
  Assignments assigned_;
  std::string target_;
  bool takes_numbers_ = false;
};

ActionPlan InsertRows(const TableInfo& table, const std::vector<const FieldInfo*>& fields,
                      const SelectSql& rows, const Select& select) {
  if (fields.size() != rows.columns.size()) Fail(kValueCountDiffers);
  std::vector<std::string> values;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const OutputColumn& column = rows.columns[i];
    values.push_back(
        AssignedSql({"s.o" + std::to_string(i), column.type, column.field}, *fields[i]));
  }
  const InsertSql insert(table, fields, values);
  // Without a materialised subquery SQLite would number the rows before sorting them.
  if (insert.TakesNumbers() && !select.order_by.empty())
    return {{insert.Target() + "WITH s AS MATERIALIZED (" + rows.sql + ") SELECT " +
             insert.Values() + " FROM s"}};
  return {{insert.Target() + "SELECT " + insert.Values() + " FROM (" + rows.sql + ") AS s"}};
}

ports::FieldDefinition FieldOf(const OutputColumn& column) {
  ports::FieldDefinition field;
  if (column.field != nullptr) {
    field.type = column.field->definition.type;
    field.size = column.field->definition.size;
    field.precision = column.field->definition.precision;
    field.scale = column.field->definition.scale;
    field.attributes = column.field->definition.attributes & ports::kAutoIncrementField;
  } else {
    field.type = TypeOfColumn(column.type);
  }
  field.name = column.name;
  std::replace(field.name.begin(), field.name.end(), '.', '_');
  field.allow_zero_length = IsTextType(field.type);
  return field;
}

}  // namespace

ActionPlan TranslateInsert(const Insert& insert, TableFinder& tables, std::string_view statement) {
  Scope scope(tables);
  const TablePtr table = scope.FindStored(insert.table);
  if (insert.select) {
    if (insert.select->united_with) FailUnsupported("INSERT INTO … SELECT … UNION");
    const SelectSql rows =
        TranslateNested(*insert.select, scope.Beside(), statement, RowOrder::kKept);
    scope.FailOnUnknown();
    // Without a list of fields, the columns of a SELECT are assigned by name.
    std::vector<std::string> names = insert.fields;
    for (const OutputColumn& column : rows.columns) {
      if (insert.fields.empty()) names.push_back(column.name);
    }
    return InsertRows(*table, NamedFields(names, *table), rows, *insert.select);
  }
  const std::vector<const FieldInfo*> fields =
      insert.fields.empty() ? AllFields(*table) : NamedFields(insert.fields, *table);
  if (fields.size() != insert.values.size()) Fail(kValueCountDiffers);
  ExpressionTranslator translator(scope, statement);
  std::vector<std::string> values;
  for (std::size_t i = 0; i < fields.size(); ++i)
    values.push_back(translator.Assigned(*insert.values[i], *fields[i]));
  scope.FailOnUnknown();
  const InsertSql sql(*table, fields, values);
  return {{sql.Target() + "VALUES (" + sql.Values() + ")"}};
}

ports::TableDefinition TranslateIntoTable(const Select& select, TableFinder& tables,
                                          std::string_view statement) {
  if (select.united_with) FailUnsupported("SELECT … INTO … UNION");
  const Scope scope(tables);
  const SelectSql rows = TranslateNested(select, scope.Beside(), statement, RowOrder::kAny);
  scope.FailOnUnknown();
  ports::TableDefinition table;
  table.name = select.into;
  bool has_numbers = false;
  for (const OutputColumn& column : rows.columns) {
    ports::FieldDefinition field = FieldOf(column);
    // A table has only one autonumber field.
    if (has_numbers || rows.is_computed) field.attributes = 0;
    has_numbers = has_numbers || field.attributes != 0;
    table.fields.push_back(std::move(field));
  }
  return table;
}

ActionPlan TranslateIntoRows(const Select& select, TableFinder& tables,
                             std::string_view statement) {
  const Scope scope(tables);
  const TablePtr table = scope.FindStored(select.into);
  const SelectSql rows = TranslateNested(select, scope.Beside(), statement, RowOrder::kKept);
  return InsertRows(*table, AllFields(*table), rows, select);
}

}  // namespace jet::sql
