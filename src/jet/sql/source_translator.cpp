#include "jet/sql/source_translator.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "foundation/encodings.h"
#include "jet/errors.h"
#include "jet/sql/expression_translator.h"
#include "jet/sql/select_translator.h"
#include "jet/storage_sql.h"

namespace jet::sql {
namespace {

bool IsComparison(Operator op) {
  return std::any_of(std::begin(kComparisons), std::end(kComparisons),
                     [op](const Comparison& comparison) { return comparison.op == op; });
}

void RefuseLongField(const Expression& name, const Scope& scope) {
  const Scope::Found found = scope.Find(name.qualifier, name.text);
  if (found.column == nullptr || found.column->field == nullptr) return;
  const ports::DataType type = found.column->field->definition.type;
  if (type == ports::DataType::kMemo || type == ports::DataType::kLongBinary)
    Fail(kJoinOnLongField, found.column->name);
}

// Memo and OLE fields cannot be compared with other fields in the condition of a join.
void RefuseLongFields(const Expression& on, const Scope& scope) {
  if (on.kind != ExpressionKind::kBinary && on.kind != ExpressionKind::kUnary) return;
  const bool are_fields = IsComparison(on.op) && on.arguments[0]->kind == ExpressionKind::kName &&
                          on.arguments[1]->kind == ExpressionKind::kName;
  for (const ExpressionPtr& argument : on.arguments) {
    if (are_fields) {
      RefuseLongField(*argument, scope);
    } else {
      RefuseLongFields(*argument, scope);
    }
  }
}

}  // namespace

std::string SourceTranslator::Sources(const std::vector<SourcePtr>& sources) {
  std::string sql;
  for (const SourcePtr& source : sources)
    Append(sql, One(*source, false));
  return sql;
}

std::string SourceTranslator::One(const Source& source, bool is_nested) {
  return source.join ? Join(source, is_nested) : Leaf(source, is_nested);
}

// Joins associate to the left, so only a join on the right needs parentheses. A RIGHT JOIN becomes
// a LEFT JOIN with its sides swapped; the fields keep the order of the statement.
std::string SourceTranslator::Join(const Source& join, bool is_nested) {
  const std::size_t first = scope_.Tables().size();
  const bool is_right = join.join == JoinKind::kRight;
  met_outer_join_ = met_outer_join_ || join.join != JoinKind::kInner;
  const auto side = [&](const Source& source, bool is_on_the_right) {
    std::string sql = One(source, is_nested || (is_on_the_right && source.join));
    return is_on_the_right && source.join ? "(" + sql + ")" : sql;
  };
  std::string left = side(*join.left, is_right);
  std::string right = side(*join.right, !is_right);
  if (is_right) std::swap(left, right);
  const Scope::Limit limit(scope_, first);
  RefuseLongFields(*join.on, scope_);
  const std::string on = ExpressionTranslator(scope_, statement_).Condition(*join.on);
  return left + (join.join == JoinKind::kInner ? " JOIN " : " LEFT JOIN ") + right + " ON " + on;
}

std::string SourceTranslator::Leaf(const Source& source, bool is_nested) {
  if (!source.select) {
    const ScopeTable& entry = scope_.Add(scope_.FindStored(source.table), source.alias);
    // Row numbers are not visible through parentheses unless they are columns.
    const std::string name = entry.table->StorageName();
    if (!is_nested) return name + " AS " + entry.sql_alias;
    scope_.NameLastRow("k");
    return "(SELECT rowid AS k, * FROM " + name + ") AS " + entry.sql_alias;
  }
  SelectSql select = TranslateNested(*source.select, scope_.Beside(), statement_, RowOrder::kAny);
  met_computed_rows_ = met_computed_rows_ || select.is_computed;
  std::vector<ScopeColumn> columns;
  for (std::size_t i = 0; i < select.columns.size(); ++i) {
    OutputColumn& output = select.columns[i];
    std::string lower = tmw::LowerCase(output.name);
    columns.push_back({std::move(output.name), std::move(lower), "o" + std::to_string(i),
                       output.type, output.field});
  }
  const ScopeTable& entry = scope_.Add(std::move(columns), source.alias);
  return "(" + select.sql + ") AS " + entry.sql_alias;
}

}  // namespace jet::sql
