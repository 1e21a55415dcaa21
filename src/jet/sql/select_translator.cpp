#include "jet/sql/select_translator.h"

#include <algorithm>

#include "foundation/text.h"
#include "jet/errors.h"
#include "jet/sql/expression_translator.h"
#include "jet/sql/output_list.h"
#include "jet/sql/source_translator.h"
#include "jet/sql/totals.h"
#include "jet/sql/union_translator.h"

namespace jet::sql {
namespace {

bool HasAggregate(const ExpressionPtr& expression) {
  if (!expression) return false;
  if (expression->kind == ExpressionKind::kCall && IsTotal(expression->text)) return true;
  return std::any_of(expression->arguments.begin(), expression->arguments.end(), HasAggregate);
}

bool HasTotals(const Select& select, const std::vector<OrderItem>& order) {
  return !select.group_by.empty() || select.having ||
         std::any_of(select.items.begin(), select.items.end(),
                     [](const OutputItem& item) { return HasAggregate(item.expression); }) ||
         std::any_of(order.begin(), order.end(),
                     [](const OrderItem& item) { return HasAggregate(item.expression); });
}

// Constants are left out of GROUP BY and ORDER BY: they have no effect there, and SQLite would take
// a whole number for the position of a column.
bool IsConstant(const Expression& expression) {
  return expression.kind < ExpressionKind::kName ||
         (expression.kind == ExpressionKind::kUnary && IsConstant(*expression.arguments[0]));
}

std::string Joined(std::string_view keyword, const std::vector<std::string>& items) {
  return items.empty() ? "" : std::string(keyword) + tmw::Joined(items, ", ");
}

// One SELECT without UNION.
class Translation {
 public:
  Translation(const Select& select, const std::vector<OrderItem>& order, Scope& scope,
              std::string_view statement)
      : select_(select),
        order_by_(order),
        scope_(scope),
        statement_(statement),
        translator_(scope, statement),
        outputs_(scope, translator_),
        is_distinct_(select.predicate == SelectPredicate::kDistinct),
        has_totals_(HasTotals(select, order)) {}

  SelectSql Run(RowOrder order) {
    if (select_.top && *select_.top < 1) Fail(kSyntaxInSelect, "после TOP нужно число больше нуля");
    SourceTranslator sources(scope_, statement_);
    from_ = Joined(" FROM ", {sources.Sources(select_.from)});
    if (select_.from.empty()) from_.clear();
    if (select_.where)
      where_ = " WHERE " + ExpressionTranslator(scope_, statement_).Condition(*select_.where);
    TranslateGroups();
    TranslateOutputs();
    TranslateOrder();
    SelectSql result;
    result.sql = Sql(order);
    result.columns = outputs_.Columns();
    result.is_one_row = has_totals_ && select_.group_by.empty() && !select_.having && !select_.top;
    result.is_computed = has_totals_ || is_distinct_ || sources.MetComputedRows();
    if (!result.is_computed && scope_.Tables().size() == 1) result.table = scope_.Tables()[0].table;
    if (result.table) AddKeys(result);
    return result;
  }

 private:
  void TranslateGroups() {
    if (!has_totals_) return;
    for (const ExpressionPtr& item : select_.group_by) {
      const TypedSql raw = ExpressionTranslator(scope_, statement_).Raw(*item);
      groups_.push_back(raw.sql);
      if (!IsConstant(*item)) group_terms_.push_back(raw.sql + std::string(CollationOf(raw.type)));
    }
    // Grouping by constants only gives one group, or none if there are no rows.
    if (!groups_.empty() && group_terms_.empty()) group_terms_.emplace_back("NULL");
    translator_.GroupBy(groups_);
    scope_.SetGroups(&groups_);
  }

  void TranslateOutputs() {
    translator_.AllowAliases(select_.items);
    for (const ScopeTable& table : scope_.Tables())
      table.is_used = false;
    for (const OutputItem& item : select_.items) {
      outputs_.Add(item);
      if (item.expression) RefuseLoneField(*item.expression);
    }
    if (has_totals_ && outputs_.MetStar()) Fail(kStarInGroups);
    outputs_.QualifyNames();
    if (!select_.having) return;
    having_ = " HAVING " + translator_.Condition(*select_.having);
    RefuseLoneField(*select_.having);
  }

  void RefuseLoneField(const Expression& expression) const {
    if (has_totals_ && translator_.MetLoneField())
      Fail(kNotInAggregate, translator_.TextOf(expression));
  }

  void TranslateOrder() {
    for (const OrderItem& item : order_by_) {
      const Expression* const expression = OrderedBy(*item.expression);
      TypedSql raw;
      if (expression == nullptr) {
        raw = outputs_.Items()[static_cast<std::size_t>(item.expression->number) - 1].raw;
      } else {
        if (IsConstant(*expression)) continue;
        raw = translator_.Raw(*expression);
        RefuseLoneField(*expression);
      }
      std::string term = is_distinct_ ? OutputName(raw.sql, *item.expression) : raw.sql;
      term += CollationOf(raw.type);
      order_.push_back(term + (item.descending ? " DESC" : ""));
    }
  }

