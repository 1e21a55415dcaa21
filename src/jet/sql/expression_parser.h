#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "jet/sql/ast.h"
#include "jet/sql/token_stream.h"

namespace jet::sql {

// Reads expressions with Jet's precedence, loosest first: Imp, Eqv, Xor, Or, And, Not, comparisons
// (=, Like, In, Between, Is), &, + and -, Mod, \, * and /, signs, ^.
class ExpressionParser {
 public:
  using SelectReader = std::function<std::shared_ptr<Select>()>;

  // The reader is called for SELECT statements in parentheses.
  ExpressionParser(TokenStream& tokens, SelectReader read_select)
      : tokens_(tokens), read_select_(std::move(read_select)) {}

  ExpressionPtr Read();

 private:
  ExpressionPtr ReadLevel(int level);
  std::optional<Operator> TakeOperator(int level);
  ExpressionPtr ReadNot();
  ExpressionPtr ReadComparison();
  ExpressionPtr ReadCompared();
  ExpressionPtr ReadSign();
  ExpressionPtr ReadPower();
  ExpressionPtr ReadOperand();
  ExpressionPtr ReadParenthesised();
  ExpressionPtr ReadNamed();
  ExpressionPtr ReadCall(ExpressionPtr call);
  ExpressionPtr ReadIn(ExpressionPtr value, bool negated);
  ExpressionPtr ReadBetween(ExpressionPtr value, bool negated);
  bool ReadPredicate(ExpressionPtr& value);

  ExpressionPtr Make(ExpressionKind kind) const;
  void Adopt(Expression& parent, ExpressionPtr child) const;
  ExpressionPtr Binary(Operator op, ExpressionPtr left, ExpressionPtr right) const;
  ExpressionPtr Unary(Operator op, ExpressionPtr operand, std::size_t begin) const;
  ExpressionPtr Negated(ExpressionPtr condition, bool negated) const;

  TokenStream& tokens_;
  SelectReader read_select_;
  int depth_ = 0;
};

}  // namespace jet::sql
