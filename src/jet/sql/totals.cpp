#include "jet/sql/totals.h"

#include <string>

#include "foundation/encodings.h"
#include "jet/errors.h"
#include "jet/sql/expression_translator.h"
#include "jet/storage_sql.h"

namespace jet::sql {
namespace {

constexpr Function kAvg = {"avg", 1};
constexpr Function kCount = {"count", 1};
constexpr Function kMax = {"max", 1};
constexpr Function kMin = {"min", 1};
constexpr Function kSum = {"sum", 1};

struct Total {
  std::string_view name;  // lower case
  const Function* function;
};

constexpr Total kTotals[] = {
    {"avg", &kAvg}, {"count", &kCount}, {"first", &fn::kFirst}, {"last", &fn::kLast},
    {"max", &kMax}, {"min", &kMin},     {"stdev", &fn::kStDev}, {"stdevp", &fn::kStDevP},
    {"sum", &kSum}, {"var", &fn::kVar}, {"varp", &fn::kVarP},
};

const Function* FindTotal(std::string_view name) {
  const std::string lower = tmw::LowerCase(name);
  for (const Total& total : kTotals) {
    if (total.name == lower) return total.function;
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
  const Function* const total = FindTotal(expression.text);
  if (expression.arguments[0]->kind == ExpressionKind::kStar) {
    translator.RequireGroups(expression);
    if (total != &kCount) Fail(kWrongArgumentCount, expression.text);
    return {"count(*)", ValueType::kInteger};
  }
  const TypedSql raw = translator.TotalArgument(expression);
  if (total == &kCount) return {CallSql(kCount, {raw.sql}), ValueType::kInteger};
  if (total == &kMin || total == &kMax) {
    const TypedSql value = raw.type == ValueType::kStoredGuid ? Decoded(raw) : raw;
    return {CallSql(*total, {value.sql + std::string(CollationOf(value.type))}), value.type,
            raw.field};
  }
  if (total == &fn::kFirst || total == &fn::kLast) {
    const std::vector<ScopeTable>& tables = translator.InScope().Tables();
    const std::string row = tables.empty() ? "" : tables.front().row;
    return {CallSql(*total, {raw.sql, row.empty() ? "0" : row}), raw.type, raw.field};
  }
  if (total == &kSum && raw.type == ValueType::kStoredCurrency)
    return {CallSql(kSum, {raw.sql}), raw.type};
  const TypedSql value = Decoded(raw);
  if (value.type == ValueType::kText || value.type == ValueType::kBinary)
    Fail(kTypeMismatch, ": " + std::string(translator.TextOf(expression)));
  if (total == &kSum && value.type == ValueType::kCurrency)
    return {CallSql(kSum, {CallSql(fn::kScaled, {value.sql})}), ValueType::kStoredCurrency};
  return {CallSql(*total, {"1.0 * " + NumberSql(value)}), ValueType::kNumber};
}

}  // namespace jet::sql
