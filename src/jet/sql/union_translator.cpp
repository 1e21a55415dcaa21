#include "jet/sql/union_translator.h"

#include <cstddef>
#include <utility>

#include "foundation/text.h"
#include "jet/errors.h"
#include "jet/sql/typed_sql.h"

namespace jet::sql {
namespace {

// The type of a column whose parts have different decoded types.
ValueType CommonType(ValueType a, ValueType b) {
  if (a == b || b == ValueType::kNull) return a;
  if (a == ValueType::kNull) return b;
  if (a == ValueType::kBinary || b == ValueType::kBinary) Fail(kTypeMismatch);
  if (a == ValueType::kUnknown || b == ValueType::kUnknown) return ValueType::kUnknown;
  if (!IsNumeric(a) || !IsNumeric(b)) return ValueType::kText;
  if (a == ValueType::kCurrency || b == ValueType::kCurrency) return ValueType::kCurrency;
  const auto is_whole = [](ValueType type) {
    return type == ValueType::kBoolean || type == ValueType::kInteger;
  };
  return is_whole(a) && is_whole(b) ? ValueType::kInteger : ValueType::kNumber;
}

ValueType DecodedType(ValueType type) {
  return Decoded({{}, type}).type;
}

// The columns of all parts: raw where the parts agree, decoded otherwise.
std::vector<OutputColumn> CommonColumns(const std::vector<SelectSql>& parts) {
  std::vector<OutputColumn> columns = parts.front().columns;
  for (const SelectSql& part : parts) {
    if (part.columns.size() != columns.size()) Fail(kUnionCountDiffers);
    for (std::size_t i = 0; i < columns.size(); ++i) {
      OutputColumn& column = columns[i];
      const OutputColumn& other = part.columns[i];
      const bool are_same_fields = column.field != nullptr && other.field != nullptr &&
                                   column.field->definition.type == other.field->definition.type &&
                                   column.field->definition.size >= other.field->definition.size;
      if (!are_same_fields) column.field = nullptr;
      if (column.type != other.type)
        column.type = CommonType(DecodedType(column.type), DecodedType(other.type));
    }
  }
  return columns;
}

std::string PartSql(const SelectSql& part, const std::vector<OutputColumn>& columns) {
  std::string outputs;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const std::string name = "o" + std::to_string(i);
    TypedSql value{name, part.columns[i].type};
    if (value.type != columns[i].type) value = Decoded(value);
    if (value.type != columns[i].type && columns[i].type == ValueType::kText)
      value.sql = TextSql(value);
    outputs += (i == 0 ? "" : ", ") + value.sql + std::string(CollationOf(columns[i].type)) +
               " AS " + name;
  }
  return "SELECT " + outputs + " FROM (" + part.sql + ")";
}

std::string OrderSql(const Select& first, const std::vector<OutputColumn>& columns,
                     std::string_view statement) {
  std::string order;
  for (const OrderItem& item : first.order_by) {
    const Expression& expression = *item.expression;
    std::size_t position = columns.size();
    if (expression.kind == ExpressionKind::kInteger && expression.number >= 1 &&
        expression.number <= static_cast<double>(columns.size()))
      position = static_cast<std::size_t>(expression.number) - 1;
    for (std::size_t i = 0; i < columns.size() && expression.kind == ExpressionKind::kName; ++i) {
      if (tmw::EqualIgnoringCase(columns[i].name, expression.text)) position = i;
    }
    if (position == columns.size()) {
      const std::string_view text =
          statement.substr(expression.begin, expression.end - expression.begin);
      Fail(kOrderNotSelected, Excerpt(text));
    }
    order += (order.empty() ? " ORDER BY o" : ", o") + std::to_string(position) +
             std::string(CollationOf(columns[position].type)) + (item.descending ? " DESC" : "");
  }
  return order;
}

}  // namespace

SelectSql TranslateUnion(const Select& first, const Scope& scope, std::string_view statement,
                         RowOrder order) {
  std::vector<SelectSql> parts;
  for (const Select* part = &first; part != nullptr; part = part->united_with.get())
    parts.push_back(TranslatePart(*part, scope.Beside(), statement));
  SelectSql result;
  result.columns = CommonColumns(parts);
  result.is_computed = true;
  const Select* before = nullptr;
  const Select* part = &first;
  for (const SelectSql& translated : parts) {
    if (before != nullptr) result.sql += before->union_all ? " UNION ALL " : " UNION ";
    result.sql += PartSql(translated, result.columns);
    before = std::exchange(part, part->united_with.get());
  }
  if (order == RowOrder::kKept && !first.order_by.empty())
    result.sql = "SELECT * FROM (" + result.sql + ")" + OrderSql(first, result.columns, statement);
  return result;
}

}  // namespace jet::sql