  // The expression to order by, which may be an alias. Null for the position of an output column.
  const Expression* OrderedBy(const Expression& expression) const {
    if (expression.kind == ExpressionKind::kInteger) {
      const double position = expression.number;
      if (position < 1 || position > static_cast<double>(outputs_.Items().size()))
        Fail(kSyntaxInOrderBy, "нет столбца " + std::string(translator_.TextOf(expression)));
      return nullptr;
    }
    if (expression.kind == ExpressionKind::kName && expression.qualifier.empty()) {
      for (const OutputItem& output : select_.items) {
        if (output.expression && tmw::EqualIgnoringCase(output.alias, expression.text))
          return output.expression.get();
      }
    }
    return &expression;
  }

  std::string OutputName(const std::string& sql, const Expression& expression) const {
    for (std::size_t i = 0; i < outputs_.Items().size(); ++i) {
      if (outputs_.Items()[i].raw.sql == sql) return "o" + std::to_string(i);
    }
    Fail(kOrderAgainstDistinct, translator_.TextOf(expression));
  }

  // DISTINCTROW drops rows that repeat the rows of all tables whose fields are selected.
  std::vector<std::string> DistinctRows() const {
    std::vector<std::string> rows;
    if (select_.predicate != SelectPredicate::kDistinctRow || has_totals_) return rows;
    bool are_all_used = true;
    for (const ScopeTable& table : scope_.Tables()) {
      are_all_used = are_all_used && table.is_used;
      if (table.is_used && table.row.empty()) return {};
      if (table.is_used) rows.push_back(table.row);
    }
    return are_all_used ? std::vector<std::string>() : rows;
  }

  // Without order, limit and TOP.
  std::string Rows(const std::string& outputs) const {
    const std::vector<std::string> groups = has_totals_ ? group_terms_ : DistinctRows();
    return "SELECT " + outputs + from_ + where_ + Joined(" GROUP BY ", groups) + having_;
  }

  // The place of each row in the order; ties share one.
  std::string Places() const {
    return (order_.empty() ? "row_number() OVER () AS place"
                           : "rank() OVER (" + Joined("ORDER BY ", order_) + ") AS place") +
           std::string(select_.top_percent ? ", count(*) OVER () AS total" : "");
  }

  std::string WithinTop() const {
    const std::string top = std::to_string(*select_.top);
    return select_.top_percent ? " WHERE (place - 1) * 100 < " + top + " * total"
                               : " WHERE place <= " + top;
  }

  std::string Sql(RowOrder order) const {
    const std::string outputs = outputs_.Sql(is_distinct_);
    const std::string rows = Rows((is_distinct_ ? "DISTINCT " : "") + outputs);
    const bool is_kept = order == RowOrder::kKept;
    if (!select_.top) return is_kept ? rows + Joined(" ORDER BY ", order_) : rows;
    std::string names;
    for (std::size_t i = 0; i < outputs_.Items().size(); ++i)
      names += (i == 0 ? "o" : ", o") + std::to_string(i);
    const std::string placed = is_distinct_ ? "SELECT *, " + Places() + " FROM (" + rows + ")"
                                            : Rows(outputs + ", " + Places());
    return "SELECT " + names + " FROM (" + placed + ")" + WithinTop() +
           (is_kept ? " ORDER BY place" : "");
  }

  void AddKeys(SelectSql& result) const {
    const ScopeTable& table = scope_.Tables().front();
    result.row_sql = "SELECT " + outputs_.Sql(false) + from_ + " WHERE " + table.row + " = ?1";
    if (select_.top) {
      result.keys_sql = "SELECT k FROM (" + Rows(table.row + " AS k, " + Places()) + ")" +
                        WithinTop() + " ORDER BY place, k";
    } else {
      result.keys_sql = Rows(table.row) + Joined(" ORDER BY ", order_) +
                        (order_.empty() ? " ORDER BY " : ", ") + table.row;
    }
  }

  const Select& select_;
  const std::vector<OrderItem>& order_by_;
  Scope& scope_;
  std::string_view statement_;
  ExpressionTranslator translator_;
  OutputList outputs_;
  const bool is_distinct_;
  const bool has_totals_;
  std::string from_;
  std::string where_;
  std::string having_;
  std::vector<std::string> groups_;       // raw values
  std::vector<std::string> group_terms_;  // what groups, with collations
  std::vector<std::string> order_;
};

}  // namespace

SelectSql TranslateNested(const Select& select, Scope scope, std::string_view statement,
                          RowOrder order) {
  if (select.united_with) return TranslateUnion(select, scope, statement, order);
  return Translation(select, select.order_by, scope, statement).Run(order);
}

SelectSql TranslatePart(const Select& part, Scope scope, std::string_view statement) {
  static const std::vector<OrderItem> kNone;
  return Translation(part, kNone, scope, statement).Run(RowOrder::kAny);
}

}  // namespace jet::sql
