#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "ports/database_types.h"

// Parsed statements. Names are not resolved yet.
namespace jet::sql {

struct Select;

enum class Operator {
  kNone,
  kPower,
  kNegate,
  kPlusSign,
  kMultiply,
  kDivide,
  kIntegerDivide,
  kModulo,
  kAdd,
  kSubtract,
  kConcatenate,
  kEqual,
  kNotEqual,
  kLess,
  kLessOrEqual,
  kGreater,
  kGreaterOrEqual,
  kLike,
  kNot,
  kAnd,
  kOr,
  kXor,
  kEqv,
  kImp,
};

struct Comparison {
  std::string_view symbol;
  Operator op;
};
inline constexpr Comparison kComparisons[] = {
    {"=", Operator::kEqual},        {"<>", Operator::kNotEqual}, {"<", Operator::kLess},
    {"<=", Operator::kLessOrEqual}, {">", Operator::kGreater},   {">=", Operator::kGreaterOrEqual}};

enum class ExpressionKind {
  kNull,
  kBoolean,   // number is -1 or 0
  kInteger,   // number
  kNumber,    // number
  kDate,      // number
  kText,      // text
  kBytes,     // text
  kName,      // qualifier (may be empty) and text
  kUnary,     // op, one argument
  kBinary,    // op, two arguments; of kLike: text is not empty for ALIKE
  kIsNull,    // one argument
  kBetween,   // value, two bounds
  kIn,        // value, then the list; or value and select
  kCall,      // text is the function's name
  kStar,      // the argument of Count(*)
  kSubquery,  // select
  kExists,    // select
};

// The values of a sub-select that a comparison refers to.
enum class Quantifier { kNone, kAny, kAll };

struct Expression {
  ExpressionKind kind = ExpressionKind::kNull;
  Operator op = Operator::kNone;
  bool negated = false;  // of kIsNull, kBetween, kIn
  double number = 0;
  std::string text;
  std::string qualifier;
  std::vector<std::unique_ptr<Expression>> arguments;
  std::shared_ptr<Select> select;
  Quantifier quantifier = Quantifier::kNone;  // of a kSubquery on the right of a comparison
  int depth = 1;                              // of the tree, this node included
  std::size_t begin = 0;                      // byte positions in the statement
  std::size_t end = 0;
};
using ExpressionPtr = std::unique_ptr<Expression>;

enum class JoinKind { kInner, kLeft, kRight };

// A table, a sub-select or a join of two such sources.
struct Source {
  std::string table;
  std::string alias;  // empty: the table's name
  std::shared_ptr<Select> select;
  std::optional<JoinKind> join;
  std::unique_ptr<Source> left;
  std::unique_ptr<Source> right;
  ExpressionPtr on;
};
using SourcePtr = std::unique_ptr<Source>;

struct OutputItem {
  bool is_star = false;
  std::string star_qualifier;  // of "t.*"
  ExpressionPtr expression;
  std::string alias;
};

struct OrderItem {
  ExpressionPtr expression;
  bool descending = false;
};

enum class SelectPredicate { kAll, kDistinct, kDistinctRow };

struct Select {
  SelectPredicate predicate = SelectPredicate::kAll;
  std::optional<std::int32_t> top;
  bool top_percent = false;
  std::vector<OutputItem> items;
  std::string into;
  std::vector<SourcePtr> from;
  ExpressionPtr where;
  std::vector<ExpressionPtr> group_by;
  ExpressionPtr having;
  std::vector<OrderItem> order_by;
  std::shared_ptr<Select> united_with;  // next part of a UNION; the first part has the order
  bool union_all = false;               // with the next part
};

struct Insert {
  std::string table;
  std::vector<std::string> fields;  // empty: all of the table
  std::vector<ExpressionPtr> values;
  std::shared_ptr<Select> select;  // instead of values
};

struct Assignment {
  std::string qualifier;
  std::string field;
  ExpressionPtr value;
};

struct Update {
  std::vector<SourcePtr> from;
  std::vector<Assignment> assignments;
  ExpressionPtr where;
};

struct Delete {
  std::vector<OutputItem> items;  // may be empty
  std::vector<SourcePtr> from;
  ExpressionPtr where;
};

enum class ConstraintKind { kPrimaryKey, kUnique, kNotNull, kForeignKey };

// What a change of a row does to the rows that refer to it.
enum class ReferenceAction { kRefuse = 0, kCascade = 1, kSetNull = 2 };

struct Constraint {
  ConstraintKind kind = ConstraintKind::kUnique;
  std::string name;  // may be empty
  std::vector<std::string> fields;
  std::string referenced_table;
  std::vector<std::string> referenced_fields;  // empty: the primary key
  ReferenceAction on_update = ReferenceAction::kRefuse;
  ReferenceAction on_delete = ReferenceAction::kRefuse;
};

struct CreateTable {
  std::string table;
  std::vector<ports::FieldDefinition> fields;
  std::vector<Constraint> constraints;
};

struct AddColumn {
  std::string table;
  ports::FieldDefinition field;
  std::vector<Constraint> constraints;
};

struct AlterColumn {
  std::string table;
  ports::FieldDefinition field;
};

struct DropColumn {
  std::string table;
  std::string field;
};

struct AddConstraint {
  std::string table;
  Constraint constraint;
};

struct DropConstraint {
  std::string table;
  std::string name;
};

struct CreateIndex {
  std::string table;
  ports::IndexDefinition index;
};

struct DropTable {
  std::string table;
};

struct DropIndex {
  std::string table;
  std::string index;
};

using Statement =
    std::variant<Select, Insert, Update, Delete, CreateTable, AddColumn, AlterColumn, DropColumn,
                 AddConstraint, DropConstraint, CreateIndex, DropTable, DropIndex>;

}  // namespace jet::sql
