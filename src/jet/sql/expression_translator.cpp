#include "jet/sql/expression_translator.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "foundation/text.h"
#include "jet/errors.h"
#include "jet/sql/call_translator.h"
#include "jet/sql/condition_translator.h"
#include "jet/sql/field_value.h"
#include "jet/sql/operators.h"
#include "jet/sql/subquery_translator.h"
#include "jet/storage_sql.h"

namespace jet::sql {
namespace {

constexpr std::size_t kMostSql = 1000000;
constexpr int kMostAliasDepth = 20;

std::string RealLiteral(double value) {
  std::array<char, 40> buffer{};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
  std::string text(buffer.data(), result.ptr);
  if (text.find_first_of(".e") == std::string::npos) text += ".0";
  return text;
}

}  // namespace

std::string_view ExpressionTranslator::TextOf(const Expression& expression) const {
  return Excerpt(statement_.substr(expression.begin, expression.end - expression.begin));
}

TypedSql ExpressionTranslator::Value(const Expression& expression) {
  return Decoded(Raw(expression));
}

std::string ExpressionTranslator::Condition(const Expression& expression) {
  return TranslateCondition(expression, *this);
}

std::string ExpressionTranslator::Assigned(const Expression& expression, const FieldInfo& field) {
  return AssignedSql(Raw(expression), field);
}

// Fields within an expression that rows are grouped by are not lone.
TypedSql ExpressionTranslator::Raw(const Expression& expression) {
  const bool met_before = met_lone_field_;
  TypedSql raw = Ungrouped(expression);
  // Long literals, a memo of megabytes, are no complexity.
  if (raw.sql.size() > kMostSql + 4 * statement_.size()) Fail(kTooComplex);
  if (groups_ != nullptr && std::find(groups_->begin(), groups_->end(), raw.sql) != groups_->end())
    met_lone_field_ = met_before;
  return raw;
}

TypedSql ExpressionTranslator::Ungrouped(const Expression& expression) {
  if (IsCondition(expression)) return {"(-" + Condition(expression) + ")", ValueType::kBoolean};
  switch (expression.kind) {
    case ExpressionKind::kNull:
      return {"NULL", ValueType::kNull};
    case ExpressionKind::kBoolean:
      return {expression.number == 0 ? "0" : "(-1)", ValueType::kBoolean};
    case ExpressionKind::kInteger:
      return {"(" + std::to_string(static_cast<std::int64_t>(expression.number)) + ")",
              ValueType::kInteger};
    case ExpressionKind::kNumber:
      return {RealLiteral(expression.number), ValueType::kNumber};
    case ExpressionKind::kDate:
      return {"(" + RealLiteral(expression.number) + ")", ValueType::kDate};
    case ExpressionKind::kText:
      return {TextLiteral(expression.text), ValueType::kText, nullptr, true};
    case ExpressionKind::kBytes:
      return {BytesLiteral(expression.text), ValueType::kBinary};
    case ExpressionKind::kName:
      return Name(expression);
    case ExpressionKind::kUnary:
      return Signed(expression.op, Value(*expression.arguments[0]));
    case ExpressionKind::kBinary: {
      const TypedSql left = Raw(*expression.arguments[0]);
      const TypedSql right = Raw(*expression.arguments[1]);
      return Computed(expression.op, left, right);
    }
    case ExpressionKind::kCall:
      return TranslateCall(expression, *this);
    case ExpressionKind::kSubquery:
      return TranslateSubquery(expression, *this);
    default:
      Fail(kSyntaxInExpression, "здесь нужно значение", TextOf(expression));
  }
}

TypedSql ExpressionTranslator::Name(const Expression& expression) {
  const Scope::Found found = scope_.Find(expression.qualifier, expression.text);
  if (found.column == nullptr) {
    if (const Expression* const meant = Aliased(expression)) {
      if (++alias_depth_ > kMostAliasDepth) Fail(kCircularAlias, expression.text);
      TypedSql value = Raw(*meant);
      --alias_depth_;
      return value;
    }
    const bool is_qualified = !expression.qualifier.empty();
    scope_.NoteUnknown(is_qualified ? expression.qualifier + "." + expression.text
                                    : expression.text);
    return {"NULL", ValueType::kUnknown};
  }
  (found.is_outer ? met_outer_field_ : met_own_field_) = true;
  if (!in_total_ && !found.is_outer) met_lone_field_ = true;
  return {found.table->Sql(*found.column), found.column->type, found.column->field};
}

const Expression* ExpressionTranslator::Aliased(const Expression& name) const {
  if (aliases_ == nullptr || !name.qualifier.empty()) return nullptr;
  for (const OutputItem& item : *aliases_) {
    if (item.expression && tmw::EqualIgnoringCase(item.alias, name.text))
      return item.expression.get();
  }
  return nullptr;
}

void ExpressionTranslator::RequireGroups(const Expression& call) const {
  if (groups_ == nullptr || in_total_) Fail(kNoAggregateHere, call.text);
}

// An argument with fields of the enclosing query only is refused: SQLite would compute the total
// over the rows of that query.
TypedSql ExpressionTranslator::TotalArgument(const Expression& call) {
  RequireGroups(call);
  in_total_ = true;
  met_own_field_ = false;
  met_outer_field_ = false;
  TypedSql argument = Raw(*call.arguments[0]);
  in_total_ = false;
  if (met_outer_field_ && !met_own_field_) FailUnsupported(call.text + " по полю внешнего запроса");
  return argument;
}

}  // namespace jet::sql
