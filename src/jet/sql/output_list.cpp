#include "jet/sql/output_list.h"

#include <map>
#include <utility>

#include "foundation/encodings.h"
#include "jet/errors.h"

namespace jet::sql {
namespace {

constexpr std::size_t kMostColumns = 255;

}  // namespace

void OutputList::Put(Output output) {
  if (items_.size() >= kMostColumns) Fail(kTooManyFields);
  items_.push_back(std::move(output));
}

void OutputList::Add(const OutputItem& item) {
  if (item.is_star) {
    AddStar(item.star_qualifier);
  } else {
    AddExpression(item);
  }
}

void OutputList::AddStar(const std::string& qualifier) {
  met_star_ = true;
  if (scope_.Tables().empty()) Fail(kNoInput);
  if (!qualifier.empty() && scope_.FindTable(qualifier) == nullptr)
    Fail(kInputTableNotFound, qualifier);
  for (const ScopeTable& table : scope_.Tables()) {
    if (!qualifier.empty() && &table != scope_.FindTable(qualifier)) continue;
    table.is_used = true;
    for (const ScopeColumn& column : table.columns) {
      TypedSql raw{table.Sql(column), column.type, column.field};
      Put({std::move(raw), column.name, &table});
    }
  }
}

void OutputList::AddExpression(const OutputItem& item) {
  const Expression& expression = *item.expression;
  Output output{translator_.Raw(expression), item.alias};
  if (output.name.empty() && expression.kind == ExpressionKind::kName) {
    const Scope::Found found = scope_.Find(expression.qualifier, expression.text);
    output.name = found.column != nullptr ? found.column->name : expression.text;
    output.table = found.is_outer ? nullptr : found.table;
  }
  if (output.name.empty()) output.name = "Expr" + std::to_string(1000 + unnamed_++);
  Put(std::move(output));
}

void OutputList::QualifyNames() {
  std::map<std::string, int> counts;
  for (const Output& output : items_)
    ++counts[tmw::LowerCase(output.name)];
  for (Output& output : items_) {
    if (output.table != nullptr && !output.table->alias.empty() &&
        counts[tmw::LowerCase(output.name)] > 1)
      output.name = output.table->alias + "." + output.name;
  }
}

std::vector<OutputColumn> OutputList::Columns() const {
  std::vector<OutputColumn> columns;
  for (const Output& output : items_)
    columns.push_back({output.name, output.raw.field, output.raw.type});
  return columns;
}

std::string OutputList::Sql(bool are_compared) const {
  std::string sql;
  for (std::size_t i = 0; i < items_.size(); ++i) {
    const TypedSql& raw = items_[i].raw;
    sql += (i == 0 ? "" : ", ") + raw.sql;
    if (are_compared) sql += CollationOf(raw.type);
    sql += " AS o" + std::to_string(i);
  }
  return sql;
}

}  // namespace jet::sql
