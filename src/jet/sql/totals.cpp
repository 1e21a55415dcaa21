#include "jet/sql/totals.h"

#include <string>

#include "foundation/encodings.h"
#include "jet/errors.h"
#include "jet/sql/expression_translator.h"
#include "jet/storage_sql.h"

namespace jet::sql {
namespace {

struct Total {
  std::string_view name;  // lower case
  Function function;
};

constexpr Total kTotals[] = {{"avg", {"avg", 1}},   {"count", {"count", 1}}, {"first", fn::kFirst},
                             {"last", fn::kLast},   {"max", {"max", 1}},     {"min", {"min", 1}},
                             {"stdev", fn::kStDev}, {"stdevp", fn::kStDevP}, {"sum", {"sum", 1}},
                             {"var", fn::kVar},     {"varp", fn::kVarP}};

const Total* FindTotal(std::string_view name) {
  const std::string lower = tmw::LowerCase(name);
  for (const Total& total : kTotals) {
    if (total.name == lower) return &total;
  }
  return nullptr;
}

}  // namespace

bool IsTotal(std::string_view name) {
  return FindTotal(name) != nullptr;
}

// Totals skip Null. Sums and means of whole numbers are floating-point, sums of amounts are exact;
// First and Last follow the storage order of the rows.
TypedSql TranslateTotal(const Expression& expression, ExpressionTranslator& translator) {
  const Total& total = *FindTotal(expression.text);
  const auto is = [&](std::string_view name) { return total.name == name; };
  if (expression.arguments[0]->kind == ExpressionKind::kStar) {
    translator.RequireGroups(expression);
    if (!is("count")) Fail(kWrongArgumentCount, expression.text);
    return {"count(*)", ValueType::kInteger};
  }
  const TypedSql raw = translator.TotalArgument(expression);
  if (is("count")) return {CallSql(total.function, {raw.sql}), ValueType::kInteger};
  if (is("min") || is("max")) {
    const TypedSql value = raw.type == ValueType::kStoredGuid ? Decoded(raw) : raw;
    return {CallSql(total.function, {value.sql + std::string(CollationOf(value.type))}), value.type,
            raw.field};
  }
  if (is("first") || is("last")) {
    const std::vector<ScopeTable>& tables = translator.InScope().Tables();
    const std::string row = tables.empty() ? "" : tables.front().row;
    return {CallSql(total.function, {raw.sql, row.empty() ? "0" : row}), raw.type, raw.field};
  }
  if (is("sum") && raw.type == ValueType::kStoredCurrency)
    return {CallSql(total.function, {raw.sql}), raw.type};
  const TypedSql value = Decoded(raw);
  if (value.type == ValueType::kText || value.type == ValueType::kBinary)
    Fail(kTypeMismatch, ": " + std::string(translator.TextOf(expression)));
  if (is("sum") && value.type == ValueType::kCurrency)
    return {CallSql(total.function, {CallSql(fn::kScaled, {value.sql})}),
            ValueType::kStoredCurrency};
  return {CallSql(total.function, {"1.0 * " + NumberSql(value)}), ValueType::kNumber};
}

}  // namespace jet::sql
