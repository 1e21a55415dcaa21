#include "jet/errors.h"
#include "jet/sql/expression_translator.h"

namespace jet::sql {

// A total's argument, as it lies. It must name a field of its own query or none at all: the
// storage's engine would take the total to be one of the query around.
TypedSql ExpressionTranslator::AggregateArgument(const Expression& expression) {
  if (groups_ == nullptr || in_aggregate_) Fail(kNoAggregateHere, expression.text);
  in_aggregate_ = true;
  met_own_field_ = false;
  met_outer_field_ = false;
  TypedSql argument = Raw(*expression.arguments[0]);
  in_aggregate_ = false;
  if (met_outer_field_ && !met_own_field_)
    FailUnsupported(expression.text + " по полю внешнего запроса");
  return argument;
}

// Totals pass Null over. Sums and means of whole numbers are floating numbers, those of amounts
// stay exact; First and Last go by the order in which the rows lie.
TypedSql ExpressionTranslator::CallAggregate(const Expression& expression,
                                             std::string_view sql_name) {
  const std::string function(sql_name);
  if (expression.arguments[0]->kind == ExpressionKind::kStar) {
    if (groups_ == nullptr || in_aggregate_) Fail(kNoAggregateHere, expression.text);
    if (function != "count") Fail(kWrongArgumentCount, expression.text);
    return {"count(*)", ValueType::kInteger};
  }
  const TypedSql raw = AggregateArgument(expression);
  if (function == "count") return {"count(" + raw.sql + ")", ValueType::kInteger};
  if (function == "min" || function == "max") {
    const TypedSql value = raw.type == ValueType::kStoredGuid ? Decoded(raw) : raw;
    return {function + "(" + value.sql + std::string(CollationOf(value.type)) + ")", value.type,
            raw.field};
  }
  if (function == "jet_first" || function == "jet_last") {
    const std::string row = scope_.Tables().empty() ? "" : scope_.Tables().front().row;
    return {function + "(" + raw.sql + ", " + (row.empty() ? "0" : row) + ")", raw.type, raw.field};
  }
  if (function == "sum" && raw.type == ValueType::kStoredCurrency)
    return {"sum(" + raw.sql + ")", raw.type};
  const TypedSql value = Decoded(raw);
  if (value.type == ValueType::kText || value.type == ValueType::kBinary)
    Fail(kTypeMismatch, ": " + std::string(TextOf(expression)));
  if (function == "sum" && value.type == ValueType::kCurrency)
    return {"sum(jet_scaled(" + value.sql + "))", ValueType::kStoredCurrency};
  return {function + "(1.0 * " + NumberSql(value) + ")", ValueType::kNumber};
}

}  // namespace jet::sql
